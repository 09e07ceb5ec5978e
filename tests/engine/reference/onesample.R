# References for the one-sample tests. Each function takes the case's data
# columns (a list) and its parameters (a numeric vector) and returns named
# numbers; names starting with "sig" are significances, "n" counts.

# Chi-square goodness of fit: p empty for equal frequencies over the
# distinct values, else c(k, categories, frequencies).
chisquare <- function(cols, p) {
  x <- cols[[1]]
  if (length(p) == 0) {
    t <- table(x); r <- suppressWarnings(chisq.test(t))
  } else {
    k <- p[1]; lev <- p[2:(k + 1)]; w <- p[(k + 2):(2 * k + 1)]
    t <- table(factor(x[x %in% lev], levels = lev))
    r <- suppressWarnings(chisq.test(t, p = w, rescale.p = TRUE))
  }
  c(n = sum(t), statistic = unname(r$statistic), df = unname(r$parameter), sig = r$p.value,
    expected = unname(r$expected))
}

# The binomial test of the cases at or below the cut point p[1] against the
# proportion p[2], and the three success-rate intervals at level p[3].
binomial <- function(cols, p) {
  x <- sum(cols[[1]] <= p[1]); n <- length(cols[[1]]); p0 <- p[2]; level <- p[3]
  lr <- function() {
    ph <- x / n; crit <- qchisq(level, 1)
    ll <- function(q) (if (x > 0) x * log(q) else 0) + (if (x < n) (n - x) * log1p(-q) else 0)
    dev <- function(q) 2 * (ll(ph) - ll(q)) - crit
    c(if (x == 0) 0 else uniroot(dev, c(1e-300, ph), tol = 1e-15)$root,
      if (x == n) 1 else uniroot(dev, c(ph, 1 - 1e-16), tol = 1e-15)$root)
  }
  a <- (1 - level) / 2
  cp <- binom.test(x, n, conf.level = level)$conf.int
  l <- lr()
  c(n.successes = x, sig = min(1, 2 * min(pbinom(x, n, p0), pbinom(x - 1, n, p0, lower.tail = FALSE))),
    sig.minlik = binom.test(x, n, p0)$p.value,
    sig.less = binom.test(x, n, p0, alternative = "less")$p.value,
    sig.greater = binom.test(x, n, p0, alternative = "greater")$p.value,
    z = sign(x - n * p0) * sqrt(unname(suppressWarnings(prop.test(x, n, p0)$statistic))),
    cp.lower = cp[1], cp.upper = cp[2],
    jeffreys.lower = if (x == 0) 0 else qbeta(a, x + 0.5, n - x + 0.5),
    jeffreys.upper = if (x == n) 1 else qbeta(a, x + 0.5, n - x + 0.5, lower.tail = FALSE),
    lr.lower = l[1], lr.upper = l[2])
}

# Runs about a cut point (p[1]: 0 the median, 1 the mean, 2 the value p[2]) by
# the textbook formulas: z continuity corrected below 50 cases, the exact
# tails from the closed form.
runs <- function(cols, p) {
  x <- cols[[1]]
  cut <- if (p[1] == 0) median(x) else if (p[1] == 1) mean(x) else p[2]
  g <- as.integer(x > cut); n1 <- sum(g == 0); n2 <- sum(g == 1); n <- n1 + n2
  r <- 1 + sum(diff(g) != 0); mu <- 2 * n1 * n2 / n + 1
  v <- 2 * n1 * n2 * (2 * n1 * n2 - n) / (n^2 * (n - 1)); d <- r - mu
  if (n < 50) d <- sign(d) * max(abs(d) - 0.5, 0)
  z <- d / sqrt(v)
  pr <- function(k) {
    if (k %% 2 == 0) { m <- k / 2; 2 * choose(n1 - 1, m - 1) * choose(n2 - 1, m - 1) }
    else { m <- (k - 1) / 2
           choose(n1 - 1, m - 1) * choose(n2 - 1, m) + choose(n1 - 1, m) * choose(n2 - 1, m - 1) }
  }
  k <- 2:(2 * min(n1, n2) + 1); pk <- sapply(k, pr) / choose(n, n1)
  c(cut = cut, n.first = n1, n.second = n2, n.runs = r, mean = mu, sd = sqrt(v), z = z,
    sig = 2 * pnorm(-abs(z)), sig.less = sum(pk[k <= r]), sig.greater = sum(pk[k >= r]))
}

