"""Writing result documents: the element shapes of a result document and the
tables that every test writes the same way."""

from xml.sax.saxutils import escape, quoteattr

import npstats as st

MISSING = "__MISSING__"

# The layout of the tables that charts draw, as host/cf/CFTableLayout.h
# fixes it (read its banner): tables index categories by their position in
# the field's category list; frequency and two-class tables have the
# observed row first and the hypothesized row second; histograms have one
# row per bin (midpoint, count), category counts one row per category
# (position, count); difference histograms have zero as a bin edge and leave
# the ties out. Keep these names equal to the header's.
OBSERVED_ROW, HYPOTHESIZED_ROW = "Observed", "Hypothesized"
SUCCESS_COLUMN, FAILURE_COLUMN = "Success", "Failure"
BIN_VALUE_COLUMN, BIN_COUNT_COLUMN = "Value", "Count"
CATEGORY_COLUMN, CATEGORY_COUNT_COLUMN = "Category", "Count"


def num(x):
    """A number as the engine writes it; None is the missing value."""
    if x is None:
        return MISSING
    if isinstance(x, str):
        return x
    if isinstance(x, bool):
        return "1" if x else "0"
    if float(x).is_integer() and abs(x) < 1e15:
        return str(int(x))
    if abs(x) >= 1:
        return ("%.6f" % x).rstrip("0").rstrip(".")
    return "%.6g" % x


def words(values):
    return " ".join(num(v) for v in values)


class El:
    def __init__(self, tag, attrs=(), children=(), text=None):
        self.tag = tag
        self.attrs = list(attrs)
        self.children = list(children)
        self.text = text

    def add(self, *children):
        self.children.extend(c for c in children if c is not None)
        return self

    def render(self, out, indent=0):
        pad = "  " * indent
        attrs = "".join(" %s=%s" % (k, quoteattr(v)) for k, v in self.attrs)
        if self.text is not None:
            out.append("%s<%s%s>%s</%s>" % (pad, self.tag, attrs, escape(self.text), self.tag))
        elif not self.children:
            out.append("%s<%s%s/>" % (pad, self.tag, attrs))
        else:
            out.append("%s<%s%s>" % (pad, self.tag, attrs))
            for c in self.children:
                c.render(out, indent + 1)
            out.append("%s</%s>" % (pad, self.tag))


def attr(name, value):
    return El("Attribute", [("name", name), ("value", num(value))])


def simple(name, row_names, column_names, rows):
    t = El("SimpleTable", [("name", name)])
    t.add(El("RowNames", text=" ".join(row_names)))
    t.add(El("ColumnNames", text=" ".join(column_names)))
    for r in rows:
        t.add(El("Row", text=words(r)))
    return t


def struct(name, *children):
    return El("StructuredTable", [("name", name)], [c for c in children if c is not None])


# ---------------------------------------------------------------------------
# Tables shared by many tests


def condition(key, params, use_sample=None, ordinal_as_cont=None):
    """`params` are the values of %1, %2, ...: a number, None (missing) or a
    list of them."""
    t = struct("Condition", attr("ConditionKey", key))
    for i, p in enumerate(params, start=1):
        values = p if isinstance(p, (list, tuple)) else [p]
        t.add(attr("%%%d" % i, words(values)))
    if use_sample is not None:
        t.add(attr("isUseSample", "true" if use_sample else "false"))
    if ordinal_as_cont:
        t.add(attr("OrdinalTreatedAsCont", words(ordinal_as_cont)))
    return t


def message(code, kind, params=(), group=None):
    t = struct("Message", attr("code", code), attr("type", kind), attr("paramNum", len(params)))
    for i, p in enumerate(params, start=1):
        values = p if isinstance(p, (list, tuple)) else [p]
        t.add(attr("%%%d" % i, words(values)))
    if group is not None:
        t.add(attr("group", group))
    return t


def messages(*items):
    return struct("WarningMessages", *items) if items else None


def statistics(*items):
    """Items: (name, value) for a top-level value, or (name, [(name, value),
    ...]) for a named group."""
    t = struct("StatisticsResult")
    for name, value in items:
        if isinstance(value, list):
            t.add(struct(name, *[attr(n, v) for n, v in value]))
        else:
            t.add(attr(name, value))
    return t


def vals_not_in_categories(*values):
    return struct("ValsNotInTheCategoreis", *[attr("Value", v) for v in values])


def algorithm(name, classification, decision, *tables):
    attrs = [("name", name), ("classification", classification)]
    if decision is not None:
        attrs.append(("decision", decision))
    return El("Algorithm", attrs, [t for t in tables if t is not None])


def decide(sig, level=0.05):
    return "reject" if sig < level else "retain"


def histogram_table(bins, name="Histogram"):
    return simple(name, [], [BIN_VALUE_COLUMN, BIN_COUNT_COLUMN], [[v, c] for v, c in bins])


