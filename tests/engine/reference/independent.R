# References for the independent-samples tests. Each function takes the
# case's columns (the values, then the group codes 0, 1, ...) and its
# parameters (p[1]: the number of categories of the grouping field) and
# returns named numbers (see ReferenceCases.h for how names compare).

groups <- function(cols, p) factor(cols[[2]], levels = 0:(p[1] - 1))

# Kolmogorov's limiting distribution summed to 1e-15.
asym <- function(z) 1 - .Call(stats:::C_pKS2, z, 1e-15)

# Rows of pairwise comparisons: every pair of non-empty categories, the one
# with the smaller shown value `v` first; `pair(a, b)` gives the statistic,
# standard error, z and significance of the pair; Bonferroni's adjustment.
pairs <- function(g, v, pair) {
  lev <- which(table(g) > 0) - 1; k <- length(lev); m <- k * (k - 1) / 2; out <- c(); row <- 0
  for (i in seq_len(k)) for (j in seq_len(k)) if (i < j) {
    a <- lev[i]; b <- lev[j]; if (v[b + 1] < v[a + 1]) { h <- a; a <- b; b <- h }
    r <- pair(a, b); row <- row + 1
    out <- c(out, setNames(c(a, b, r, min(1, r[4] * m)),
                           paste0("pair", row, c(".first", ".second", ".statistic", ".se", ".z",
                                                 ".sig", ".adjsig"))))
  }
  out
}

# Homogeneous subsets by the step-down procedure: the non-empty categories
# ordered by `v`, runs of consecutive ones tested from the largest down by
# `test(members)` (statistic and significance); a run whose significance
# adjusted to 1 - (1 - sig)^(k/p) is at least alpha (or missing) is
# homogeneous, and no run inside it is tested; the others stand alone.
stepdown <- function(g, v, test, alpha = 0.05) {
  lev <- which(table(g) > 0) - 1
  o <- lev[order(v[lev + 1])]; k <- length(o); found <- list()
  inside <- function(f, l) any(sapply(found, function(s) s[1] <= f && l <= s[2]))
  for (size in k:2) for (f in 1:(k - size + 1)) {
    l <- f + size - 1
    if (length(found) && inside(f, l)) next
    r <- test(o[f:l]); adj <- 1 - (1 - r[2])^(k / size)
    if (is.na(adj) || adj >= alpha) found[[length(found) + 1]] <- c(f, l, r, adj)
  }
  for (f in 1:k) if (!length(found) || !inside(f, f)) found[[length(found) + 1]] <- c(f, f, NA, NA, NA)
  found <- found[order(sapply(found, `[`, 1), sapply(found, `[`, 2))]
  out <- c()
  for (i in seq_along(found)) {
    s <- found[[i]]
    out <- c(out, setNames(c(s[1] - 1, s[2] - 1, s[3:5]),
                           paste0("subset", i, c(".first", ".second", ".statistic", ".sig", ".adjsig"))))
  }
  out
}

mannwhitney <- function(cols, p) {
  x <- cols[[1]]; g <- cols[[2]]; a <- x[g == 0]; b <- x[g == 1]
  n1 <- length(a); n2 <- length(b); N <- n1 + n2
  w <- wilcox.test(b, a, exact = FALSE, correct = FALSE)
  t <- table(x); se <- sqrt(n1 * n2 / 12 * ((N + 1) - sum(t^3 - t) / (N * (N - 1))))
  r <- rank(x)
  c(statistic = unname(w$statistic), w = sum(r[g == 1]), se = se,
    z = unname((w$statistic - n1 * n2 / 2) / se), sig = w$p.value,
    sig.exact = if (N <= 50) exactRankTests::wilcox.exact(b, a, exact = TRUE)$p.value else NA,
    meanrank1 = mean(r[g == 0]), meanrank2 = mean(r[g == 1]))
}

ks2 <- function(cols, p) {
  x <- cols[[1]]; g <- cols[[2]]; a <- x[g == 0]; b <- x[g == 1]
  s <- function(alt) unname(suppressWarnings(ks.test(a, b, exact = FALSE, alternative = alt))$statistic)
  d <- s("two.sided"); z <- sqrt(length(a) * length(b) / (length(a) + length(b))) * d
  c(absolute = d, positive = s("greater"), negative = -s("less"), z = z, sig = asym(z))
}

