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


def cochran(doc, fields, success_value, comparisons="Pairwise", extra=()):
    cols, _ = _pairs(doc, fields)
    cols = [[1 if v == success_value else 0 for v in c] for c in cols]
    n = len(cols[0])
    k = len(fields)
    q, df, p, successes, se = st.cochran_q(cols)
    m = k * (k - 1) // 2
    rows = []
    for i in range(k):
        for j in range(i + 1, k):
            a, b = (i, j) if successes[i] <= successes[j] else (j, i)
            stat = (successes[a] - successes[b]) / n
            z = stat / se
            pp = st.norm_sf2(z)
            rows.append((fields[a], fields[b], stat, se, z, pp, min(1.0, pp * m)))
    order = sorted(range(k), key=lambda i: successes[i])
    table = simple("Content", [str(f) for f in fields], [SUCCESS_COLUMN, FAILURE_COLUMN],
                   [[100.0 * t / n, 100.0 * (n - t) / n] for t in successes])
    return algorithm(
        "RCochransQ", REL, decide(p), condition("CategoryListsAreSpecified_R_CochransQ_1", [fields]),
        *extra,
        statistics(("TotalN", n), ("TestStatistic", q), ("DegreeOfFreedom", df),
                   ("AsymptoticSig2Tailed", p)),
        struct("TwoClassComparison", table),
        comparison(comparisons, "Successes", [fields[i] for i in order], [successes[i] for i in order],
                   rows))


def _crosstab(doc, first, second, positions=None):
    """Counts of the two fields' categories (rows: first field); with
    `positions`, only those category positions, in that order."""
    fa, fb = doc.fields[first], doc.fields[second]
    pa = positions or list(range(len(fa.values)))
    pb = positions or list(range(len(fb.values)))
    table = [[0] * len(pb) for _ in pa]
    for a, b in zip(fa.data, fb.data):
        if a is None or b is None:
            continue
        i, j = fa.position(a), fb.position(b)
        if i in pa and j in pb:
            table[pa.index(i)][pb.index(j)] += 1
    return table


def mcnemar(doc, first, second, success, failure, row_outside=(), col_outside=()):
    """McNemar's test of two binary fields; the table holds the failure and
    the success category, in position order."""
    positions = sorted([success, failure])
    t = _crosstab(doc, first, second, positions)
    n = sum(map(sum, t))
    s, f = positions.index(success), positions.index(failure)
    b, c = t[f][s], t[s][f]
    chi = (abs(b - c) - 1) ** 2 / (b + c)
    p = st.chi2_sf(chi, 1)
    cmp_table = struct(
        "CategoryFieldsComparison", attr("RowNames", first), attr("ColumnNames", second),
        attr("RowSuccessList", success), attr("RowFailList", failure),
        attr("ColumnSuccessList", success), attr("ColumnFailList", failure),
        simple("Crosstab", [str(i) for i in positions], [str(i) for i in positions], t))
    if row_outside:
        cmp_table.add(struct("RowValsNotInTheCategoreis", *[attr("Value", v) for v in row_outside]))
    if col_outside:
        cmp_table.add(struct("ColValsNotInTheCategoreis", *[attr("Value", v) for v in col_outside]))
    return algorithm(
        "RMcNemar", REL, decide(p), condition("CategoryListsAreSpecified_R_McNemar_2", [first, second]),
        statistics(("TotalN", n), ("TestStatistic", chi), ("DegreeOfFreedom", 1),
                   ("AsymptoticSig2Tailed", p)),
        cmp_table)


