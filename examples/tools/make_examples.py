#!/usr/bin/env python3
"""Writes the example result documents of examples/ from small invented data
sets. Run from anywhere: python3 examples/tools/make_examples.py

The data are drawn from fixed seeds, so the documents come out the same on
every run; the numbers in them are computed from those data by npstats.py.
"""

import json
import os
import random
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import npstats as st  # noqa: E402
import builders as t  # noqa: E402
from statxml import Document, Field, field_info, message, messages, vals_not_in_categories  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.dirname(HERE)


# ---------------------------------------------------------------------------
# Data sets that the engine computes its documents from (examples/data)

MEASURE = {"continuous": "scale", "categorical": "nominal", "ordinal": "ordinal"}


def write_data(name, fields):
    """Writes the fields as examples/data/NAME.csv and the dictionary NAME.json."""
    data_dir = os.path.join(OUT, "data")
    n = len(fields[0].data)

    def text(v):
        return "" if v is None else repr(v) if isinstance(v, float) else str(v)

    with open(os.path.join(data_dir, name + ".csv"), "w", encoding="utf-8", newline="") as f:
        f.write(",".join(fl.name for fl in fields) + "\n")
        for i in range(n):
            f.write(",".join(text(fl.data[i]) for fl in fields) + "\n")
    variables = []
    for fl in fields:
        decimals = 1 if fl.dtype == "double" else 0
        var = {"name": fl.name, "label": fl.label, "measure": MEASURE[fl.optype],
               "format": "F8.%d" % decimals}
        if fl.values:
            var["valueLabels"] = [{"value": v, "label": lab} for v, lab in fl.values]
        variables.append(var)
    with open(os.path.join(data_dir, name + ".json"), "w", encoding="utf-8") as f:
        f.write('{"variables": [\n')
        f.write(",\n".join("  " + json.dumps(v) for v in variables))
        f.write("\n]}\n")
    print("wrote data/%s.csv and data/%s.json" % (name, name))


def clip(v, lo, hi):
    return max(lo, min(hi, v))


def bins_for(width, start):
    return lambda values: st.histogram(values, width, start)


# ---------------------------------------------------------------------------
# overview.xml: a pain-relief trial


