# References for the independent-samples tests. Each function takes the
# case's columns (the values, then the group codes 0, 1, ...) and its
# parameters (p[1]: the number of categories of the grouping field) and
# returns named numbers (see ReferenceCases.h for how names compare).

groups <- function(cols, p) factor(cols[[2]], levels = 0:(p[1] - 1))
present <- function(g) which(table(g) > 0) - 1

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
    pairs(present(g), mr, function(a, b) {
      st <- mr[a + 1] - mr[b + 1]; se <- sqrt(base * (1 / n[a + 1] + 1 / n[b + 1]))
      c(st, se, st / se, 2 * pnorm(-abs(st / se)))
    }),
    stepdown(present(g), mr, function(m) {
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
  c(out, pairs(present(g), sm, function(a, b) {
    xa <- x[g == a]; xb <- x[g == b]; pm <- if (length(p) > 1) p[2] else median(c(xa, xb))
    t2 <- rbind(c(sum(xa > pm), sum(xb > pm)), c(sum(xa <= pm), sum(xb <= pm)))
    if (any(rowSums(t2) == 0)) return(c(NA, NA, NA, NA))
    c2 <- suppressWarnings(chisq.test(t2, correct = FALSE)); c(c2$statistic, NA, NA, c2$p.value)
  }))
}

# Fisher's exact test of the 2 x 2 table p = c(a, b, c, d) (rows a b, c d).
fisher <- function(cols, p) c(sig = fisher.test(matrix(p[c(1, 3, 2, 4)], 2))$p.value)
