"""One builder per test: computes the test from a document's data and
returns its Algorithm element(s). Fields are given by index; categories by
their position in the field's category list. Every table a chart draws is
laid out as host/cf/CFTableLayout.h says (the names are in statxml.py)."""

import math

import npstats as st
from statxml import (FAILURE_COLUMN, HYPOTHESIZED_ROW, OBSERVED_ROW, SUCCESS_COLUMN, algorithm, attr,
                     boxplot_info, comparison, condition, decide, histogram_table, simple, statistics,
                     struct)

ONE, REL, IND = "One_Sample", "Related_Samples", "Independent_Samples"
MC_SAMPLES, MC_SEED = 10000, 2000000


def _pairs(doc, fields):
    """Cases valid on every field (listwise within the test), as columns."""
    cols = [doc.fields[i].data for i in fields]
    keep = [k for k in range(len(cols[0])) if all(c[k] is not None for c in cols)]
    return [[c[k] for k in keep] for c in cols], keep


def _groups(doc, test_field, group_field):
    """Values and case numbers (1-based) of the test field by category
    position of the grouping field."""
    g = doc.fields[group_field]
    t = doc.fields[test_field]
    values = [[] for _ in g.values]
    cases = [[] for _ in g.values]
    for k, (v, c) in enumerate(zip(t.data, g.data)):
        if v is None or c is None:
            continue
        p = g.position(c)
        values[p].append(v)
        cases[p].append(k + 1)
    return values, cases


# ---------------------------------------------------------------------------
# One sample


def ks_one_sample(doc, fi, dist, parameter=None, use_sample=False, lilliefors=False, tables=(),
                  name="OKolmogorovSmirnov"):
    x = doc.fields[fi].valid()
    n = len(x)
    support = None
    if dist == "normal":
        m, s = st.mean(x), st.sd(x)
        cdf = lambda v: st.norm_cdf((v - m) / s)
        key, params = "NormalDistribution_O_KolmogorovSmirnov_3", [fi, m, s]
    elif dist == "uniform":
        a, b = min(x), max(x)
        cdf = lambda v: min(1.0, max(0.0, (v - a) / (b - a)))
        key, params = "UniformDistribution_O_KolmogorovSmirnov_3", [fi, a, b]
    elif dist == "poisson":
        lam = st.mean(x)
        cdf = lambda v: st.poisson_cdf(v, lam)
        support = range(0, int(max(x)) + 2)
        key, params = "PoissonDistribution_O_KolmogorovSmirnov_2", [fi, lam]
    else:
        mu = parameter if parameter is not None else st.mean(x)
        cdf = lambda v: 1 - math.exp(-v / mu) if v > 0 else 0.0
        key, params = "ExponentialDistribution_O_KolmogorovSmirnov_2", [fi, mu]
    d, dp, dn = st.ks_one_sample(x, cdf, support=support)
    if dist == "normal" and use_sample:
        p = st.lilliefors_dallal_wilkinson(d, n)
        sig = ">0.200" if p > 0.2 else p
        p = max(p, 0.2) if p > 0.2 else p
    else:
        p = st.kolmogorov_sf(math.sqrt(n) * d)
        sig = p
    # a Lilliefors significance needs 5 cases: below that the test is undecided
    decision = "unableToCompute" if dist == "normal" and use_sample and n < 5 else decide(p)
    out = [algorithm(name, ONE, decision, condition(key, params, use_sample=use_sample), *tables,
                     statistics(("TotalN", [("TotalN", n)]),
                                ("MostExtremeDifferences",
                                 [("Absolute", d), ("Positive", dp), ("Negative", dn)]),
                                ("TestStatistic", d), ("AsymptoticSig2Tailed", sig)))]
    if lilliefors:
        lkey = key.replace("KolmogorovSmirnov", "Lilliefors")
        mp, lo, hi = st.lilliefors_mc(n, d, dist, MC_SAMPLES, MC_SEED)
        out.append(algorithm("OLilliefors", ONE, decide(mp), condition(lkey, params, use_sample=True),
                             statistics(("AsymptoticSig2Tailed", mp),
                                        ("ConfidenceIntervalLowerBound", lo),
                                        ("ConfidenceIntervalUpperBound", hi))))
    return out, {"D": d, "p": p, "n": n, "params": params}


