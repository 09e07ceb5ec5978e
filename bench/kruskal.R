# R's Kruskal-Wallis on the file bench/gen_csv.py writes (columns x, g), read
# with data.table::fread when installed, else read.csv.
args <- commandArgs(trailingOnly = TRUE)
t0 <- proc.time()
if (requireNamespace("data.table", quietly = TRUE)) {
    d <- data.table::fread(args[1]); how <- "fread"
} else {
    d <- read.csv(args[1]); how <- "read.csv"
}
t1 <- proc.time()
r <- kruskal.test(d$x, factor(d$g))
t2 <- proc.time()
cat(sprintf("%s: read %.1f s, kruskal.test %.1f s (elapsed); H = %.6f, p = %g\n",
            how, (t1 - t0)[["elapsed"]], (t2 - t1)[["elapsed"]], r$statistic, r$p.value))