def marginal_homogeneity(doc, first, second):
    t = _crosstab(doc, first, second)
    fa, fb = doc.fields[first], doc.fields[second]
    n = sum(map(sum, t))
    obs = mean_ = var = 0.0
    for i, row in enumerate(t):
        for j, cnt in enumerate(row):
            if i == j:
                continue
            x, y = fa.values[i][0], fb.values[j][0]
            obs += cnt * x
            mean_ += cnt * (x + y) / 2.0
            var += cnt * (x - y) ** 2 / 4.0
    se = math.sqrt(var)
    z = (obs - mean_) / se
    p = st.norm_sf2(z)
    return algorithm(
        "RMarginalHomogeneity", REL, decide(p),
        condition("AllDistinctValuesUsed_R_MarginalHomogeneity_2", [first, second]),
        statistics(("TotalN", n), ("TestStatistic", obs), ("StandardError", se),
                   ("StandardizedTestStatistic", z), ("AsymptoticSig2Tailed", p)),
        struct("CategoryFieldsComparison", attr("RowNames", first), attr("ColumnNames", second),
               simple("Crosstab", [str(i) for i in range(len(t))], [str(i) for i in range(len(t[0]))],
                      t)))


def hodges_lehmann_pairs(doc, first, second, level=0.95):
    (x, y), _ = _pairs(doc, [first, second])
    est, lo, hi = st.hodges_lehmann_paired([b - a for a, b in zip(x, y)], level)
    return algorithm("RHodgesLehmannEstimatePairs", REL, None,
                     condition("R_HodgesLehman_2", [first, second]),
                     statistics(("Estimate", est), ("Asymptotic", [("LowerBound", lo), ("UpperBound", hi)])))


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


def kolmogorov_two(doc, fi, gi, width):
    (x, y), _ = _groups(doc, fi, gi)
    n1, n2 = len(x), len(y)
    dp = dn = 0.0
    for v in sorted(set(x + y)):
        f1 = sum(1 for a in x if a <= v) / n1
        f2 = sum(1 for b in y if b <= v) / n2
        dp = max(dp, f1 - f2)
        dn = min(dn, f1 - f2)
    d = max(dp, -dn)
    z = d * math.sqrt(n1 * n2 / (n1 + n2))
    p = st.kolmogorov_sf(z)
    return algorithm("IKolmogorovSmirnov", IND, decide(p),
                     condition("DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2", [fi, gi]),
                     statistics(("TotalN", n1 + n2),
                                ("MostExtremeDifferences",
                                 [("Absolute", d), ("Positive", dp), ("Negative", dn)]),
                                ("TestStatistic", z), ("AsymptoticSig2Tailed", p)),
                     *_group_tables([x, y], width))


def wald_wolfowitz(doc, fi, gi, width, extra=()):
    (x, y), _ = _groups(doc, fi, gi)
    (rmin, zmin, pmin), (rmax, zmax, pmax) = st.wald_wolfowitz(x, y)
    return algorithm(
        "IWaldWolfowitzRuns", IND, decide(pmax),
        condition("DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2", [fi, gi]), *extra,
        statistics(("TotalN", len(x) + len(y)),
                   ("MinimumPossible", [("TestStatistic", rmin), ("StandardizedTestStatistic", zmin),
                                        ("ExactSig1Tailed", pmin)]),
                   ("MaximumPossible", [("TestStatistic", rmax), ("StandardizedTestStatistic", zmax),
                                        ("ExactSig1Tailed", pmax)]),
                   ("TestStatistic", [("MinimumPossible", rmin), ("MaximumPossible", rmax)])),
        *_group_tables([x, y], width)), (rmin, rmax)


def moses(doc, fi, gi, control=0):
    groups, cases = _groups(doc, fi, gi)
    c, e = groups[control], groups[1 - control]
    ranks, _ = st.midranks(c + e)
    cr = sorted(ranks[:len(c)])
    m, n = len(c), len(e)
    h = max(1, int(0.05 * m))
    span = int(round(cr[-1] - cr[0] + 1))
    tspan = int(round(cr[-1 - h] - cr[h] + 1))
    p = st.moses_p(span, m, n, 0)
    tp = st.moses_p(tspan, m, n, h)
    return algorithm(
        "IMoses", IND, decide(tp), condition("DefaultAllDistinctValuesUsed_I_Moses_2", [fi, gi]),
        statistics(("TotalN", m + n),
                   ("ObservedControlGroup", [("TestStatistic", span), ("ExactSig1Tailed", p)]),
                   ("TrimmedControlGroup", [("TestStatistic", tspan), ("ExactSig1Tailed", tp)]),
                   ("TestStatistic", [("ObservedControlGroup", span), ("TrimmedControlGroup", tspan)])),
        boxplot_info(gi, groups, cases))


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