# Wilcoxon signed rank against the median p[1], the differences taken at the
# data's precision (the data sets have at most 12 decimals).
wilcoxon <- function(cols, p) {
  x <- cols[[1]]; d <- round(x - p[1], 12); d <- d[d != 0]; n <- length(d)
  a <- suppressWarnings(wilcox.test(d, exact = FALSE, correct = FALSE))
  t <- table(rank(abs(d))); s <- sqrt(n * (n + 1) * (2 * n + 1) / 24 - sum(t^3 - t) / 48)
  e <- if (n <= 50) exactRankTests::wilcox.exact(d, exact = TRUE)$p.value else NA
  c(statistic = unname(a$statistic), z = unname((a$statistic - n * (n + 1) / 4) / s),
    sig = a$p.value, sig.exact = e, median = median(x))
}

# Kolmogorov-Smirnov against p[1] (0 normal, 1 uniform, 2 Poisson, 3
# exponential), with the parameters p[-1] or estimated from the sample. The
# Poisson's D is sup |Fn - F| over every real number (both are steps).
ks <- function(cols, p) {
  x <- cols[[1]]; n <- length(x); given <- p[-1]; est <- length(given) == 0
  if (p[1] == 2) {
    lambda <- if (est) mean(x) else given[1]
    u <- 0:(max(x) + 1); d <- ecdf(x)(u) - ppois(u, lambda)
    return(c(positive = max(0, d), negative = -max(0, -d), absolute = max(abs(d)),
             sig = asym(sqrt(n) * max(abs(d))), parameter1 = lambda))
  }
  args <- switch(p[1] + 1,
                 if (est) list("pnorm", mean(x), sd(x)) else list("pnorm", given[1], given[2]),
                 if (est) list("punif", min(x), max(x)) else list("punif", given[1], given[2]),
                 NULL,
                 if (est) list("pexp", 1 / mean(x)) else list("pexp", 1 / given[1]))
  s <- function(a) suppressWarnings(do.call(ks.test, c(list(x), args, alternative = a, exact = FALSE)))
  d <- unname(s("two.sided")$statistic)
  out <- c(absolute = d, positive = unname(s("greater")$statistic),
           negative = -unname(s("less")$statistic), sig = asym(sqrt(n) * d))
  if (p[1] == 0 && est) out <- c(out, sig.lilliefors = nortest::lillie.test(x)$p.value,
                                 parameter1 = mean(x), parameter2 = sd(x))
  out
}

# Descriptive numbers with R's type-6 quartiles.
describe <- function(cols, p) {
  x <- cols[[1]]; q <- quantile(x, c(0.25, 0.75), type = 6, names = FALSE)
  c(n = length(x), mean = mean(x), sd = if (length(x) > 1) sd(x) else NA, min = min(x),
    max = max(x), median = median(x), lower = max(q[1], min(x)), upper = min(q[2], max(x)))
}

# Runs of two category lists: p = c(k, the first list's k values, the second
# list's values); cases in neither list are left out.
runs_categories <- function(cols, p) {
  k <- p[1]; first <- p[2:(k + 1)]; second <- p[(k + 2):length(p)]
  x <- cols[[1]]; kept <- x[x %in% c(first, second)]
  r <- runs(list(as.numeric(kept %in% second)), c(2, 0))
  c(r[names(r) != "cut"], n.excluded = length(x) - length(kept))
}

# Kolmogorov's limiting distribution at each number of the column.
limit <- function(cols, p) {
  z <- cols[[1]]; v <- 1 - .Call(stats:::C_pKS2, z, 1e-15)
  setNames(v, paste0("tail", seq_along(z)))
}
