# R's Friedman test (columns v1..vK) or Wilcoxon signed rank (v1 against v2)
# on the file bench/gen_csv.py writes, read with data.table::fread when
# installed, else read.csv.
args <- commandArgs(trailingOnly = TRUE)
t0 <- proc.time()
if (requireNamespace("data.table", quietly = TRUE)) {
    d <- data.table::fread(args[2]); how <- "fread"
} else {
    d <- read.csv(args[2]); how <- "read.csv"
}
t1 <- proc.time()
if (args[1] == "friedman") {
    r <- friedman.test(as.matrix(d))
} else {
    r <- wilcox.test(d$v1, d$v2, paired = TRUE, exact = FALSE, correct = FALSE)
}
t2 <- proc.time()
cat(sprintf("%s: read %.1f s, %s %.1f s (elapsed); statistic = %.6f, p = %g\n",
            how, (t1 - t0)[["elapsed"]], args[1], (t2 - t1)[["elapsed"]], r$statistic, r$p.value))