def overview():
    rng = random.Random(20240311)
    n = 60
    arms = [1] * 20 + [2] * 20 + [3] * 20
    rng.shuffle(arms)
    effect4 = {1: 5, 2: 12, 3: 17}
    effect8 = {1: 7, 2: 16, 3: 23}
    base, wk4, wk8, sex, relief, severity = [], [], [], [], [], []
    dropouts = set(rng.sample(range(n), 3))
    for i in range(n):
        b = clip(round(rng.gauss(62, 12) + (rng.expovariate(1 / 6.0) if rng.random() < 0.3 else 0)), 25, 98)
        w4 = clip(round(b - effect4[arms[i]] + rng.gauss(0, 7)), 0, 100)
        w8 = clip(round(b - effect8[arms[i]] + rng.gauss(0, 8)), 0, 100)
        if i in dropouts:
            w8 = None
        base.append(b)
        wk4.append(w4)
        wk8.append(w8)
        sex.append(rng.choice([1, 2]))
        relief.append(1 if w8 is not None and b - w8 >= 15 else 0)
        severity.append(1 if b < 55 else 2 if b < 70 else 3)
    # two patients whose pain rose under placebo: the outliers of the box plot
    placebo = [i for i in range(n) if arms[i] == 1 and wk8[i] is not None]
    wk8[placebo[3]] = clip(base[placebo[3]] + 19, 0, 100)
    relief[placebo[3]] = 0
    fields = [
        Field("pain_base", "Pain score at baseline (0-100)", "continuous", "double", base),
        Field("pain_wk4", "Pain score at week 4 (0-100)", "continuous", "double", wk4),
        Field("pain_wk8", "Pain score at week 8 (0-100)", "continuous", "double", wk8),
        Field("treatment", "Treatment group", "categorical", "integer", arms,
              [(1, "Placebo"), (2, "Low dose"), (3, "High dose")]),
        Field("sex", "Sex", "categorical", "integer", sex, [(1, "Female"), (2, "Male")]),
        Field("relief", "Pain relief at week 8", "categorical", "integer", relief, [(0, "No"), (1, "Yes")]),
        Field("severity", "Baseline severity", "ordinal", "integer", severity,
              [(1, "Mild"), (2, "Moderate"), (3, "Severe")]),
        Field("patient_id", "Patient ID", "continuous", "integer", list(range(1001, 1001 + n))),
    ]
    doc = Document("Pain-relief trial: 60 patients in three arms, pain scored at baseline, "
                   "week 4 and week 8; three patients dropped out before week 8.", fields)
    pain_bins = bins_for(10, 0)
    ks, _ = t.ks_one_sample(doc, 0, "normal", use_sample=True, lilliefors=True)
    doc.algorithms += ks
    doc.algorithms.append(t.chi_square(doc, 6))
    doc.algorithms.append(t.binomial(doc, 5, "ABinaryTestVariableIsSpecified_O_Binomial_5",
                                     [5, 1, 0, 0.5, 0.5], success=[1], failure=[0]))
    doc.algorithms.append(t.success_rate(doc, 5, "ABinaryTestVariableIsSpecified_O_Binomial_2", [5, 1],
                                         success=[1]))
    doc.algorithms.append(t.related_pair(doc, 0, 2, sign=False, width=10))
    doc.algorithms.append(t.friedman_like(doc, [0, 1, 2]))
    doc.algorithms.append(t.mann_whitney(doc, 2, 4, 10))
    kw, _ = t.kruskal_wallis(doc, 2, 3)
    doc.algorithms.append(kw)
    for i in range(3):
        doc.field_infos.append(field_info(i, fields[i], pain_bins(fields[i].valid())))
    for i in range(3, 7):
        doc.field_infos.append(field_info(i, fields[i]))
    return doc


# ---------------------------------------------------------------------------
# one_sample.xml: a course evaluation, every one-sample test