def chi_square(doc, fi, probabilities=None):
    f = doc.fields[fi]
    x = f.valid()
    n = len(x)
    observed = [sum(1 for v in x if v == value) for value, _ in f.values]
    k = len(observed)
    probs = probabilities or [1.0 / k] * k
    expected = [n * p for p in probs]
    chi = sum((o - e) ** 2 / e for o, e in zip(observed, expected))
    p = st.chi2_sf(chi, k - 1)
    key = ("UserSpecifiesProbabilities_O_ChiSquare_1" if probabilities
           else "DefaultEqualProbabilities_O_ChiSquare_1")
    return algorithm(
        "OChiSquare", ONE, decide(p), condition(key, [fi]),
        statistics(("TotalN", n), ("TestStatistic", chi), ("DegreeOfFreedom", k - 1),
                   ("AsymptoticSig2Tailed", p)),
        struct("TwoClassComparison",
               simple("Content", [OBSERVED_ROW, HYPOTHESIZED_ROW], [str(i) for i in range(k)],
                      [observed, expected])))


def _binomial_classes(doc, fi, success, failure=None, cut=None):
    """Counts of the two classes: category positions, or a cut point (cases
    at or below it are the first class)."""
    f = doc.fields[fi]
    x = f.valid()
    if cut is not None:
        s = sum(1 for v in x if v <= cut)
        return s, len(x)
    pos = [f.position(v) for v in x]
    s = sum(1 for p in pos if p in success)
    if failure is None:
        return s, len(x)
    return s, s + sum(1 for p in pos if p in failure)


def binomial(doc, fi, key, params, success, failure=None, cut=None, p0=0.5, extra=()):
    s, n = _binomial_classes(doc, fi, success, failure, cut)
    se = math.sqrt(n * p0 * (1 - p0))
    diff = s - n * p0
    z = (diff - 0.5 if diff > 0 else diff + 0.5 if diff < 0 else 0.0) / se
    p = st.binom_exact_2sided(s, n, p0)
    return algorithm(
        "OBinomial", ONE, decide(p), condition(key, params), *extra,
        statistics(("TotalN", n), ("TestStatistic", s), ("StandardError", se),
                   ("StandardizedTestStatistic", z), ("ExactSig2Tailed", p)),
        struct("TwoClassComparison",
               simple("Content", [OBSERVED_ROW, HYPOTHESIZED_ROW], [SUCCESS_COLUMN, FAILURE_COLUMN],
                      [[100.0 * s / n, 100.0 * (n - s) / n], [100 * p0, 100 * (1 - p0)]])))


def success_rate(doc, fi, key, params, success, cut=None, level=0.95, extra=()):
    s, n = _binomial_classes(doc, fi, success, None, cut)
    est = s / n
    tables = []
    for table, label, (lo, hi) in (("ClopperPearson", "Clopper-Pearson", st.clopper_pearson(s, n, level)),
                                   ("Jeffreys", "Jeffreys", st.jeffreys(s, n, level)),
                                   ("ProfileLikelihood", "Likelihood Ratio",
                                    st.profile_likelihood(s, n, level))):
        tables.append(struct(table, attr("computeECIMethod", label), attr("Estimate", est),
                             struct("ConfidenceInterval", attr("Lower", lo), attr("Upper", hi))))
    return algorithm("OEstimateConfidenceInterval", ONE, None, condition(key, params), *extra, *tables)