# The Hodges-Lehmann difference (second group less first) and its interval
# at level p[2]: order statistics c and M - c + 1 of the differences.
hodgeslehmann <- function(cols, p) {
  x <- cols[[1]]; g <- cols[[2]]; a <- x[g == 0]; b <- x[g == 1]
  n1 <- length(a); n2 <- length(b); d <- sort(outer(b, a, "-")); M <- length(d)
  c <- round(M / 2 - qnorm(1 - (1 - p[2]) / 2) * sqrt(n1 * n2 * (n1 + n2 + 1) / 12))
  c(estimate = median(d), lower = if (c >= 1) d[c] else NA, upper = if (c >= 1) d[M - c + 1] else NA)
}

kruskal <- function(cols, p) {
  x <- cols[[1]]; g <- groups(cols, p)
  kw <- kruskal.test(x, g)
  r <- rank(x); N <- length(x); t <- table(x); n <- table(g); mr <- tapply(r, g, mean)
  base <- N * (N + 1) / 12 - sum(t^3 - t) / (12 * (N - 1))
  c(statistic = unname(kw$statistic), df = unname(kw$parameter), sig = kw$p.value,
    setNames(mr, paste0("meanrank", seq_along(mr))),
    pairs(g, mr, function(a, b) {
      st <- mr[a + 1] - mr[b + 1]; se <- sqrt(base * (1 / n[a + 1] + 1 / n[b + 1]))
      c(st, se, st / se, 2 * pnorm(-abs(st / se)))
    }),
    stepdown(g, mr, function(m) {
      s <- g %in% m; k <- kruskal.test(x[s], droplevels(g[s])); c(k$statistic, k$p.value)
    }))
}

# The median test against the pooled median, or p[2] when given: Pearson's
# chi-square (coin's statistic times N / (N - 1)), with Yates' and Fisher's
# for two groups, and each pair's own 2 x 2 test.
median_test <- function(cols, p) {
  x <- cols[[1]]; g <- groups(cols, p); h <- droplevels(g); N <- length(x)
  med <- if (length(p) > 1) p[2] else median(x)
  tab <- table(factor(x > med, levels = c(TRUE, FALSE)), h)
  cs <- suppressWarnings(chisq.test(tab, correct = FALSE))
  out <- c(median = med, statistic = unname(cs$statistic), df = unname(cs$parameter),
           sig = cs$p.value)
  if (length(p) == 1) {
    co <- coin::statistic(coin::median_test(x ~ h, data = data.frame(x = x, h = h)))
    out <- c(out, coin = unname(if (nlevels(h) == 2) co^2 else co) * N / (N - 1))
  }
  if (nlevels(h) == 2) {
    y <- suppressWarnings(chisq.test(tab, correct = TRUE))
    out <- c(out, yates = unname(y$statistic), yates.sig = y$p.value,
             fisher.sig = fisher.test(tab)$p.value)
  }
  lev <- which(table(g) > 0)
  out <- c(out, setNames(tab[1, ], paste0("n.above", lev)), setNames(tab[2, ], paste0("n.below", lev)))
  sm <- tapply(x, g, median)
  c(out, pairs(g, sm, function(a, b) {
    xa <- x[g == a]; xb <- x[g == b]; pm <- if (length(p) > 1) p[2] else median(c(xa, xb))
    t2 <- rbind(c(sum(xa > pm), sum(xb > pm)), c(sum(xa <= pm), sum(xb <= pm)))
    if (any(rowSums(t2) == 0)) return(c(NA, NA, NA, NA))
    c2 <- suppressWarnings(chisq.test(t2, correct = FALSE)); c(c2$statistic, NA, NA, c2$p.value)
  }))
}

# Fisher's exact test of the 2 x 2 table p = c(a, b, c, d) (rows a b, c d).
fisher <- function(cols, p) c(sig = fisher.test(matrix(p[c(1, 3, 2, 4)], 2))$p.value)