def one_sample():
    rng = random.Random(77)
    n = 40
    score = [round(clip(rng.gauss(63, 11), 20, 99) * 2) / 2 for _ in range(n)]
    absences = []
    for _ in range(n):
        # Poisson(2.2) by counting exponential gaps
        k, acc = 0, rng.expovariate(2.2)
        while acc < 1:
            k += 1
            acc += rng.expovariate(2.2)
        absences.append(k)
    wait = [round(rng.expovariate(1 / 6.5), 1) for _ in range(n)]
    satisfaction = [clip(int(round(rng.gauss(3.6, 1.0))), 1, 5) for _ in range(n)]
    first_day = 19786  # 2024-03-04, days since 1970-01-01
    # submissions pile up towards the deadline on day 13
    submitted = [first_day + int(rng.triangular(0, 13.99, 13.99)) for _ in range(n)]
    grade = [1 if s >= 80 else 2 if s >= 70 else 3 if s >= 60 else 4 if s >= 50 else 5 for s in score]
    passed = [1 if s >= 50 else 0 for s in score]
    section = [rng.choice("AAABBBBCC") for _ in range(n)]
    retake = [None] * n
    for i, v in zip([i for i in range(n) if passed[i] == 0][:4], [48.5, 55.0, 61.5, 52.0]):
        retake[i] = v
    fields = [
        Field("score", "Exam score (points)", "continuous", "double", score),
        Field("absences", "Days absent", "continuous", "integer", absences),
        Field("wait_min", "Waiting time for tutor help (minutes)", "continuous", "double", wait),
        Field("satisfaction", "Course satisfaction", "ordinal", "integer", satisfaction,
              [(1, "Very low"), (2, "Low"), (3, "Neutral"), (4, "High"), (5, "Very high")]),
        Field("submitted", "Date of submission", "continuous", "date", submitted),
        Field("grade", "Grade band", "ordinal", "integer", grade,
              [(1, "A"), (2, "B"), (3, "C"), (4, "D"), (5, "E")]),
        Field("passed", "Passed the exam", "categorical", "integer", passed, [(0, "No"), (1, "Yes")]),
        Field("section", "Course section", "categorical", "string", section,
              [("A", "Morning"), ("B", "Afternoon"), ("C", "Evening")]),
        Field("retake", "Retake score (points)", "continuous", "double", retake),
        Field("student_id", "Student ID", "continuous", "integer", list(range(501, 501 + n))),
    ]
    doc = Document("Course evaluation: 40 students, one-sample tests of every kind; four students "
                   "took the retake. Dates are days since 1970-01-01.", fields)
    a = doc.algorithms
    a.append(t.chi_square(doc, 7, probabilities=[0.4, 0.4, 0.2]))
    excluded = sum(1 for g in grade if g == 5)
    # success: grades A and B; failure: C, D and the code 9 (not graded), which
    # is no category of the field and so is written as position 5
    a.append(t.binomial(doc, 5, "CategoryListsAreSpecified_O_Binomial_5", [5, [0, 1], [2, 3, 5], 0.5, 0.5],
                        success=[0, 1], failure=[2, 3],
                        extra=[messages(message(220015, "warning", [5, excluded])),
                               vals_not_in_categories(9)]))
    a.append(t.success_rate(doc, 0, "ACutPointIsSpecified_O_Binomial_2", [0, 50], success=None, cut=50))
    a.append(t.success_rate(doc, 5, "CategoryListsAreSpecified_O_Binomial_2", [5, [0, 1]], success=[0, 1]))
    a.append(t.runs(doc, 0, cut=60))
    a[-1].children.insert(1, messages(message(220030, "warning")))
    a.append(t.runs(doc, 6, positions=(0, 1)))
    a.append(t.wilcoxon_one_sample(doc, 3, 3, st.histogram(satisfaction, 1, 0.5), ordinal_as_cont=[3]))
    ks, _ = t.ks_one_sample(doc, 0, "normal", use_sample=True)
    a += ks
    ks, _ = t.ks_one_sample(doc, 8, "normal", use_sample=True,
                            tables=[messages(message(220045, "helpMessage"))])
    a += ks
    ks, _ = t.ks_one_sample(doc, 4, "uniform", use_sample=True, lilliefors=True)
    a += ks
    ks, _ = t.ks_one_sample(doc, 1, "poisson", use_sample=False)
    a += ks
    # Poisson on a field with fractional values: the engine refuses it
    a.append(t.algorithm("OKolmogorovSmirnov", t.ONE, "unableToCompute",
                         t.condition("PoissonDistribution_O_KolmogorovSmirnov_2", [0, None], use_sample=False),
                         messages(message(220001, "error", [0]))))
    ks, _ = t.ks_one_sample(doc, 2, "exponential", parameter=5.0, use_sample=False)
    a += ks
    # the distribution-specific records, which the reader passes over
    for name, fi, dist, par in (("OKolmogorovSmirnovNormal", 0, "normal", None),
                                ("OKolmogorovSmirnovUniform", 4, "uniform", None),
                                ("OKolmogorovSmirnovPoisson", 1, "poisson", None),
                                ("OKolmogorovSmirnovExponential", 2, "exponential", 5.0)):
        ks, _ = t.ks_one_sample(doc, fi, dist, parameter=par, use_sample=dist in ("normal", "uniform"),
                                name=name)
        a += ks
    for name, fi, dist in (("OLillieforsNormal", 0, "normal"), ("OLillieforsUniform", 4, "uniform"),
                           ("OLillieforsExponential", 2, "exponential")):
        ks, _ = t.ks_one_sample(doc, fi, dist, use_sample=True, lilliefors=True)
        lill = ks[1]
        lill.attrs[0] = ("name", name)
        a.append(lill)
    infos = doc.field_infos
    infos.append(field_info(0, fields[0], st.histogram(score, 10, 0)))
    infos.append(field_info(1, fields[1], st.histogram(absences, 1, -0.5)))
    infos.append(field_info(2, fields[2], st.histogram(wait, 5, 0)))
    infos.append(field_info(3, fields[3], st.histogram(satisfaction, 1, 0.5)))
    infos.append(field_info(4, fields[4], st.histogram(submitted, 2, first_day)))
    infos.append(field_info(5, fields[5]))
    infos.append(field_info(6, fields[6]))
    infos.append(field_info(7, fields[7]))
    infos.append(field_info(8, fields[8], st.histogram(fields[8].valid(), 5, 0)))
    return doc


