#!/usr/bin/env python3
"""Generates large, valid nonparametric-tests result documents for benchmarks.

The document holds a data dictionary, a mix of hypothesis tests (all thirty
algorithm words, weighted toward the common ones), k-sample tests with box-plot
information and pairwise or stepwise comparison tables (k samples give
k(k-1)/2 pairwise rows), and field information for every field but the last.
The same parameters and seed give the same document, byte for byte.

Examples:
    gen_docs.py --tests 200 -o doc.xml
    gen_docs.py --size-mb 100 --groups 6 --seed 7 -o big.xml
    gen_docs.py --tests 1 --mix IKruskalWallis=1 --groups 400 -o pairs.xml
"""

import argparse
import random
import sys

# Every algorithm word with its classification and its weight in the default
# mix: the tests a typical analysis runs come first and most often.
ALGORITHMS = [
    ("IKruskalWallis", "Independent_Samples", 12),
    ("IMannWhitneyU", "Independent_Samples", 12),
    ("RWilcoxonSignedRanks", "Related_Samples", 8),
    ("OChiSquare", "One_Sample", 8),
    ("OBinomial", "One_Sample", 6),
    ("OKolmogorovSmirnov", "One_Sample", 6),
    ("RFriedmansTwoWayByRanks", "Related_Samples", 5),
    ("IMedian", "Independent_Samples", 4),
    ("RSign", "Related_Samples", 4),
    ("OWilcoxonSignedRanks", "One_Sample", 4),
    ("IJonckheereTerpstra", "Independent_Samples", 3),
    ("RCochransQ", "Related_Samples", 3),
    ("RMcNemar", "Related_Samples", 3),
    ("ORuns", "One_Sample", 3),
    ("RKendallsCoefficient", "Related_Samples", 2),
    ("RMarginalHomogeneity", "Related_Samples", 2),
    ("IKolmogorovSmirnov", "Independent_Samples", 2),
    ("IWaldWolfowitzRuns", "Independent_Samples", 2),
    ("IMoses", "Independent_Samples", 2),
    ("OEstimateConfidenceInterval", "One_Sample", 2),
    ("RHodgesLehmannEstimatePairs", "Related_Samples", 2),
    ("IHodgesLehmannEstimateGroups", "Independent_Samples", 2),
    ("OLilliefors", "One_Sample", 1),
    ("OKolmogorovSmirnovNormal", "One_Sample", 0.2),
    ("OKolmogorovSmirnovUniform", "One_Sample", 0.2),
    ("OKolmogorovSmirnovPoisson", "One_Sample", 0.2),
    ("OKolmogorovSmirnovExponential", "One_Sample", 0.2),
    ("OLillieforsNormal", "One_Sample", 0.2),
    ("OLillieforsUniform", "One_Sample", 0.2),
    ("OLillieforsExponential", "One_Sample", 0.2),
]
CLASSIFICATION = {word: c for word, c, _ in ALGORITHMS}

# Message codes that name one pair of samples.
PAIR_CODES = (222328, 222329, 222333, 222331, 222332, 222334)


class Writer:
    """Appends document text to a list of pieces; `size` counts the bytes."""

    def __init__(self, rng):
        self.parts = []
        self.size = 0
        self.rng = rng

    def put(self, text):
        self.parts.append(text)
        self.size += len(text)

    def num(self, value):
        # Engines write full precision for statistics and shorter forms for
        # counts and table cells; mix both.
        return repr(value) if self.rng.random() < 0.5 else "%.8g" % value

    def attr(self, name, value):
        self.put("<Attribute name='%s' value='%s'/>" % (name, value))

    def simple(self, name, row_names, column_names, rows):
        self.put("<SimpleTable name='%s'><RowNames>%s</RowNames><ColumnNames>%s</ColumnNames>"
                 % (name, " ".join(row_names), " ".join(column_names)))
        for row in rows:
            self.put("<Row>%s</Row>" % " ".join(row))
        self.put("</SimpleTable>")

    def open_table(self, name):
        self.put("<StructuredTable name='%s'>" % name)

    def close_table(self):
        self.put("</StructuredTable>")