def box_tables(values, case_numbers):
    box, outliers = st.box_numbers(values, case_numbers)
    return [
        simple("Box", [], ["LowerWhisker", "LowerQuartile", "Median", "UpperQuartile", "UpperWhisker"],
               [box]),
        simple("Outliers", [], ["Value", "CaseNumber"], [[v, c] for v, c in outliers]),
    ]


def boxplot_info(group_field, groups, cases, mean_ranks=None, grand_median=None):
    """Box-plot information of a test field split by a grouping field.
    `groups[i]` holds the values of category position i, `cases[i]` their
    case numbers."""
    t = struct("BoxPlotInfo", attr("GroupFieldIndex", group_field), attr("GroupCount", len(groups)))
    if grand_median is not None:
        t.add(attr("GrandMedian", grand_median))
    for i, (g, c) in enumerate(zip(groups, cases)):
        sub = struct("Group%d" % i, attr("GroupIndex", i), attr("N", len(g)))
        if mean_ranks is not None:
            sub.add(attr("MeanOfRank", mean_ranks[i]))
        if grand_median is not None:
            sub.add(attr("GTMedian", sum(1 for v in g if v > grand_median)))
            sub.add(attr("STMedian", sum(1 for v in g if v <= grand_median)))
        sub.add(*box_tables(g, c))
        t.add(sub)
    return t


def comparison(kind, info_row_name, samples, values, rows, field_index=None):
    """PairwiseResult (kind "Pairwise") or StepwiseResult (kind "Stepwise")."""
    info = simple(kind + "Info", ["SampleIndex", info_row_name], [], [samples, values])
    if kind == "Pairwise":
        cols = ["Sample1", "Sample2"]
    else:
        cols = ["FirstPosition", "LastPosition"]
    cols += ["TestStatistic", "StdError", "StdTestStatistic", "Sig", "AdjSig"]
    content = simple("Content", [], cols, rows)
    t = struct(kind + "Result", info, content)
    if field_index is not None:
        t.add(attr("fieldIndex", field_index))
    return t


# ---------------------------------------------------------------------------
# The document


class Field:
    def __init__(self, name, label, optype, dtype, data, values=None):
        self.name = name
        self.label = label
        self.optype = optype
        self.dtype = dtype
        self.data = data  # one entry per case, None for missing
        self.values = values or []  # (value, label) of each category

    def valid(self):
        return [v for v in self.data if v is not None]

    def position(self, value):
        return [v for v, _ in self.values].index(value)


def field_info(index, field, bins=None):
    """Field information: categorical fields count their categories (by
    position), continuous fields give descriptives and a histogram."""
    valid = field.valid()
    if bins is None:
        counts = [sum(1 for v in valid if v == value) for value, _ in field.values]
        table = struct("CategoricalDistribution", attr("Total", len(valid)),
                       simple("Categories", [], [CATEGORY_COLUMN, CATEGORY_COUNT_COLUMN],
                              [[i, c] for i, c in enumerate(counts)]))
    else:
        table = struct("ContinuousDistribution", attr("Total", len(valid)), attr("Min", min(valid)),
                       attr("Max", max(valid)), attr("Mean", st.mean(valid)),
                       attr("StdDev", st.sd(valid)), histogram_table(bins))
    return El("FieldInfo", [("varIndex", str(index))], [table])


class Document:
    def __init__(self, comment, fields, missing="testwise", sig=0.05, conf=0.95, counts=None):
        self.comment = comment
        self.fields = fields
        self.missing = missing
        self.sig = sig
        self.conf = conf
        self.algorithms = []
        self.field_infos = []
        n = len(fields[0].data)
        self.counts = counts or {"totalFreq": n, "totalCount": n, "droppedCount": 0,
                                 "badWeightCount": 0, "droppedFreq": 0}

    def render(self):
        root = El("StatXML")
        root.add(El("PMMLModel", [("modelType", "NonParametricTests")]))
        root.add(El("DescriptiveModel", [], [El("DescriptiveSummary", [], [
            El("Counts", [(k, str(v)) for k, v in self.counts.items()])])]))
        dictionary = El("DataDictionary")
        for i, f in enumerate(self.fields):
            df = El("DataField", [("index", str(i)), ("name", f.name), ("displayName", f.label),
                                  ("optype", f.optype), ("dataType", f.dtype)])
            for j, (value, label) in enumerate(f.values):
                df.add(El("Value", [("index", str(j)), ("value", num(value)), ("displayValue", label)]))
            dictionary.add(df)
        tests = El("NonParametricTests", [("number", str(len(self.algorithms))),
                                          ("sigLevel", num(self.sig)),
                                          ("confidenceLevel", num(self.conf)),
                                          ("missingTreatment", self.missing)], self.algorithms)
        infos = El("FieldInfos", [], self.field_infos)
        root.add(El("Extension", [], [El("NPAROutput", [], [dictionary, tests, infos])]))
        out = ['<?xml version="1.0" encoding="UTF-8"?>', "<!-- %s -->" % self.comment]
        root.render(out)
        return "\n".join(out) + "\n"

    def write(self, path):
        with open(path, "w", encoding="utf-8") as f:
            f.write(self.render())