# ---------------------------------------------------------------------------
# related_samples: a sleep clinic (the engine computes related_samples.xml)


def related_samples():
    rng = random.Random(4242)
    n = 30
    placebo, drug = [], []
    for i in range(n):
        p = round(clip(rng.gauss(6.0, 0.9), 3.5, 9.0), 1)
        d = round(clip(p + rng.gauss(0.45, 0.7), 3.5, 9.5), 1)
        if i in (4, 17):
            d = p  # no change
        placebo.append(p)
        drug.append(d)
    rested = [[], [], []]
    for i in range(n):
        tendency = rng.gauss(0, 1)
        for day, shift in enumerate((-0.6, 0.1, 0.6)):
            rested[day].append(1 if tendency + shift + rng.gauss(0, 0.8) > 0 else 0)
    rested[2][7] = None
    rested[2][21] = None
    snore_pre, snore_post = [], []
    for i in range(n):
        pre = 1 if rng.random() < 0.6 else 0
        post = (0 if rng.random() < 0.5 else 1) if pre else (1 if rng.random() < 0.1 else 0)
        snore_pre.append(pre)
        snore_post.append(post)
    snore_pre[12] = 9  # the partner did not know
    snore_post[25] = 9
    q_pre, q_post = [], []
    for i in range(n):
        a = rng.choices([1, 2, 3], [0.4, 0.4, 0.2])[0]
        b = clip(a + rng.choices([-1, 0, 1], [0.1, 0.55, 0.35])[0], 1, 3)
        q_pre.append(a)
        q_post.append(b)
    pillows = [[], [], [], []]
    for i in range(n):
        utility = [u + rng.gauss(0, 0.9) for u in (0.0, 0.7, 1.2, 0.2)]
        order = sorted(range(4), key=lambda j: -utility[j])
        for rank, j in enumerate(order, start=1):
            pillows[j].append(rank)
    yes_no = [(0, "No"), (1, "Yes")]
    quality = [(1, "Poor"), (2, "Fair"), (3, "Good")]
    fields = [
        Field("sleep_placebo", "Hours of sleep, placebo night", "continuous", "double", placebo),
        Field("sleep_drug", "Hours of sleep, drug night", "continuous", "double", drug),
        Field("rested_1", "Felt rested on day 1", "categorical", "integer", rested[0], yes_no),
        Field("rested_2", "Felt rested on day 2", "categorical", "integer", rested[1], yes_no),
        Field("rested_3", "Felt rested on day 3", "categorical", "integer", rested[2], yes_no),
        Field("snore_pre", "Snoring before treatment", "categorical", "integer", snore_pre,
              yes_no + [(9, "Don't know")]),
        Field("snore_post", "Snoring after treatment", "categorical", "integer", snore_post,
              yes_no + [(9, "Don't know")]),
        Field("quality_pre", "Sleep quality before treatment", "ordinal", "integer", q_pre, quality),
        Field("quality_post", "Sleep quality after treatment", "ordinal", "integer", q_post, quality),
    ]
    for j, letter in enumerate("ABCD"):
        fields.append(Field("pillow_" + letter.lower(), "Comfort rank of pillow " + letter, "continuous",
                            "integer", pillows[j]))
    fields.append(Field("patient_id", "Patient ID", "continuous", "integer", list(range(2001, 2001 + n))))
    write_data("related_samples", fields)


