"""Nonparametric statistics for the example documents (standard library only).

Every function takes plain lists of numbers and returns plain numbers, so that
the numbers written into the example documents can be traced back to the
invented data sets in make_examples.py.
"""

import math
import random

SQRT2 = math.sqrt(2.0)


# ---------------------------------------------------------------------------
# Distributions


def norm_cdf(z):
    return 0.5 * math.erfc(-z / SQRT2)


def norm_sf2(z):
    """Two-sided tail probability of a standard normal deviate."""
    return math.erfc(abs(z) / SQRT2)


def norm_ppf(p):
    lo, hi = -40.0, 40.0
    for _ in range(200):
        mid = (lo + hi) / 2
        if norm_cdf(mid) < p:
            lo = mid
        else:
            hi = mid
    return (lo + hi) / 2


def _gamma_series(a, x):
    total = term = 1.0 / a
    ap = a
    for _ in range(10000):
        ap += 1
        term *= x / ap
        total += term
        if abs(term) < abs(total) * 1e-16:
            break
    return total * math.exp(-x + a * math.log(x) - math.lgamma(a))


def _gamma_cf(a, x):
    tiny = 1e-300
    b = x + 1 - a
    c = 1 / tiny
    d = 1 / b
    h = d
    for i in range(1, 10000):
        an = -i * (i - a)
        b += 2
        d = an * d + b
        d = tiny if abs(d) < tiny else d
        c = b + an / c
        c = tiny if abs(c) < tiny else c
        d = 1 / d
        delta = d * c
        h *= delta
        if abs(delta - 1) < 1e-16:
            break
    return math.exp(-x + a * math.log(x) - math.lgamma(a)) * h


def chi2_sf(x, df):
    if x <= 0:
        return 1.0
    a = df / 2.0
    x = x / 2.0
    if x < a + 1:
        return 1.0 - _gamma_series(a, x)
    return _gamma_cf(a, x)


def _betacf(a, b, x):
    tiny = 1e-300
    qab, qap, qam = a + b, a + 1, a - 1
    c = 1.0
    d = 1 - qab * x / qap
    d = tiny if abs(d) < tiny else d
    d = 1 / d
    h = d
    for m in range(1, 10000):
        m2 = 2 * m
        aa = m * (b - m) * x / ((qam + m2) * (a + m2))
        d = 1 + aa * d
        d = tiny if abs(d) < tiny else d
        c = 1 + aa / c
        c = tiny if abs(c) < tiny else c
        d = 1 / d
        h *= d * c
        aa = -(a + m) * (qab + m) * x / ((a + m2) * (qap + m2))
        d = 1 + aa * d
        d = tiny if abs(d) < tiny else d
        c = 1 + aa / c
        c = tiny if abs(c) < tiny else c
        d = 1 / d
        delta = d * c
        h *= delta
        if abs(delta - 1) < 1e-16:
            break
    return h


def betainc(a, b, x):
    if x <= 0:
        return 0.0
    if x >= 1:
        return 1.0
    lbt = math.lgamma(a + b) - math.lgamma(a) - math.lgamma(b) + a * math.log(x) + b * math.log(1 - x)
    if x < (a + 1) / (a + b + 2):
        return math.exp(lbt) * _betacf(a, b, x) / a
    return 1 - math.exp(lbt) * _betacf(b, a, 1 - x) / b


def beta_ppf(p, a, b):
    lo, hi = 0.0, 1.0
    for _ in range(200):
        mid = (lo + hi) / 2
        if betainc(a, b, mid) < p:
            lo = mid
        else:
            hi = mid
    return (lo + hi) / 2


def binom_cdf(k, n, p):
    return sum(math.comb(n, i) * p**i * (1 - p) ** (n - i) for i in range(0, k + 1))


def binom_exact_2sided(x, n, p=0.5):
    lower = binom_cdf(x, n, p)
    upper = 1 - binom_cdf(x - 1, n, p) if x > 0 else 1.0
    return min(1.0, 2 * min(lower, upper))


