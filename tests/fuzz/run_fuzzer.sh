#!/usr/bin/env bash
# Runs the document fuzzer for a bounded time.
#   run_fuzzer.sh FUZZER WORKDIR SECONDS SOURCE_DIR [LIBFUZZER_OPTION...]
# The corpus grows in WORKDIR/corpus across runs, seeded with examples/*.xml
# and tests/fuzz_corpus/ (seeds and every input that ever crashed). A crash,
# hang, leak or sanitizer report leaves its input in WORKDIR/artifacts/ and
# fails the run: fix the defect, then add the input to
# tests/fuzz_corpus/regressions/ so that the unit tests replay it.
set -euo pipefail
fuzzer="$1"
work="$2"
seconds="$3"
source="$4"
shift 4

mkdir -p "$work/corpus" "$work/artifacts"
seeds=()
for dir in "$source/examples" "$source/tests/fuzz_corpus/seeds" "$source/tests/fuzz_corpus/regressions"; do
    [ -d "$dir" ] && seeds+=("$dir")
done

"$fuzzer" "$work/corpus" "${seeds[@]}" \
    -dict="$source/tests/fuzz/document.dict" \
    -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
    -artifact_prefix="$work/artifacts/" -print_final_stats=1 "$@" 2>"$work/last_run.log" || {
    status=$?
    tail -n 60 "$work/last_run.log"
    echo "fuzz: defect found; the input is in $work/artifacts/" >&2
    exit "$status"
}
grep -E "^(stat::|Done|#[0-9]+ +DONE)" "$work/last_run.log" || true
echo "fuzz: corpus $(find "$work/corpus" -type f | wc -l) inputs, crashes: 0"