# ---------------------------------------------------------------------------
# independent_samples: a reaction-time experiment (the engine computes
# independent_samples.xml)


def independent_samples(seed=1329):
    rng = random.Random(seed)
    n = 24
    condition = [1] * 12 + [2] * 12
    rng.shuffle(condition)
    dose = [1, 2, 3, 4] * 6
    rng.shuffle(dose)
    lab = [1, 2, 3] * 8
    rng.shuffle(lab)
    rt, alert, errors, accuracy = [], [], [], []
    for i in range(n):
        if condition[i] == 1:
            r = rng.gauss(420, 22)
        else:
            # alcohol: slower on average and far more variable
            r = rng.gauss(465, 75)
        rt.append(int(round(r / 10.0)) * 10)
        alert.append(round(clip(rng.gauss(22 + 4.5 * dose[i], 5), 5, 50)))
        errors.append(max(0, int(round(rng.gauss(3 if condition[i] == 1 else 5, 1.8)))))
        accuracy.append(round(clip(rng.gauss({1: 84, 2: 80, 3: 74}[lab[i]], 5), 50, 100), 1))
    fields = [
        Field("rt", "Reaction time (ms)", "continuous", "integer", rt),
        Field("condition", "Condition", "categorical", "integer", condition, [(1, "Control"), (2, "Alcohol")]),
        Field("dose", "Caffeine dose", "ordinal", "integer", dose,
              [(1, "None"), (2, "Low"), (3, "Medium"), (4, "High")]),
        Field("alertness", "Alertness score (0-50)", "continuous", "integer", alert),
        Field("errors", "Number of errors", "continuous", "integer", errors),
        Field("accuracy", "Accuracy (%)", "continuous", "double", accuracy),
        Field("lab", "Laboratory", "categorical", "integer", lab,
              [(1, "North lab"), (2, "South lab"), (3, "West lab")]),
        Field("subject", "Subject number", "continuous", "integer", list(range(1, n + 1))),
    ]
    write_data("independent_samples", fields)


# ---------------------------------------------------------------------------
# split_1.xml, split_2.xml: one study split by gender


def split_documents():
    rng = random.Random(99)
    docs = []
    for gender, n in ((1, 14), (2, 16)):
        method = [1 + (i % 2) for i in range(n)]
        rng.shuffle(method)
        pre, post = [], []
        for i in range(n):
            a = round(clip(rng.gauss(31 if gender == 1 else 28, 6), 10, 50))
            drop = rng.gauss(3 if method[i] == 1 else 8, 4)
            pre.append(a)
            post.append(round(clip(a - drop, 10, 50)))
        fields = [
            Field("anx_pre", "Test anxiety before the course (10-50)", "continuous", "double", pre),
            Field("anx_post", "Test anxiety after the course (10-50)", "continuous", "double", post),
            Field("method", "Teaching method", "categorical", "integer", method,
                  [(1, "Lecture"), (2, "Flipped classroom")]),
            Field("gender", "Gender", "categorical", "integer", [gender] * n, [(1, "Female"), (2, "Male")]),
        ]
        doc = Document("Teaching-method study, split by gender: the cases of gender = %d." % gender, fields)
        doc.algorithms.append(t.related_pair(doc, 0, 1, sign=False, width=5))
        doc.algorithms.append(t.mann_whitney(doc, 1, 2, 5, exact=True))
        for i in (0, 1):
            doc.field_infos.append(field_info(i, fields[i], st.histogram(fields[i].valid(), 5, 0)))
        doc.field_infos.append(field_info(2, fields[2]))
        docs.append(doc)
    return docs


# ---------------------------------------------------------------------------
# large_k.xml: a Kruskal-Wallis test over twelve groups


