# References for the related-samples tests. Each function takes the case's
# columns (one per field, the cases in the same order) and its parameters
# and returns named numbers (see ReferenceCases.h for how names compare).

# The sign test, the Wilcoxon signed-rank test and the Hodges-Lehmann
# estimate of the second field less the first, the differences at the data's
# precision (the data have at most 12 decimals); the interval at level p[1]
# from the order statistics c and n(n+1)/2 - c + 1 of the Walsh averages.
paired <- function(cols, p) {
  d <- round(cols[[2]] - cols[[1]], 12); nz <- d[d != 0]; m <- length(nz); pos <- sum(nz > 0)
  w <- wilcox.test(nz, exact = FALSE, correct = FALSE)
  n <- length(d); wa <- outer(d, d, "+"); wa <- sort(wa[!lower.tri(wa)]) / 2; N <- length(wa)
  cc <- floor(n * (n + 1) / 4 - qnorm((1 + p[1]) / 2) * sqrt(n * (n + 1) * (2 * n + 1) / 24) + 0.5)
  c(n.positive = pos, sign.sig = binom.test(pos, m)$p.value,
    sign.sig.asymptotic = suppressWarnings(prop.test(pos, m, correct = TRUE))$p.value,
    wilcoxon = unname(w$statistic), wilcoxon.sig = w$p.value,
    wilcoxon.sig.exact = if (m <= 50) exactRankTests::wilcox.exact(nz, exact = TRUE)$p.value else NA,
    estimate = median(wa), lower = if (cc >= 1) wa[cc] else NA,
    upper = if (cc >= 1) wa[N - cc + 1] else NA)
}

# McNemar's test of success (the values p) against failure (every other value).
mcnemar <- function(cols, p) {
  s <- cols[[1]] %in% p; t <- cols[[2]] %in% p
  tab <- table(factor(s, levels = c(FALSE, TRUE)), factor(t, levels = c(FALSE, TRUE)))
  m <- mcnemar.test(tab)
  c(statistic = unname(m$statistic), sig = m$p.value,
    sig.exact = binom.test(tab[1, 2], tab[1, 2] + tab[2, 1])$p.value,
    n.ff = tab[1, 1], n.fs = tab[1, 2], n.sf = tab[2, 1], n.ss = tab[2, 2])
}

# The marginal homogeneity test of ordered categories scored by their values.
marginal <- function(cols, p) {
  a <- cols[[1]]; b <- cols[[2]]; lev <- sort(unique(c(a, b)))
  tab <- table(factor(a, levels = lev, ordered = TRUE), factor(b, levels = lev, ordered = TRUE))
  r <- coin::mh_test(tab, scores = list(response = lev))
  c(z = unname(coin::statistic(r)), sig = coin::pvalue(r))
}

# Friedman's test with Kendall's W by its own formula, the mean ranks, the
# pairwise comparisons of mean ranks and the step-down subsets tested by
# friedman.test.
friedman <- function(cols, p) {
  m <- do.call(cbind, cols); n <- nrow(m); k <- ncol(m)
  f <- friedman.test(m); r <- t(apply(m, 1, rank))
  S <- sum((colSums(r) - n * (k + 1) / 2)^2)
  ties <- sum(apply(m, 1, function(u) { t <- table(u); sum(t^3 - t) }))
  mr <- colMeans(r); se <- sqrt(k * (k + 1) / (6 * n))
  c(statistic = unname(f$statistic), df = unname(f$parameter), sig = f$p.value,
    w = 12 * S / (n^2 * (k^3 - k) - n * ties), setNames(mr, paste0("meanrank", 1:k)),
    pairs(0:(k - 1), mr, function(a, b) {
      st <- mr[a + 1] - mr[b + 1]; c(st, se, st / se, 2 * pnorm(-abs(st / se)))
    }),
    stepdown(0:(k - 1), mr, function(s) {
      g <- friedman.test(m[, s + 1]); c(g$statistic, g$p.value)
    }))
}

# Cochran's Q of success (the values p) by its formula, the successes, the
# pairwise comparisons of success proportions.
cochran <- function(cols, p) {
  s <- 1 * (do.call(cbind, cols) %in% p); dim(s) <- c(length(cols[[1]]), length(cols))
  n <- nrow(s); k <- ncol(s); T <- colSums(s); R <- rowSums(s); N <- sum(T)
  Q <- (k - 1) * (k * sum(T^2) - N^2) / (k * N - sum(R^2))
  se <- sqrt(2 * (k * N - sum(R^2)) / (n^2 * k * (k - 1)))
  c(statistic = Q, df = k - 1, sig = pchisq(Q, k - 1, lower.tail = FALSE),
    setNames(T, paste0("n.successes", 1:k)), se = se,
    pairs(0:(k - 1), T, function(a, b) {
      st <- (T[a + 1] - T[b + 1]) / n; c(st, se, st / se, 2 * pnorm(-abs(st / se)))
    }))
}
