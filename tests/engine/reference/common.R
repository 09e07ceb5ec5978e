# What the families' references share.

# Kolmogorov's limiting distribution summed to 1e-15 (ks.test's own series
# stops at 1e-6, which leaves errors up to 2e-5).
asym <- function(z) 1 - .Call(stats:::C_pKS2, z, 1e-15)

# Rows of pairwise comparisons of the samples `lev` (0-based indices), each
# pair with the smaller shown value `v` first; `pair(a, b)` gives the
# statistic, standard error, z and significance of the pair; Bonferroni's
# adjustment.
pairs <- function(lev, v, pair) {
  k <- length(lev); m <- k * (k - 1) / 2; out <- c(); row <- 0
  for (i in seq_len(k)) for (j in seq_len(k)) if (i < j) {
    a <- lev[i]; b <- lev[j]; if (v[b + 1] < v[a + 1]) { h <- a; a <- b; b <- h }
    r <- pair(a, b); row <- row + 1
    out <- c(out, setNames(c(a, b, r, min(1, r[4] * m)),
                           paste0("pair", row, c(".first", ".second", ".statistic", ".se", ".z",
                                                 ".sig", ".adjsig"))))
  }
  out
}

# Homogeneous subsets by the step-down procedure: the samples `lev` ordered
# by `v`, runs of consecutive ones tested from the largest down by
# `test(members)` (statistic and significance); a run whose significance
# adjusted to 1 - (1 - sig)^(k/p) is at least alpha (or missing) is
# homogeneous, and no run inside it is tested; the others stand alone. Rows
# name their first and last position in the order.
stepdown <- function(lev, v, test, alpha = 0.05) {
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