def poisson_cdf(k, lam):
    if k < 0:
        return 0.0
    return sum(math.exp(-lam + i * math.log(lam) - math.lgamma(i + 1)) for i in range(0, int(k) + 1))


def kolmogorov_sf(z):
    """P(sqrt(n) D > z) in the limit (Kolmogorov's distribution)."""
    if z < 0.27:
        return 1.0
    total = 0.0
    for k in range(1, 101):
        total += (-1) ** (k - 1) * math.exp(-2 * k * k * z * z)
    return max(0.0, min(1.0, 2 * total))


def lilliefors_dallal_wilkinson(d, n):
    """Dallal-Wilkinson approximation of the Lilliefors significance."""
    nn = n
    if n > 100:
        d = d * (n / 100.0) ** 0.49
        nn = 100
    return math.exp(-7.01256 * d * d * (nn + 2.78019) + 2.99587 * d * math.sqrt(nn + 2.78019)
                    - 0.122119 + 0.974598 / math.sqrt(nn) + 1.67997 / nn)


# ---------------------------------------------------------------------------
# Ranks and descriptives


def midranks(values):
    """Mid-ranks (1-based) of values, and the sizes of the tied groups."""
    order = sorted(range(len(values)), key=lambda i: values[i])
    ranks = [0.0] * len(values)
    ties = []
    i = 0
    while i < len(order):
        j = i
        while j + 1 < len(order) and values[order[j + 1]] == values[order[i]]:
            j += 1
        r = (i + j + 2) / 2.0
        for k in range(i, j + 1):
            ranks[order[k]] = r
        ties.append(j - i + 1)
        i = j + 1
    return ranks, ties


def tie_sum(ties):
    return sum(t**3 - t for t in ties)