def large_k():
    rng = random.Random(12)
    cities = ["Aberdeen", "Bristol", "Cardiff", "Dundee", "Edinburgh", "Glasgow", "Leeds",
              "Liverpool", "Manchester", "Newcastle", "Norwich", "York"]
    centre = [62, 71, 58, 66, 79, 64, 69, 55, 73, 67, 76, 60]
    branch, score = [], []
    for b in range(12):
        for _ in range(10):
            branch.append(b + 1)
            score.append(round(clip(rng.gauss(centre[b], 8), 0, 100), 1))
    fields = [
        Field("satisfaction", "Customer satisfaction (0-100)", "continuous", "double", score),
        Field("branch", "Branch", "categorical", "integer", branch,
              [(i + 1, c) for i, c in enumerate(cities)]),
        Field("respondent", "Respondent number", "continuous", "integer", list(range(1, 121))),
    ]
    doc = Document("Customer survey: satisfaction of 120 customers at twelve branches.", fields)
    kw, _ = t.kruskal_wallis(doc, 0, 1)
    doc.algorithms.append(kw)
    doc.field_infos.append(field_info(0, fields[0], st.histogram(score, 5, 0)))
    doc.field_infos.append(field_info(1, fields[1]))
    return doc


# ---------------------------------------------------------------------------
# minimal.xml and malformed/: one fault per document

MINIMAL = """<?xml version="1.0" encoding="UTF-8"?>
<!-- %(comment)s -->
<StatXML>
  <PMMLModel modelType="NonParametricTests"/>
  <DescriptiveModel>
    <DescriptiveSummary>
      <Counts totalFreq="10" totalCount="10" droppedCount="0" badWeightCount="0" droppedFreq="0"/>
    </DescriptiveSummary>
  </DescriptiveModel>
  <Extension>
    <NPAROutput>
      <DataDictionary>
        <DataField index="0" name="group" displayName="Group" optype="categorical" dataType="integer">
          <Value index="0" value="1" displayValue="A"/>
          <Value index="1" value="2" displayValue="B"/>
        </DataField>
        <DataField index="1" name="case_id" displayName="Case ID" optype="continuous" dataType="integer"/>
      </DataDictionary>
      <NonParametricTests number="1" sigLevel="0.05" confidenceLevel="0.95" missingTreatment="testwise">
        <Algorithm name="OChiSquare" classification="One_Sample" decision="retain">
          <StructuredTable name="Condition">
            <Attribute name="ConditionKey" value="DefaultEqualProbabilities_O_ChiSquare_1"/>
            <Attribute name="%%1" value="0"/>
          </StructuredTable>
          <StructuredTable name="StatisticsResult">
            <Attribute name="TotalN" value="10"/>
            <Attribute name="TestStatistic" value="0.4"/>
            <Attribute name="DegreeOfFreedom" value="1"/>
            <Attribute name="AsymptoticSig2Tailed" value="0.527089"/>
          </StructuredTable>
        </Algorithm>
      </NonParametricTests>
      <FieldInfos>
        <FieldInfo varIndex="0">
          <StructuredTable name="CategoricalDistribution">
            <Attribute name="Total" value="10"/>
            <SimpleTable name="Categories">
              <RowNames></RowNames>
              <ColumnNames>Category Count</ColumnNames>
              <Row>0 6</Row>
              <Row>1 4</Row>
            </SimpleTable>
          </StructuredTable>
        </FieldInfo>
      </FieldInfos>
    </NPAROutput>
  </Extension>
</StatXML>
"""