def runs(doc, fi, cut=None, positions=None):
    f = doc.fields[fi]
    x = f.valid()
    if cut is not None:
        seq = [v < cut for v in x]
        key, params = "ACutPointIsSpecified_O_Runs_2", [fi, cut]
    else:
        seq = [f.position(v) for v in x]
        key, params = "ABinaryTestVariableIsSpecified_O_Runs_3", [fi, positions[0], positions[1]]
    r, mu, sdv, z, p = st.runs_test(seq)
    return algorithm(
        "ORuns", ONE, decide(p), condition(key, params),
        statistics(("TotalN", len(x)), ("TestStatistic", r), ("StandardError", sdv),
                   ("StandardizedTestStatistic", z), ("AsymptoticSig2Tailed", p)),
        struct("RunsParameters", attr("Mean", mu), attr("StdDev", sdv), attr("ObservedRunNumber", r)))


def wilcoxon_one_sample(doc, fi, m0, bins, ordinal_as_cont=None):
    x = doc.fields[fi].valid()
    tplus, se, z, p, *_ = st.signed_rank([v - m0 for v in x])
    return algorithm(
        "OWilcoxonSignedRanks", ONE, decide(p),
        condition("O_WilcoxonSignedRanks_2", [fi, m0], ordinal_as_cont=ordinal_as_cont),
        statistics(("TotalN", len(x)), ("TestStatistic", tplus), ("StandardError", se),
                   ("StandardizedTestStatistic", z), ("AsymptoticSig2Tailed", p)),
        struct("ContinuousDistribution", attr("HypotheticalMedian", m0),
               attr("ObservedMedian", st.median(x)), histogram_table(bins)))


# ---------------------------------------------------------------------------
# Related samples


def related_pair(doc, first, second, sign, width):
    (x, y), _ = _pairs(doc, [first, second])
    d = [b - a for a, b in zip(x, y)]
    tplus, se, z, p, neg, ties, pos = st.signed_rank(d)
    n = len(d)
    if sign:
        m = pos + neg
        se = 0.5 * math.sqrt(m)
        diff = pos - m / 2.0
        z = (diff - 0.5 if diff > 0 else diff + 0.5 if diff < 0 else 0.0) / se
        if m <= 25:
            p = st.binom_exact_2sided(pos, m)
            sig = ("ExactSig2Tailed", p)
        else:
            p = st.norm_sf2(z)
            sig = ("AsymptoticSig2Tailed", p)
        name, key, stat = "RSign", "R_Sign_2", pos
    else:
        sig = ("AsymptoticSig2Tailed", p)
        name, key, stat = "RWilcoxonSignedRanks", "R_WilcoxonSignedRanks_2", tplus
    return algorithm(
        name, REL, decide(p), condition(key, [first, second]),
        statistics(("TotalN", n), ("TestStatistic", stat), ("StandardError", se),
                   ("StandardizedTestStatistic", z), sig),
        struct("ContinuousDistribution", attr("NegativeDifferences", neg), attr("Ties", ties),
               attr("PositiveDifferences", pos), histogram_table(st.difference_histogram(d, width))))


def _rank_test_on(columns_by_field, fields):
    chi, df, p, _, _ = st.friedman([columns_by_field[f] for f in fields])
    return chi, None, None, p


