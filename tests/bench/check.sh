#!/usr/bin/env bash
# check.sh <python>: scripts/bench compares medians of the ratios within each round with the goals.
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# The second round ran on a busy machine, the third had an outlier: the median ratio is 1.10. Several runs
# in a round count as their median.
printf '%s\t%s\t%s\t0\t%s\t%s\t%s\t0\n' \
  book floor 1 90 10 9000  book tool 1 100 10 131072 \
  book floor 2 200 0 9000  book tool 2 220 0 133120 \
  book floor 3 50 50 9000  book tool 3 200 0 131072  book tool 3 100 0 131072  book tool 3 999 1 131072 \
  >"$folder/results.tsv"

failed=0
expect() {  # exit status, beginning of what is said, goal
  local status=0 said
  printf '# book\ttool\tfigure\treference\tbound\n%b\n' "$3" >"$folder/goals.tsv"
  said=$("$python" -B scripts/lib/bench_figures.py check "$folder" "$folder/goals.tsv") || status=$?
  [[ $status -eq $1 && $said == "$2"* ]] || { echo "$3: $status, $said"; failed=1; }
}
python=$1
expect 0 'fine: book: cpu of tool / floor: 1.10' 'book\ttool\tcpu\tfloor\t1.10'
expect 0 'fine' 'book\ttool\tcpu\tfloor\t1.07' # within the tolerance
expect 1 'worse than its bound: book: cpu' 'book\ttool\tcpu\tfloor\t1.05'
expect 0 'fine: book: peak of tool: 128.00' 'book\ttool\tpeak\t-\t128'
expect 1 'worse than its bound: book: peak' 'book\ttool\tpeak\t-\t120'
expect 1 'not measured: book: cpu of other' 'book\tother\tcpu\tfloor\t9'
expect 0 '' 'absent\ttool\tcpu\tfloor\t1'
expect 1 'fine' 'book\ttool\tpeak\t-\t200\nbook\ttool\tcpu\tfloor\t1'
exit "$failed"