# file name, what is wrong, (text to replace, replacement) or the whole text
MALFORMED = [
    ("empty.xml", None, ""),
    ("not_xml.xml", None, "Chi-square test of group: 0.4 on 1 degree of freedom, p = 0.527\n"),
    ("lowercase_root.xml", "the root element is statxml, not StatXML",
     [("<StatXML>", "<statxml>"), ("</StatXML>", "</statxml>")]),
    ("no_pmmlmodel.xml", "there is no PMMLModel element",
     [('  <PMMLModel modelType="NonParametricTests"/>\n', "")]),
    ("short_model_type.xml", "the modelType is one letter short",
     [('modelType="NonParametricTests"', 'modelType="NonParametricTest"')]),
    ("no_counts.xml", "the DescriptiveSummary has no Counts element",
     [('      <Counts totalFreq="10" totalCount="10" droppedCount="0" badWeightCount="0" '
       'droppedFreq="0"/>\n', "")]),
    ("no_nonparametric_tests.xml", "the NonParametricTests element is missing (its Algorithm too)",
     "CUT_TESTS"),
    ("unnamed_table.xml", "a StructuredTable inside an Algorithm has no name",
     [('            <Attribute name="TotalN" value="10"/>\n',
       '            <Attribute name="TotalN" value="10"/>\n'
       '            <StructuredTable>\n'
       '              <Attribute name="Median" value="1.5"/>\n'
       '            </StructuredTable>\n')]),
    ("fieldinfo_without_table.xml", "the FieldInfo holds no StructuredTable",
     "CUT_FIELDINFO_TABLE"),
    ("fieldinfo_last_field.xml", "the FieldInfo names the last field, which has no field-information "
     "record", [('<FieldInfo varIndex="0">', '<FieldInfo varIndex="1">')]),
    ("ordinal_index_beyond_fields.xml", "OrdinalTreatedAsCont names field 5 of a two-field dictionary",
     [('            <Attribute name="%1" value="0"/>\n',
       '            <Attribute name="%1" value="0"/>\n'
       '            <Attribute name="OrdinalTreatedAsCont" value="5"/>\n')]),
    ("no_fieldinfos.xml", "the FieldInfos element is missing", "CUT_FIELDINFOS"),
]


def cut(text, start, end):
    """Removes the lines from the one holding `start` to the one holding `end`."""
    lines = text.splitlines(keepends=True)
    i = next(k for k, line in enumerate(lines) if start in line)
    j = next(k for k, line in enumerate(lines) if k >= i and end in line)
    return "".join(lines[:i] + lines[j + 1:])


def write_minimal_and_malformed():
    base = MINIMAL % {"comment": "The smallest document that reads: one chi-square test of ten cases. "
                                 "Each document in malformed/ is this one with one fault."}
    with open(os.path.join(OUT, "minimal.xml"), "w", encoding="utf-8") as f:
        f.write(base)
    os.makedirs(os.path.join(OUT, "malformed"), exist_ok=True)
    for name, fault, change in MALFORMED:
        if fault is None:
            text = change
        else:
            text = MINIMAL % {"comment": "Rejected: " + fault + "."}
            if change == "CUT_TESTS":
                text = cut(text, "<NonParametricTests", "</NonParametricTests>")
            elif change == "CUT_FIELDINFO_TABLE":
                text = cut(text, '<StructuredTable name="CategoricalDistribution">', "</StructuredTable>")
            elif change == "CUT_FIELDINFOS":
                text = cut(text, "<FieldInfos>", "</FieldInfos>")
            else:
                for old, new in change:
                    assert old in text, (name, old)
                    text = text.replace(old, new)
        with open(os.path.join(OUT, "malformed", name), "w", encoding="utf-8") as f:
            f.write(text)
    print("wrote minimal.xml and malformed/")


def main():
    docs = {
        "overview.xml": overview(),
        "one_sample.xml": one_sample(),
        "large_k.xml": large_k(),
    }
    related_samples()
    independent_samples()
    split_1, split_2 = split_documents()
    docs["split_1.xml"] = split_1
    docs["split_2.xml"] = split_2
    for name, doc in docs.items():
        doc.write(os.path.join(OUT, name))
        print("wrote", name)
    splits = {"variables": ["gender"], "heading": True,
              "splits": [{"document": "split_1.xml", "values": [1]},
                         {"document": "split_2.xml", "values": [2]}]}
    with open(os.path.join(OUT, "splits.json"), "w", encoding="utf-8") as f:
        json.dump(splits, f, indent=2)
        f.write("\n")
    print("wrote splits.json")
    write_minimal_and_malformed()


if __name__ == "__main__":
    main()
