#!/usr/bin/env bash
# Runs a fuzzer for a bounded time.
#   run_fuzzer.sh FUZZER WORKDIR SECONDS SOURCE_DIR [LIBFUZZER_OPTION...]
# FUZZER is fuzz_document or fuzz_INPUT (splits, dictionary, command). The
# document fuzzer's corpus grows in WORKDIR/corpus across runs, seeded with
# examples/*.xml and tests/fuzz_corpus/ (seeds and every input that ever
# crashed); another's in WORKDIR/corpus_INPUT, seeded with
# tests/fuzz_corpus/INPUT/ and tests/fuzz_corpus/regressions_INPUT/. A crash,
# hang, leak or sanitizer report leaves its input in WORKDIR/artifacts/ and
# fails the run: fix the defect, then add the input to the regressions
# folder of its fuzzer so that the unit tests replay it.
set -euo pipefail
fuzzer="$1"
work="$2"
seconds="$3"
source="$4"
shift 4

input="$(basename "$fuzzer")"
input="${input#fuzz_}"
if [ "$input" = document ]; then
    corpus="$work/corpus"
    log="$work/last_run.log"
    prefix="$work/artifacts/"
    dirs=("$source/examples" "$source/tests/fuzz_corpus/seeds" "$source/tests/fuzz_corpus/regressions")
    options=(-max_len=65536)
else
    corpus="$work/corpus_$input"
    log="$work/last_run_$input.log"
    prefix="$work/artifacts/$input-"
    dirs=("$source/tests/fuzz_corpus/$input" "$source/tests/fuzz_corpus/regressions_$input")
    options=(-max_len=8192)
fi
[ -f "$source/tests/fuzz/$input.dict" ] && options+=(-dict="$source/tests/fuzz/$input.dict")

mkdir -p "$corpus" "$work/artifacts"
seeds=()
for dir in "${dirs[@]}"; do
    [ -d "$dir" ] && seeds+=("$dir")
done

"$fuzzer" "$corpus" "${seeds[@]}" "${options[@]}" \
    -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix="$prefix" -print_final_stats=1 "$@" 2>"$log" || {
    status=$?
    tail -n 60 "$log"
    echo "fuzz: defect found; the input is in $work/artifacts/" >&2
    exit "$status"
}
grep -E "^(stat::|Done|#[0-9]+ +DONE)" "$log" || true
echo "fuzz: $input corpus $(find "$corpus" -type f | wc -l) inputs, crashes: 0"
