#!/usr/bin/env bash
# Benchmarks nptests against the floor of reading a result document.
#
# For generated documents of about 1, 10 and 100 MB it times, on the same
# document: (a) the floor tool (pugixml in-place parse plus converting every
# number), (b) nptests -f json end to end, (c) nptests -f text; it reports
# the ratios (b)/(a) and (c)/(a), the peak resident memory of (b) against the
# document size (/usr/bin/time -v), and the cost per test. A second table
# grows the pairwise rows of one Kruskal-Wallis test (k samples give
# k(k-1)/2 rows).
#
#   bench/run.sh [--quick] [--runs N]
#
# --quick stops at the 10 MB document and a smaller pairwise range.
# Documents are cached in build/release/bench/run/ and made again when the
# generator changes.
set -euo pipefail
cd "$(dirname "$0")/.."

quick=0
runs=3
while [ $# -gt 0 ]; do
    case "$1" in
    --quick) quick=1 ;;
    --runs) runs="$2"; shift ;;
    *) echo "usage: bench/run.sh [--quick] [--runs N]" >&2; exit 2 ;;
    esac
    shift
done

scripts/setup >/dev/null
cmake --preset release >/dev/null
cmake --build --preset release --target nptests nonpar floor >/dev/null

bin=build/release/bin
docs=build/release/bench/run
mkdir -p "$docs"
gen=bench/gen_docs.py
measure="python3 bench/measure.py"

if "$bin/nptests" --help 2>&1 | grep -q -- '--format'; then
    json=("$bin/nptests" -f json)
    text=("$bin/nptests" -f text)
else
    # Without the renderers nptests reads and builds the output but prints
    # nothing; both columns then time that.
    echo "note: this nptests has no --format; (b) and (c) time it without rendering"
    json=("$bin/nptests")
    text=("$bin/nptests")
fi

# make_doc FILE ARGS...: generates FILE unless it is newer than the generator.
make_doc() {
    local file="$1"
    shift
    if [ ! -s "$file" ] || [ "$gen" -nt "$file" ]; then
        python3 "$gen" "$@" -o "$file" 2>/dev/null
    fi
}

# peak_kib CMD...: the peak resident memory of one run, by /usr/bin/time -v.
peak_kib() {
    /usr/bin/time -v "$@" 2>&1 >/dev/null | awk -F': ' '/Maximum resident set size/ {print $2}'
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }

echo "== scaling in the number of tests (best of $runs runs; CPU ms = user + system)"
printf "%8s %7s | %10s %10s %10s | %9s %9s | %9s %10s %8s | %10s\n" \
    "size MB" "tests" "floor ms" "json ms" "text ms" "json/flr" "text/flr" \
    "json MiB" "peak/size" "flr MiB" "json us/t"
sizes=(1 10 100)
[ "$quick" = 1 ] && sizes=(1 10)
for mb in "${sizes[@]}"; do
    doc="$docs/size_${mb}.xml"
    make_doc "$doc" --size-mb "$mb" --seed 1
    bytes=$(stat -c %s "$doc")
    tests=$(grep -o "<NonParametricTests number='[0-9]*'" "$doc" | grep -o '[0-9]*')
    read -r _ floor_cpu _ < <($measure "$runs" "$bin/floor" "$doc")
    floor_peak=$(peak_kib "$bin/floor" "$doc")
    read -r _ json_cpu _ < <($measure "$runs" "${json[@]}" "$doc")
    read -r _ text_cpu _ < <($measure "$runs" "${text[@]}" "$doc")
    json_peak=$(peak_kib "${json[@]}" "$doc")
    printf "%8.1f %7d | %10.1f %10.1f %10.1f | %9s %9s | %9.1f %10s %8.1f | %10.1f\n" \
        "$(ratio "$bytes" 1048576)" "$tests" "$floor_cpu" "$json_cpu" "$text_cpu" \
        "$(ratio "$json_cpu" "$floor_cpu")" "$(ratio "$text_cpu" "$floor_cpu")" \
        "$(ratio "$json_peak" 1024)" "$(ratio "$((json_peak * 1024))" "$bytes")" \
        "$(ratio "$floor_peak" 1024)" "$(ratio "$((${json_cpu%.*} * 1000))" "$tests")"
done

echo
echo "== scaling in pairwise rows: one Kruskal-Wallis test with k samples"
printf "%6s %8s | %10s %10s | %9s %16s\n" "k" "rows" "floor ms" "json ms" "json/flr" \
    "json ns/(r log2 r)"
groups=(50 100 200 400)
[ "$quick" = 1 ] && groups=(25 50 100)
for k in "${groups[@]}"; do
    doc="$docs/pairs_${k}.xml"
    make_doc "$doc" --tests 1 --mix IKruskalWallis=1 --groups "$k" --seed 2
    rows=$((k * (k - 1) / 2))
    read -r _ floor_cpu _ < <($measure "$runs" "$bin/floor" "$doc")
    read -r _ json_cpu _ < <($measure "$runs" "${json[@]}" "$doc")
    per=$(awk -v t="$json_cpu" -v r="$rows" 'BEGIN { printf "%.1f", t * 1e6 / (r * log(r) / log(2)) }')
    printf "%6d %8d | %10.1f %10.1f | %9s %16s\n" "$k" "$rows" "$floor_cpu" "$json_cpu" \
        "$(ratio "$json_cpu" "$floor_cpu")" "$per"
done