class Generator:
    def __init__(self, args):
        self.args = args
        self.rng = random.Random(args.seed)
        self.w = Writer(self.rng)
        self.nfields = max(3, args.fields)
        # Field 1 groups the independent samples: it has at least as many
        # categories as a k-sample test has groups.
        self.group_field = 1
        self.group_categories = max(args.categories, args.groups, 2)
        words, weights = zip(*((w, wt) for w, _, wt in ALGORITHMS))
        if args.mix:
            chosen = {}
            for item in args.mix.split(","):
                word, _, weight = item.partition("=")
                if word not in CLASSIFICATION:
                    sys.exit("gen_docs: unknown algorithm word %r" % word)
                chosen[word] = float(weight or 1)
            words, weights = zip(*chosen.items())
        self.words = words
        self.weights = weights

    # The fields: even positions continuous, odd ones categorical; the last
    # field is a string field without field information.
    def is_categorical(self, index):
        return index % 2 == 1 and index < self.nfields - 1

    def categories_of(self, index):
        return self.group_categories if index == self.group_field else self.args.categories

    def continuous_fields(self):
        return [i for i in range(self.nfields - 1) if not self.is_categorical(i)]

    def categorical_fields(self):
        return [i for i in range(self.nfields - 1) if self.is_categorical(i)]

    def dictionary(self):
        w = self.w
        w.put("<DataDictionary>")
        for i in range(self.nfields):
            if i == self.nfields - 1:
                w.put("<DataField index='%d' name='site' displayName='Site' optype='categorical'"
                      " dataType='string'><Value index='0' value='north' displayValue='North'/>"
                      "<Value index='1' value='south' displayValue='South'/></DataField>" % i)
            elif self.is_categorical(i):
                w.put("<DataField index='%d' name='cat%d' displayName='Category %d' "
                      "optype='categorical' dataType='integer'>" % (i, i, i))
                for v in range(self.categories_of(i)):
                    w.put("<Value index='%d' value='%d' displayValue='Level %d'/>" % (v, v + 1, v + 1))
                w.put("</DataField>")
            else:
                w.put("<DataField index='%d' name='score%d' displayName='Score %d' "
                      "optype='continuous' dataType='double'/>" % (i, i, i))
        w.put("</DataDictionary>")

    # --- pieces shared by the tests

    def condition(self, key, params, use_sample=False):
        w = self.w
        w.open_table("Condition")
        w.attr("ConditionKey", key)
        for n, values in enumerate(params, start=1):
            w.attr("%%%d" % n, " ".join(values))
        if use_sample:
            w.attr("isUseSample", "true")
        w.close_table()

    def statistics(self, extra_groups=(), lower_bound=False):
        w, rng = self.w, self.rng
        w.open_table("StatisticsResult")
        w.attr("TotalN", str(rng.randint(20, 5000)))
        w.attr("TestStatistic", w.num(rng.uniform(0, 60)))
        w.attr("StandardError", w.num(rng.uniform(0.1, 9)))
        w.attr("StandardizedTestStatistic", w.num(rng.uniform(-4, 4)))
        w.attr("DegreeOfFreedom", str(rng.randint(1, 20)))
        sig = rng.random()
        w.attr("AsymptoticSig2Tailed", (">" + "%.3f" % sig) if lower_bound else w.num(sig))
        for name, values in extra_groups:
            w.open_table(name)
            for vname, value in values:
                w.attr(vname, value)
            w.close_table()
        w.close_table()

    def messages(self, pairs=()):
        """A warning now and then, and pair notes for some of the given pairs."""
        w, rng = self.w, self.rng
        notes = []
        if rng.random() < 0.15:
            notes.append((220015, "warning", [self.num_text(rng.randint(1, 9))], ""))
        for a, b in pairs:
            if rng.random() < 0.05:
                notes.append((rng.choice(PAIR_CODES), "warning", [], "%d;%d" % (a, b)))
        if not notes:
            return
        w.open_table("WarningMessages")
        for code, kind, params, group in notes:
            w.open_table("Message")
            w.attr("code", str(code))
            w.attr("type", kind)
            w.attr("paramNum", str(len(params)))
            for n, value in enumerate(params, start=1):
                w.attr("%%%d" % n, value)
            if group:
                w.attr("group", group)
            w.close_table()
        w.close_table()

    def num_text(self, value):
        return self.w.num(float(value))

    def numeric_rows(self, nrows, ncols, low=0.0, high=100.0):
        rng, w = self.rng, self.w
        return [[w.num(rng.uniform(low, high)) for _ in range(ncols)] for _ in range(nrows)]

    def distribution(self, name="Distribution", bins=10):
        self.w.simple(name, ["bin%d" % i for i in range(bins)], ["Lower", "Upper", "Count"],
                      self.numeric_rows(bins, 3))

    def two_class(self):
        rng = self.rng
        rows = [[str(rng.randint(0, 500)), self.w.num(rng.uniform(0, 500)),
                 self.w.num(rng.uniform(-20, 20))] for _ in range(2)]
        self.w.open_table("TwoClassComparison")
        self.w.simple("Categories", ["c0", "c1"], ["Observed", "Expected", "Residual"], rows)
        self.w.close_table()

    def box_plot(self, k, with_tables=True):
        w, rng = self.w, self.rng
        w.open_table("BoxPlotInfo")
        w.attr("GroupFieldIndex", str(self.group_field))
        w.attr("GroupCount", str(k))
        w.attr("GrandMedian", w.num(rng.uniform(10, 90)))
        for g in range(k):
            w.open_table("Group%d" % g)
            w.attr("GroupIndex", str(g))
            w.attr("N", str(rng.randint(5, 400)))
            w.attr("MeanOfRank", w.num(rng.uniform(1, 400)))
            w.attr("GTMedian", str(rng.randint(0, 200)))
            w.attr("STMedian", str(rng.randint(0, 200)))
            if with_tables:
                w.simple("Box", ["Min", "Q1", "Median", "Q3", "Max"], ["Value"],
                         sorted(self.numeric_rows(5, 1), key=lambda r: float(r[0])))
                nout = rng.randint(0, 3)
                w.simple("Outliers", ["o%d" % i for i in range(nout)], ["Value", "Case"],
                         [[w.num(rng.uniform(-50, 150)), str(rng.randint(1, 9999))]
                          for _ in range(nout)])
            w.close_table()
        w.close_table()

    def comparison(self, k, samples, field_index):
        """A pairwise (k(k-1)/2 rows) or, now and then, a stepwise result."""
        w, rng = self.w, self.rng
        values = [w.num(rng.uniform(1, 500)) for _ in range(k)]
        stepwise = rng.random() < 0.2
        name = "StepwiseResult" if stepwise else "PairwiseResult"
        w.open_table(name)
        w.attr("fieldIndex", str(field_index))
        w.simple("StepwiseInfo" if stepwise else "PairwiseInfo", ["Sample", "Value"],
                 ["s%d" % i for i in range(k)], [[str(s) for s in samples], values])
        rows = []
        pairs = []
        if stepwise:
            start = 0
            while start < k:
                end = min(k - 1, start + rng.randint(0, 3))
                rows.append([str(start), str(end)] + [w.num(rng.random()) for _ in range(5)])
                start = end + 1
        else:
            for i in range(k):
                for j in range(i + 1, k):
                    a, b = samples[i], samples[j]
                    if rng.random() < 0.5:
                        a, b = b, a
                    pairs.append((a, b))
                    sig = rng.random()
                    rows.append([str(a), str(b), w.num(rng.uniform(-80, 80)),
                                 w.num(rng.uniform(1, 20)), w.num(rng.uniform(-4, 4)),
                                 w.num(sig), w.num(min(1.0, sig * k))])
        w.simple("Content", ["r%d" % i for i in range(len(rows))],
                 ["Sample1", "Sample2", "TestStatistic", "StdError", "StdTestStatistic", "Sig",
                  "AdjSig"], rows)
        w.close_table()
        return pairs

    def category_fields(self):
        w, rng = self.w, self.rng
        w.open_table("CategoryFieldsComparison")
        w.attr("RowNames", str(rng.randint(0, 3)))
        w.attr("ColumnNames", str(rng.randint(0, 3)))
        for name in ("RowSuccessList", "RowFailList", "ColumnSuccessList", "ColumnFailList"):
            w.attr(name, " ".join(str(rng.randint(1, 5)) for _ in range(2)))
        w.simple("Table", ["r0", "r1"], ["c0", "c1"],
                 [[str(rng.randint(0, 300)) for _ in range(2)] for _ in range(2)])
        if rng.random() < 0.3:
            w.open_table("RowValsNotInTheCategoreis")
            w.attr("v", str(rng.randint(50, 99)))
            w.close_table()
        w.close_table()

    # --- one test

    def pick_pair(self, pool):
        a = self.rng.choice(pool)
        b = self.rng.choice([f for f in pool if f != a] or pool)
        return a, b

    def test(self, word):
        w, rng = self.w, self.rng
        cont = self.continuous_fields()
        cats = self.categorical_fields()
        f = rng.choice(cont)
        decision = "reject" if rng.random() < 0.3 else "retain"
        w.put("<Algorithm name='%s' classification='%s' decision='%s'>"
              % (word, CLASSIFICATION[word], decision))
        k = self.args.groups
        ftext = str(f)
        companion = None
        pairs = ()
        if word == "OChiSquare":
            self.condition("DefaultEqualProbabilities_O_ChiSquare_1", [[str(rng.choice(cats))]])
            self.statistics()
            self.two_class()
        elif word == "OBinomial":
            self.condition("ACutPointIsSpecified_O_Binomial_4",
                           [[ftext], [self.num_text(rng.uniform(0, 100))], ["0.5"], ["0.5"]])
            self.statistics()
            self.two_class()
        elif word == "ORuns":
            self.condition("ACutPointIsSpecified_O_Runs_2", [[ftext], [w.num(rng.uniform(0, 100))]])
            self.statistics()
            w.open_table("RunsParameters")
            w.attr("Mean", w.num(rng.uniform(5, 50)))
            w.attr("StdDev", w.num(rng.uniform(1, 5)))
            w.attr("ObservedRunNumber", str(rng.randint(3, 60)))
            w.close_table()
        elif word == "OWilcoxonSignedRanks":
            self.condition("O_WilcoxonSignedRanks_2", [[ftext], [w.num(rng.uniform(0, 100))]])
            self.statistics()
            w.open_table("ContinuousDistribution")
            w.attr("HypotheticalMedian", w.num(rng.uniform(0, 100)))
            w.attr("ObservedMedian", w.num(rng.uniform(0, 100)))
            self.distribution()
            w.close_table()
        elif word == "OEstimateConfidenceInterval":
            self.condition("ACutPointIsSpecified_O_Binomial_2", [[ftext], [w.num(rng.uniform(0, 100))]])
            for method in ("ClopperPearson", "Jeffreys", "ProfileLikelihood"):
                est = rng.random()
                w.open_table(method)
                w.attr("computeECIMethod", method)
                w.attr("Estimate", w.num(est))
                w.open_table("Interval")
                w.attr("Lower", w.num(est * 0.8))
                w.attr("Upper", w.num(min(1.0, est * 1.2)))
                w.close_table()
                w.close_table()
        elif word == "OKolmogorovSmirnov":
            kind = rng.choice(("Normal", "Uniform", "Poisson", "Exponential"))
            if kind == "Normal":
                params = [[ftext], [w.num(rng.uniform(0, 100))], [w.num(rng.uniform(1, 20))]]
                key = "NormalDistribution_O_KolmogorovSmirnov_3"
            elif kind == "Uniform":
                params = [[ftext], [w.num(rng.uniform(0, 10))], [w.num(rng.uniform(10, 100))]]
                key = "UniformDistribution_O_KolmogorovSmirnov_3"
            else:
                params = [[ftext], [w.num(rng.uniform(0.5, 10))]]
                key = "%sDistribution_O_KolmogorovSmirnov_2" % kind
            use_sample = kind == "Normal" and rng.random() < 0.5
            self.condition(key, params, use_sample)
            self.statistics(lower_bound=use_sample and rng.random() < 0.5)
            if kind != "Poisson" and rng.random() < 0.5:
                companion = (kind, f)
        elif word in ("RSign", "RWilcoxonSignedRanks"):
            a, b = self.pick_pair(cont)
            key = "R_Sign_2" if word == "RSign" else "R_WilcoxonSignedRanks_2"
            self.condition(key, [[str(a)], [str(b)]])
            self.statistics()
            w.open_table("ContinuousDistribution")
            w.attr("NegativeDifferences", str(rng.randint(0, 300)))
            w.attr("Ties", str(rng.randint(0, 30)))
            w.attr("PositiveDifferences", str(rng.randint(0, 300)))
            self.distribution()
            w.close_table()
        elif word in ("RCochransQ", "RFriedmansTwoWayByRanks", "RKendallsCoefficient"):
            pool = cats if word == "RCochransQ" else cont
            samples = pool[:max(2, min(k, len(pool)))]
            key = {"RCochransQ": "DefaultAllDistinctValuesUsed_R_CochransQ_1",
                   "RFriedmansTwoWayByRanks": "R_FriedmansTwoWayByRanks_1",
                   "RKendallsCoefficient": "R_KendallsCoefficient_1"}[word]
            self.condition(key, [[str(s) for s in samples]])
            self.statistics()
            if word == "RCochransQ":
                self.two_class()
            else:
                for s in samples:
                    w.open_table("VariableInformation")
                    w.attr("GroupIndex", str(s))
                    w.attr("MeanOfRank", w.num(rng.uniform(1, 5)))
                    self.distribution("Ranks", 5)
                    w.close_table()
            pairs = self.comparison(len(samples), samples, samples[0])
        elif word in ("RMcNemar", "RMarginalHomogeneity"):
            a, b = self.pick_pair(cats)
            key = ("CategoryListsAreSpecified_R_McNemar_2" if word == "RMcNemar"
                   else "AllDistinctValuesUsed_R_MarginalHomogeneity_2")
            self.condition(key, [[str(a)], [str(b)]])
            self.statistics()
            self.category_fields()
        elif word in ("RHodgesLehmannEstimatePairs", "IHodgesLehmannEstimateGroups"):
            if word.startswith("R"):
                a, b = self.pick_pair(cont)
                key = "R_HodgesLehman_2"
            else:
                a, b = f, self.group_field
                key = "AllDistinctValuesUsed_I_HodgesLehman_2"
            self.condition(key, [[str(a)], [str(b)]])
            est = rng.uniform(-10, 10)
            w.open_table("StatisticsResult")
            w.attr("Estimate", w.num(est))
            w.open_table("Asymptotic")
            w.attr("Lower", w.num(est - 2))
            w.attr("Upper", w.num(est + 2))
            w.close_table()
            w.close_table()
        else:  # the independent-samples tests on the grouping field
            short = word[1:]
            self.condition("DefaultAllDistinctValuesUsed_I_%s_2" % short,
                           [[ftext], [str(self.group_field)]])
            if word == "IWaldWolfowitzRuns":
                lo = rng.randint(2, 20)
                hi = lo + rng.choice((0, 0, 3))
                self.statistics([("TestStatistic", [("MinimumPossible", str(lo)),
                                                    ("MaximumPossible", str(hi))])])
            elif word == "IMoses":
                self.statistics([("TestStatistic", [("ObservedControlGroup", str(rng.randint(5, 90))),
                                                    ("TrimmedControlGroup", str(rng.randint(5, 90)))])])
            else:
                self.statistics()
            if word in ("IMannWhitneyU", "IWaldWolfowitzRuns", "IKolmogorovSmirnov"):
                for g in range(2):
                    w.open_table("Group%d" % (g + 1))
                    w.attr("GroupIndex", str(g))
                    w.attr("N", str(rng.randint(5, 300)))
                    w.attr("MeanOfRank", w.num(rng.uniform(1, 300)))
                    self.distribution("Frequencies", 8)
                    w.close_table()
            elif word == "IMoses":
                self.box_plot(2)
            else:
                kk = max(2, k)
                self.box_plot(kk)
                pairs = self.comparison(kk, list(range(kk)), f)
        self.messages(pairs)
        w.put("</Algorithm>")
        if companion:
            kind, field = companion
            w.put("<Algorithm name='OLilliefors' classification='One_Sample' decision='%s'>"
                  % decision)
            key = "%sDistribution_O_Lilliefors_%d" % (kind, 2 if kind == "Exponential" else 3)
            self.condition(key, [[str(field)]], True)
            w.open_table("StatisticsResult")
            sig = rng.random()
            w.attr("AsymptoticSig2Tailed", w.num(sig))
            w.attr("ConfidenceIntervalLowerBound", w.num(max(0.0, sig - 0.01)))
            w.attr("ConfidenceIntervalUpperBound", w.num(min(1.0, sig + 0.01)))
            w.close_table()
            w.put("</Algorithm>")

    def field_infos(self):
        w, rng = self.w, self.rng
        w.put("<FieldInfos>")
        for i in range(self.nfields - 1):
            w.put("<FieldInfo varIndex='%d'>" % i)
            if self.is_categorical(i):
                n = self.categories_of(i)
                w.open_table("CategoricalDistribution")
                w.attr("Total", str(rng.randint(50, 5000)))
                w.simple("Frequencies", [str(v + 1) for v in range(n)], ["Count", "Percent"],
                         [[str(rng.randint(0, 999)), w.num(rng.uniform(0, 100))] for _ in range(n)])
            else:
                lo = rng.uniform(-50, 0)
                hi = rng.uniform(50, 150)
                w.open_table("ContinuousDistribution")
                w.attr("Total", str(rng.randint(50, 5000)))
                w.attr("Min", w.num(lo))
                w.attr("Max", w.num(hi))
                w.attr("Mean", w.num((lo + hi) / 2))
                w.attr("StdDev", w.num((hi - lo) / 5))
                bins = max(5, self.args.categories * 2)
                w.simple("Histogram", ["b%d" % b for b in range(bins)], ["Lower", "Upper", "Count"],
                         self.numeric_rows(bins, 3))
            w.close_table()
            w.put("</FieldInfo>")
        w.put("</FieldInfos>")

    def document(self):
        w, args = self.w, self.args
        w.put("<?xml version='1.0' encoding='UTF-8'?>\n<StatXML>"
              "<PMMLModel modelType='NonParametricTests'/>"
              "<DescriptiveModel><DescriptiveSummary><Counts totalFreq='5000' totalCount='5000'"
              " droppedCount='12' badWeightCount='0' droppedFreq='12'/></DescriptiveSummary>"
              "</DescriptiveModel><Extension><NPAROutput>")
        self.dictionary()
        header_at = len(w.parts)
        w.put("")  # the tests' element, filled in once their number is known
        target = int(args.size_mb * 1024 * 1024) if args.size_mb else None
        count = 0
        while (count < args.tests) if target is None else (w.size < target or count == 0):
            self.test(self.rng.choices(self.words, self.weights)[0])
            count += 1
        w.parts[header_at] = ("<NonParametricTests number='%d' sigLevel='0.05' "
                              "confidenceLevel='95' missingTreatment='listwise'>" % count)
        w.put("</NonParametricTests>")
        self.field_infos()
        w.put("</NPAROutput></Extension></StatXML>\n")
        return count


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tests", type=int, default=100, help="number of tests (default 100)")
    parser.add_argument("--size-mb", type=float, default=0,
                        help="add tests until the document reaches about this size instead")
    parser.add_argument("--groups", type=int, default=5,
                        help="samples of the k-sample tests (default 5); k(k-1)/2 pairwise rows")
    parser.add_argument("--categories", type=int, default=5,
                        help="categories per categorical field (default 5)")
    parser.add_argument("--fields", type=int, default=8, help="dictionary fields (default 8)")
    parser.add_argument("--mix", default="",
                        help="WORD=WEIGHT,... instead of the default mix of all thirty words")
    parser.add_argument("--seed", type=int, default=1, help="random seed (default 1)")
    parser.add_argument("-o", "--output", default="-", help="output file (default stdout)")
    args = parser.parse_args()
    if args.groups < 2 or args.categories < 1 or args.tests < 0:
        parser.error("need --groups >= 2, --categories >= 1, --tests >= 0")

    gen = Generator(args)
    count = gen.document()
    text = "".join(gen.w.parts)
    if args.output == "-":
        sys.stdout.write(text)
    else:
        with open(args.output, "w", encoding="utf-8") as out:
            out.write(text)
        print("gen_docs: %s: %d tests, %.1f MB" % (args.output, count, len(text) / 1048576),
              file=sys.stderr)


if __name__ == "__main__":
    main()
