#!/bin/sh
# End-to-end timings from a CSV file: nptests beside R on the same file.
#
#   bench/e2e.sh [--runs N] [--dir DIR] [--no-r] [kruskal] [friedman] [wilcoxon]
#
# kruskal:  10 million cases in 10 groups, KRUSKAL_WALLIS(COMPARE=PAIRWISE),
#           beside R's kruskal.test (bench/kruskal.R).
# friedman: 2.5 million cases x 4 fields, FRIEDMAN, beside friedman.test.
# wilcoxon: 10 million pairs, WILCOXON, beside wilcox.test(paired = TRUE).
# (friedman and wilcoxon need the related-samples tests in the engine.)
#
# bench/gen_csv.py writes the files into DIR (default /tmp/nptests-bench) the
# first time; the same arguments give the same bytes. Each program runs under
# /usr/bin/time -v; the lines show CPU time (user + system, which other work
# on the machine inflates less than the wall clock), the wall clock and the
# peak resident memory. R reads with data.table::fread when it is installed,
# else with read.csv; its line says which and how long reading took.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$root/build/release/bin/nptests
dir=/tmp/nptests-bench
runs=1
withR=1
tests=""
while [ $# -gt 0 ]; do
    case $1 in
    --runs) runs=$2; shift 2 ;;
    --dir) dir=$2; shift 2 ;;
    --no-r) withR=0; shift ;;
    kruskal | friedman | wilcoxon) tests="$tests $1"; shift ;;
    *) echo "usage: $0 [--runs N] [--dir DIR] [--no-r] [kruskal] [friedman] [wilcoxon]" >&2; exit 2 ;;
    esac
done
[ -n "$tests" ] || tests=kruskal
mkdir -p "$dir"

# Runs a command under /usr/bin/time -v and prints one line of its figures.
timed() {
    label=$1; shift
    /usr/bin/time -v "$@" >"$dir/last.out" 2>"$dir/last.time" || {
        cat "$dir/last.out" "$dir/last.time" >&2; exit 1; }
    awk -v label="$label" -F': ' '
        /User time/ { user = $2 } /System time/ { sys = $2 }
        /Elapsed/ { wall = $2 } /Maximum resident/ { rss = $2 }
        END { printf "%-28s cpu %7.2f s  (user %.2f + sys %.2f)  wall %s  peak %d MiB\n",
                     label, user + sys, user, sys, wall, rss / 1024 }' "$dir/last.time"
    grep -h -E "^(fread|read.csv):" "$dir/last.out" || true
}

for test in $tests; do
    case $test in
    kruskal)
        csv=$dir/kw10m.csv
        [ -f "$csv" ] || python3 "$root/bench/gen_csv.py" independent --cases 10000000 --groups 10 -o "$csv"
        printf '%s\n' '{"variables": [{"name": "x", "measure": "scale", "format": "F8.3"},' \
            '{"name": "g", "measure": "nominal", "format": "F2.0"}]}' >"$dir/kw.json"
        command="NPTESTS /INDEPENDENT TEST(x) GROUP(g) KRUSKAL_WALLIS(COMPARE=PAIRWISE)"
        dictionary=$dir/kw.json
        rscript="$root/bench/kruskal.R $csv"
        ;;
    friedman | wilcoxon)
        if [ "$test" = friedman ]; then
            csv=$dir/fr2500k.csv
            [ -f "$csv" ] || python3 "$root/bench/gen_csv.py" related --cases 2500000 --fields 4 -o "$csv"
            fields="v1 v2 v3 v4"
            command="NPTESTS /RELATED TEST(v1 v2 v3 v4) FRIEDMAN"
        else
            csv=$dir/wx10m.csv
            [ -f "$csv" ] || python3 "$root/bench/gen_csv.py" related --cases 10000000 --fields 2 -o "$csv"
            fields="v1 v2"
            command="NPTESTS /RELATED TEST(v1 v2) WILCOXON"
        fi
        dictionary=$dir/$test.json
        {
            printf '{"variables": ['
            sep=""
            for f in $fields; do
                printf '%s{"name": "%s", "measure": "scale", "format": "F8.3"}' "$sep" "$f"
                sep=", "
            done
            printf ']}\n'
        } >"$dictionary"
        rscript="$root/bench/related.R $test $csv"
        ;;
    esac
    echo "== $test: $(basename "$csv") ($(du -m "$csv" | cut -f1) MB): $command"
    run=1
    while [ "$run" -le "$runs" ]; do
        timed "nptests -f json" "$bin" --data "$csv" --dictionary "$dictionary" -c "$command" \
            -f json -o "$dir/$test.json.out"
        run=$((run + 1))
    done
    if [ "$withR" = 1 ]; then
        # shellcheck disable=SC2086
        timed "R" Rscript --vanilla $rscript
    fi
done