def median(values):
    s = sorted(values)
    n = len(s)
    return s[n // 2] if n % 2 else (s[n // 2 - 1] + s[n // 2]) / 2.0


def mean(values):
    return sum(values) / len(values)


def sd(values):
    m = mean(values)
    return math.sqrt(sum((v - m) ** 2 for v in values) / (len(values) - 1))


def percentile_haverage(values, p):
    """Weighted average at position p(n+1), the usual box-plot quartiles."""
    s = sorted(values)
    n = len(s)
    pos = p * (n + 1)
    if pos <= 1:
        return s[0]
    if pos >= n:
        return s[-1]
    k = int(math.floor(pos))
    frac = pos - k
    return s[k - 1] + frac * (s[k] - s[k - 1])


def box_numbers(values, case_numbers):
    """Five box numbers and the outlying cases (value, case number)."""
    q1 = percentile_haverage(values, 0.25)
    q2 = median(values)
    q3 = percentile_haverage(values, 0.75)
    iqr = q3 - q1
    lo_fence, hi_fence = q1 - 1.5 * iqr, q3 + 1.5 * iqr
    inside = [v for v in values if lo_fence <= v <= hi_fence]
    outliers = sorted((v, c) for v, c in zip(values, case_numbers) if v < lo_fence or v > hi_fence)
    return [min(inside), q1, q2, q3, max(inside)], outliers


def histogram(values, width, origin=0.0, lo=None, hi=None):
    """Bins of the given width aligned on origin, covering lo..hi (by default
    the range of the values): list of (midpoint, count)."""
    if not values:
        return []
    lo = min(values) if lo is None else lo
    hi = max(values) if hi is None else hi
    start = origin + math.floor((lo - origin) / width) * width
    bins = []
    while start <= hi:
        end = start + width
        bins.append((start + width / 2.0, sum(1 for v in values if start <= v < end)))
        start = end
    return bins


def difference_histogram(values, width):
    """Bins of paired differences with zero as a bin edge: negative
    differences in [-(k+1)w, -kw), positive ones in (kw, (k+1)w]; zero
    differences (ties) are in no bin. List of (midpoint, count), lowest
    first, covering the range of the non-zero differences."""
    nonzero = [v for v in values if v != 0]
    if not nonzero:
        return []
    lo = min(0, -math.ceil(-min(nonzero) / width))
    hi = max(0, math.ceil(max(nonzero) / width))
    bins = []
    for k in range(lo, hi):
        a, b = k * width, (k + 1) * width
        if b <= 0:
            count = sum(1 for v in nonzero if a <= v < b)
        else:
            count = sum(1 for v in nonzero if a < v <= b)
        bins.append((a + width / 2.0, count))
    return bins


# ---------------------------------------------------------------------------
# One-sample tests


def ks_one_sample(values, cdf, support=None):
    """Most extreme differences of the empirical and a hypothesized CDF.

    For a discrete distribution give `support`, the points at which both step
    functions may jump."""
    n = len(values)
    s = sorted(values)
    dplus = dminus = 0.0
    if support is None:
        for i, x in enumerate(s):
            f = cdf(x)
            # empirical CDF just after and just before x
            hi = sum(1 for v in s if v <= x) / n
            lo = sum(1 for v in s if v < x) / n
            dplus = max(dplus, hi - f)
            dminus = max(dminus, f - lo)
    else:
        for u in support:
            fn = sum(1 for v in s if v <= u) / n
            f = cdf(u)
            dplus = max(dplus, fn - f)
            dminus = max(dminus, f - fn)
    return max(dplus, dminus), dplus, -dminus


def lilliefors_mc(n, d_obs, kind, samples, seed):
    """Monte Carlo significance of a Kolmogorov-Smirnov statistic whose
    parameters are estimated from the sample; returns (p, lower, upper) with
    a 99% confidence interval."""
    rng = random.Random(seed)
    hits = 0
    for _ in range(samples):
        if kind == "normal":
            x = sorted(rng.gauss(0, 1) for _ in range(n))
            m = sum(x) / n
            s = math.sqrt(sum((v - m) ** 2 for v in x) / (n - 1))
            f = [norm_cdf((v - m) / s) for v in x]
        elif kind == "uniform":  # end points estimated from the sample
            x = sorted(rng.random() for _ in range(n))
            a, b = x[0], x[-1]
            f = [(v - a) / (b - a) for v in x]
        else:  # exponential with the mean estimated from the sample
            x = sorted(rng.expovariate(1.0) for _ in range(n))
            m = sum(x) / n
            f = [1 - math.exp(-v / m) for v in x]
        d = 0.0
        for i, fv in enumerate(f):
            d = max(d, (i + 1) / n - fv, fv - i / n)
        if d >= d_obs - 1e-12:
            hits += 1
    p = hits / samples
    half = 2.5758293035489 * math.sqrt(p * (1 - p) / samples)
    return p, max(0.0, p - half), min(1.0, p + half)


def runs_count(sequence):
    return 1 + sum(1 for a, b in zip(sequence, sequence[1:]) if a != b)


def runs_test(sequence):
    """Runs test of a two-valued sequence: runs, mean, sd, z (continuity
    corrected below 50 cases), two-sided significance."""
    n = len(sequence)
    first = sequence[0]
    n1 = sum(1 for v in sequence if v == first)
    n2 = n - n1
    r = runs_count(sequence)
    mu = 2.0 * n1 * n2 / n + 1
    var = 2.0 * n1 * n2 * (2.0 * n1 * n2 - n) / (n * n * (n - 1))
    sdv = math.sqrt(var)
    diff = r - mu
    if n < 50:
        diff = diff + 0.5 if diff < 0 else diff - 0.5
        if abs(r - mu) < 0.5:
            diff = 0.0
    z = diff / sdv
    return r, mu, sdv, z, norm_sf2(z)


def signed_rank(diffs):
    """Wilcoxon signed-rank: T+, standard error, z, two-sided significance,
    and the counts of negative, zero and positive differences."""
    nonzero = [d for d in diffs if d != 0]
    neg = sum(1 for d in diffs if d < 0)
    pos = sum(1 for d in diffs if d > 0)
    ties0 = len(diffs) - len(nonzero)
    ranks, ties = midranks([abs(d) for d in nonzero])
    tplus = sum(r for r, d in zip(ranks, nonzero) if d > 0)
    n = len(nonzero)
    e = n * (n + 1) / 4.0
    var = n * (n + 1) * (2 * n + 1) / 24.0 - tie_sum(ties) / 48.0
    se = math.sqrt(var)
    z = (tplus - e) / se
    return tplus, se, z, norm_sf2(z), neg, ties0, pos


def clopper_pearson(x, n, level=0.95):
    a = 1 - level
    lo = 0.0 if x == 0 else beta_ppf(a / 2, x, n - x + 1)
    hi = 1.0 if x == n else beta_ppf(1 - a / 2, x + 1, n - x)
    return lo, hi


def jeffreys(x, n, level=0.95):
    a = 1 - level
    return beta_ppf(a / 2, x + 0.5, n - x + 0.5), beta_ppf(1 - a / 2, x + 0.5, n - x + 0.5)


def profile_likelihood(x, n, level=0.95):
    crit = norm_ppf(1 - (1 - level) / 2) ** 2
    ph = x / n

    def dev(p):
        out = 0.0
        if x > 0:
            out += x * math.log(ph / p)
        if x < n:
            out += (n - x) * math.log((1 - ph) / (1 - p))
        return 2 * out

    def solve(lo, hi, increasing):
        for _ in range(200):
            mid = (lo + hi) / 2
            if (dev(mid) > crit) == increasing:
                hi = mid
            else:
                lo = mid
        return (lo + hi) / 2

    lower = solve(1e-12, ph, False)
    upper = solve(ph, 1 - 1e-12, True)
    return lower, upper


# ---------------------------------------------------------------------------
# Independent samples


def mann_whitney(x, y):
    """U (of the second sample), Wilcoxon W (rank sum of the second sample),
    standard error, z, two-sided significance, mean ranks."""
    allv = x + y
    ranks, ties = midranks(allv)
    n1, n2 = len(x), len(y)
    n = n1 + n2
    r1 = sum(ranks[:n1])
    r2 = sum(ranks[n1:])
    u = r2 - n2 * (n2 + 1) / 2.0
    var = n1 * n2 / 12.0 * ((n + 1) - tie_sum(ties) / (n * (n - 1)))
    se = math.sqrt(var)
    z = (u - n1 * n2 / 2.0) / se
    return u, r2, se, z, norm_sf2(z), r1 / n1, r2 / n2


def mann_whitney_exact(x, y, u):
    """Exact two-sided significance of U by enumeration of rank sums
    (mid-ranks doubled to stay integral)."""
    allv = x + y
    ranks, _ = midranks(allv)
    twice = [int(round(2 * r)) for r in ranks]
    n1, n2 = len(x), len(y)
    # counts[k][s]: number of ways to choose k ranks with doubled sum s
    counts = [dict() for _ in range(n2 + 1)]
    counts[0][0] = 1
    for r in twice:
        for k in range(n2 - 1, -1, -1):
            for s, c in list(counts[k].items()):
                counts[k + 1][s + r] = counts[k + 1].get(s + r, 0) + c
    total = math.comb(n1 + n2, n2)
    w_obs2 = int(round(2 * (u + n2 * (n2 + 1) / 2.0)))
    mean2 = n2 * (n1 + n2 + 1)
    dev = abs(w_obs2 - mean2)
    extreme = sum(c for s, c in counts[n2].items() if abs(s - mean2) >= dev - 1e-9)
    return min(1.0, extreme / total)


def kruskal_wallis(groups):
    allv = [v for g in groups for v in g]
    ranks, ties = midranks(allv)
    n = len(allv)
    pos = 0
    sums = []
    for g in groups:
        sums.append(sum(ranks[pos:pos + len(g)]))
        pos += len(g)
    h = 12.0 / (n * (n + 1)) * sum(s * s / len(g) for s, g in zip(sums, groups)) - 3 * (n + 1)
    h /= 1 - tie_sum(ties) / (n**3 - n)
    df = len(groups) - 1
    mean_ranks = [s / len(g) for s, g in zip(sums, groups)]
    return h, df, chi2_sf(h, df), mean_ranks, ties


def dunn_pairs(groups, mean_ranks, ties):
    """Pairwise comparisons after Kruskal-Wallis, each pair written with the
    sample of the smaller mean rank first: (i, j, statistic, se, z, sig,
    Bonferroni-adjusted sig)."""
    n = sum(len(g) for g in groups)
    k = len(groups)
    base = n * (n + 1) / 12.0 - tie_sum(ties) / (12.0 * (n - 1))
    m = k * (k - 1) // 2
    rows = []
    for i in range(k):
        for j in range(i + 1, k):
            a, b = (i, j) if mean_ranks[i] <= mean_ranks[j] else (j, i)
            stat = mean_ranks[a] - mean_ranks[b]
            se = math.sqrt(base * (1.0 / len(groups[a]) + 1.0 / len(groups[b])))
            z = stat / se
            p = norm_sf2(z)
            rows.append((a, b, stat, se, z, p, min(1.0, p * m)))
    return rows


def jonckheere(groups):
    """Jonckheere-Terpstra statistic for an increasing trend over the groups
    in the given order, with the tie-corrected standard error."""
    j = 0.0
    for a in range(len(groups)):
        for b in range(a + 1, len(groups)):
            for x in groups[a]:
                for y in groups[b]:
                    j += 1.0 if x < y else 0.5 if x == y else 0.0
    ns = [len(g) for g in groups]
    n = sum(ns)
    _, ties = midranks([v for g in groups for v in g])
    e = (n * n - sum(m * m for m in ns)) / 4.0
    v = (n * (n - 1) * (2 * n + 5) - sum(m * (m - 1) * (2 * m + 5) for m in ns)
         - sum(t * (t - 1) * (2 * t + 5) for t in ties)) / 72.0
    v += (sum(m * (m - 1) * (m - 2) for m in ns) * sum(t * (t - 1) * (t - 2) for t in ties)
          / (36.0 * n * (n - 1) * (n - 2)))
    v += sum(m * (m - 1) for m in ns) * sum(t * (t - 1) for t in ties) / (8.0 * n * (n - 1))
    se = math.sqrt(v)
    z = (j - e) / se
    return j, se, z


def median_test(groups, grand=None):
    """Median test: grand median, counts above and at or below it per group,
    chi-square, its Yates-corrected form (2 groups), Fisher's exact
    significance (2 groups)."""
    allv = [v for g in groups for v in g]
    med = median(allv) if grand is None else grand
    gt = [sum(1 for v in g if v > med) for g in groups]
    le = [len(g) - a for g, a in zip(groups, gt)]
    n = len(allv)
    tgt, tle = sum(gt), sum(le)
    chi = 0.0
    for a, b, g in zip(gt, le, groups):
        ea = len(g) * tgt / n
        eb = len(g) * tle / n
        chi += (a - ea) ** 2 / ea + (b - eb) ** 2 / eb
    df = len(groups) - 1
    out = {"median": med, "gt": gt, "le": le, "chi": chi, "df": df, "p": chi2_sf(chi, df)}
    if len(groups) == 2:
        a, b = gt
        c, d = le
        num = (abs(a * d - b * c) - n / 2.0) ** 2 * n
        yates = max(0.0, num / ((a + b) * (c + d) * (a + c) * (b + d))) if abs(a * d - b * c) > n / 2.0 else 0.0
        out["yates"] = yates
        out["yates_p"] = chi2_sf(yates, 1)
        out["fisher"] = fisher_exact(a, b, c, d)
    return out


def fisher_exact(a, b, c, d):
    """Two-sided Fisher exact significance of the 2x2 table [[a, b], [c, d]]."""
    r1, r2, c1 = a + b, c + d, a + c
    n = r1 + r2

    def prob(x):
        return math.comb(r1, x) * math.comb(r2, c1 - x) / math.comb(n, c1)

    p_obs = prob(a)
    lo, hi = max(0, c1 - r2), min(r1, c1)
    return min(1.0, sum(prob(x) for x in range(lo, hi + 1) if prob(x) <= p_obs * (1 + 1e-9)))


def runs_distribution_le(r, n1, n2):
    """P(R <= r) for the number of runs of n1 and n2 symbols."""
    total = math.comb(n1 + n2, n1)

    def c(n, k):
        return math.comb(n, k) if 0 <= k <= n else 0

    p = 0
    for runs in range(2, r + 1):
        if runs % 2 == 0:
            k = runs // 2
            p += 2 * c(n1 - 1, k - 1) * c(n2 - 1, k - 1)
        else:
            k = (runs - 1) // 2
            p += c(n1 - 1, k - 1) * c(n2 - 1, k) + c(n1 - 1, k) * c(n2 - 1, k - 1)
    return p / total


def wald_wolfowitz(x, y):
    """Minimum and maximum possible numbers of runs over the orderings of
    tied values, each with z and exact one-sided significance."""
    blocks = {}
    for v in x:
        blocks.setdefault(v, [0, 0])[0] += 1
    for v in y:
        blocks.setdefault(v, [0, 0])[1] += 1
    seq_blocks = [blocks[k] for k in sorted(blocks)]

    def best(minimise):
        # state: last symbol -> best run count so far
        inf = float("inf")
        state = {None: 0}
        for a, b in seq_blocks:
            new = {}
            for last, runs in state.items():
                options = []
                if a and b:
                    # the block forms two runs (x...x y...y or the reverse),
                    # or, to maximise, alternates as much as it can
                    for first_sym in (0, 1):
                        other = 1 - first_sym
                        cnt = [a, b]
                        if minimise:
                            # x...x y...y: two runs, the first may join the last one
                            add = 2 - (1 if last == first_sym else 0)
                            options.append((other, runs + add))
                        else:
                            # alternate as long as both symbols last
                            seq_runs = 2 * min(cnt) + (1 if cnt[first_sym] > cnt[other] else 0)
                            end_sym = first_sym if seq_runs % 2 == 1 else other
                            add = seq_runs - (1 if last == first_sym else 0)
                            options.append((end_sym, runs + add))
                else:
                    sym = 0 if a else 1
                    options.append((sym, runs + (0 if last == sym else 1)))
                for sym, val in options:
                    if minimise:
                        new[sym] = min(new.get(sym, inf), val)
                    else:
                        new[sym] = max(new.get(sym, -inf), val)
            state = new
        return min(state.values()) if minimise else max(state.values())

    n1, n2 = len(x), len(y)
    n = n1 + n2
    mu = 2.0 * n1 * n2 / n + 1
    sdv = math.sqrt(2.0 * n1 * n2 * (2.0 * n1 * n2 - n) / (n * n * (n - 1)))
    out = []
    for r in (best(True), best(False)):
        diff = r - mu
        diff = diff + 0.5 if diff < 0 else diff - 0.5
        out.append((r, diff / sdv, runs_distribution_le(r, n1, n2)))
    return out


def moses_p(span, m, n, h):
    """Exact P(trimmed control span <= span) of Moses' test (control size m,
    experimental size n, h cases trimmed from each end)."""
    total = math.comb(m + n, m)
    mm = m - 2 * h
    p = 0
    for i in range(0, span - mm + 1):
        p += math.comb(i + mm - 2, i) * math.comb(n + 2 * h + 1 - i, n - i) if i <= n else 0
    return min(1.0, p / total)


def hodges_lehmann_two(x, y, level=0.95):
    """Median of the differences y - x with its asymptotic interval."""
    diffs = sorted(b - a for a in x for b in y)
    n1, n2 = len(x), len(y)
    z = norm_ppf(1 - (1 - level) / 2)
    c = int(round(n1 * n2 / 2.0 - z * math.sqrt(n1 * n2 * (n1 + n2 + 1) / 12.0)))
    return median(diffs), diffs[c - 1], diffs[len(diffs) - c]


def hodges_lehmann_paired(d, level=0.95):
    """Median of the Walsh averages of the differences with its asymptotic
    interval."""
    walsh = sorted((d[i] + d[j]) / 2.0 for i in range(len(d)) for j in range(i, len(d)))
    n = len(d)
    z = norm_ppf(1 - (1 - level) / 2)
    c = int(round(n * (n + 1) / 4.0 - z * math.sqrt(n * (n + 1) * (2 * n + 1) / 24.0)))
    return median(walsh), walsh[c - 1], walsh[len(walsh) - c]


# ---------------------------------------------------------------------------
# Related samples


def friedman(columns):
    """Friedman's test over k related samples (columns of equal length):
    statistic, df, significance, mean ranks, rank counts per column."""
    k = len(columns)
    n = len(columns[0])
    sums = [0.0] * k
    tsum = 0
    per_column = [dict() for _ in range(k)]
    for i in range(n):
        row = [c[i] for c in columns]
        ranks, ties = midranks(row)
        tsum += tie_sum(ties)
        for j, r in enumerate(ranks):
            sums[j] += r
            per_column[j][r] = per_column[j].get(r, 0) + 1
    chi = 12.0 / (n * k * (k + 1)) * sum(s * s for s in sums) - 3 * n * (k + 1)
    chi /= 1 - tsum / (n * k * (k * k - 1))
    return chi, k - 1, chi2_sf(chi, k - 1), [s / n for s in sums], per_column


def cochran_q(columns):
    k = len(columns)
    n = len(columns[0])
    t = [sum(c) for c in columns]
    rows = [sum(c[i] for c in columns) for i in range(n)]
    total = sum(t)
    q = (k - 1) * (k * sum(v * v for v in t) - total * total) / (k * total - sum(v * v for v in rows))
    se_pair = math.sqrt(2 * (k * total - sum(v * v for v in rows)) / (n * n * k * (k - 1)))
    return q, k - 1, chi2_sf(q, k - 1), t, se_pair


def stepwise_subsets(order, test, k_total, alpha=0.05):
    """Homogeneous subsets by step-down testing of contiguous sets of the
    samples in `order` (ascending by their shown value). `test(members)`
    returns (statistic, se, z, sig) of one set. The adjusted significance of
    a set of size p is 1 - (1 - sig)^(k/p). Returns rows (first position,
    last position, statistic, se, z, sig, adjusted sig) sorted by first
    position; samples left alone form one-sample subsets without tests."""
    k = len(order)
    found = []
    for size in range(k, 1, -1):
        for start in range(0, k - size + 1):
            end = start + size - 1
            if any(f[0] <= start and end <= f[1] for f in found):
                continue
            stat, se, z, p = test([order[i] for i in range(start, end + 1)])
            adj = 1 - (1 - p) ** (k_total / size)
            if adj >= alpha:
                found.append((start, end, stat, se, z, p, adj))
    for pos in range(k):
        if not any(f[0] <= pos <= f[1] for f in found):
            found.append((pos, pos, None, None, None, None, None))
    return sorted(found, key=lambda f: (f[0], f[1]))