def friedman_like(doc, fields, kendall=False, comparisons="Stepwise"):
    cols, _ = _pairs(doc, fields)
    n = len(cols[0])
    k = len(fields)
    chi, df, p, mean_ranks, per_column = st.friedman(cols)
    by_field = dict(zip(fields, cols))
    order = sorted(fields, key=lambda f: mean_ranks[fields.index(f)])
    values = [mean_ranks[fields.index(f)] for f in order]
    if comparisons == "Stepwise":
        rows = st.stepwise_subsets(order, lambda members: _rank_test_on(by_field, members), k)
    else:
        se = math.sqrt(k * (k + 1) / (6.0 * n))
        m = k * (k - 1) // 2
        rows = []
        for i in range(k):
            for j in range(i + 1, k):
                a, b = (i, j) if mean_ranks[i] <= mean_ranks[j] else (j, i)
                stat = mean_ranks[a] - mean_ranks[b]
                zz = stat / se
                pp = st.norm_sf2(zz)
                rows.append((fields[a], fields[b], stat, se, zz, pp, min(1.0, pp * m)))
    info = []
    for j, f in enumerate(fields):
        rank_rows = [[r, c] for r, c in sorted(per_column[j].items())]
        info.append(struct("VariableInformation", attr("GroupIndex", f), attr("MeanOfRank", mean_ranks[j]),
                           simple("RankCounts", [], ["Rank", "Count"], rank_rows)))
    if kendall:
        name, key = "RKendallsCoefficient", "R_KendallsCoefficient_1"
        stats = statistics(("TotalN", n), ("KendallsW", chi / (n * (k - 1))), ("TestStatistic", chi),
                           ("DegreeOfFreedom", df), ("AsymptoticSig2Tailed", p))
    else:
        name, key = "RFriedmansTwoWayByRanks", "R_FriedmansTwoWayByRanks_1"
        stats = statistics(("TotalN", n), ("TestStatistic", chi), ("DegreeOfFreedom", df),
                           ("AsymptoticSig2Tailed", p))
    return algorithm(name, REL, decide(p), condition(key, [fields]), stats, *info,
                     comparison(comparisons, "MeanRank", order, values, rows))


# ---------------------------------------------------------------------------
# Independent samples


def _group_tables(groups, width, mean_ranks=None):
    """One table per group: its size, mean rank and histogram (bins common to
    all groups)."""
    allv = [v for g in groups for v in g]
    out = []
    for i, g in enumerate(groups):
        t = struct("Group%d" % i, attr("GroupIndex", i), attr("N", len(g)))
        if mean_ranks is not None:
            t.add(attr("MeanOfRank", mean_ranks[i]))
        t.add(histogram_table(st.histogram(g, width, 0, min(allv), max(allv))))
        out.append(t)
    return out


def mann_whitney(doc, fi, gi, width, exact=False):
    (x, y), _ = _groups(doc, fi, gi)
    u, w, se, z, p, mr1, mr2 = st.mann_whitney(x, y)
    items = [("TotalN", len(x) + len(y)), ("TestStatistic", u), ("WilcoxonW", w),
             ("StandardError", se), ("StandardizedTestStatistic", z), ("AsymptoticSig2Tailed", p)]
    if exact:
        p = st.mann_whitney_exact(x, y, u)
        items.append(("ExactSig2Tailed", p))
    return algorithm("IMannWhitneyU", IND, decide(p),
                     condition("DefaultAllDistinctValuesUsed_I_MannWhitneyU_2", [fi, gi]),
                     statistics(*items), *_group_tables([x, y], width, [mr1, mr2]))


def kruskal_wallis(doc, fi, gi, key="DefaultAllDistinctValuesUsed_I_KruskalWallis_2"):
    groups, cases = _groups(doc, fi, gi)
    h, df, p, mean_ranks, ties = st.kruskal_wallis(groups)
    rows = st.dunn_pairs(groups, mean_ranks, ties)
    # written in the order of the first sample's index, as the engine meets them
    rows.sort(key=lambda r: (min(r[0], r[1]), max(r[0], r[1])))
    return algorithm(
        "IKruskalWallis", IND, decide(p), condition(key, [fi, gi]),
        statistics(("TotalN", sum(map(len, groups))), ("TestStatistic", h), ("DegreeOfFreedom", df),
                   ("AsymptoticSig2Tailed", p)),
        boxplot_info(gi, groups, cases, mean_ranks=mean_ranks),
        comparison("Pairwise", "MeanRank", list(range(len(groups))), mean_ranks, rows, field_index=fi)), p