def jonckheere(doc, fi, gi):
    groups, cases = _groups(doc, fi, gi)
    j, se, z = st.jonckheere(groups)
    p = st.norm_sf2(z)
    _, _, _, mean_ranks, _ = st.kruskal_wallis(groups)
    order = sorted(range(len(groups)), key=lambda i: mean_ranks[i])

    def test(members):
        jj, ss, zz = st.jonckheere([groups[i] for i in sorted(members)])
        return jj, ss, zz, 1 - st.norm_cdf(zz)

    rows = st.stepwise_subsets(order, test, len(groups))
    return algorithm(
        "IJonckheereTerpstra", IND, decide(p),
        condition("DefaultAllDistinctValuesUsed_I_JonckheereTerpstra_2", [fi, gi]),
        statistics(("TotalN", sum(map(len, groups))), ("TestStatistic", j), ("StandardError", se),
                   ("StandardizedTestStatistic", z), ("AsymptoticSig2Tailed", p)),
        boxplot_info(gi, groups, cases, mean_ranks=mean_ranks),
        comparison("Stepwise", "MeanRank", order, [mean_ranks[i] for i in order], rows, field_index=fi))


def median_test(doc, fi, gi, pairwise=False, extra=()):
    """Median test; also returns the pairwise rows (first sample, second
    sample, ...) when asked for them."""
    groups, cases = _groups(doc, fi, gi)
    r = st.median_test(groups)
    items = [("TotalN", sum(map(len, groups))), ("Median", r["median"]), ("TestStatistic", r["chi"]),
             ("DegreeOfFreedom", r["df"]), ("AsymptoticSig2Tailed", r["p"])]
    p = r["p"]
    if len(groups) == 2:
        items.append(("YatesContinuityCorrection", [("TestStatistic", r["yates"]), ("DegreeOfFreedom", 1),
                                                    ("AsymptoticSig2Tailed", r["yates_p"])]))
        items.append(("FisherExactSig", r["fisher"]))
        p = r["fisher"]
    tables = [boxplot_info(gi, groups, cases, grand_median=r["median"])]
    if pairwise:
        meds = [st.median(g) for g in groups]
        k = len(groups)
        m = k * (k - 1) // 2
        rows = []
        for i in range(k):
            for j in range(i + 1, k):
                a, b = (i, j) if meds[i] <= meds[j] else (j, i)
                pr = st.median_test([groups[a], groups[b]])
                rows.append((a, b, pr["chi"], None, None, pr["p"], min(1.0, pr["p"] * m)))
        tables.append(comparison("Pairwise", "Median", list(range(k)), meds, rows, field_index=fi))
    return algorithm("IMedian", IND, decide(p), condition("DefaultAllDistinctValuesUsed_I_Median_2", [fi, gi]),
                     *extra, statistics(*items), *tables), (rows if pairwise else [])


def hodges_lehmann_groups(doc, fi, gi, level=0.95):
    (x, y), _ = _groups(doc, fi, gi)
    est, lo, hi = st.hodges_lehmann_two(x, y, level)
    return algorithm("IHodgesLehmannEstimateGroups", IND, None,
                     condition("AllDistinctValuesUsed_I_HodgesLehman_2", [fi, gi]),
                     statistics(("Estimate", est), ("Asymptotic", [("LowerBound", lo), ("UpperBound", hi)])))
