#!/usr/bin/env bash
# Runs every libFuzzer target in a directory, two at a time, within one total
# time budget in seconds shared by all targets (each gets an equal share, at
# least 5 s), seeded from tests/fuzz/corpus/<target>. Any crash, sanitizer report
# or leak fails the run and leaves the reproducer in build/fuzz/artifacts.
set -euo pipefail
bin_dir=$1
budget=$2
root=$(cd "$(dirname "$0")/.." && pwd)
artifacts="$root/build/fuzz/artifacts"
mkdir -p "$artifacts"

run_one() {
  local target=$1 seconds=$2 root=$3 artifacts=$4
  local name work log
  name=$(basename "$target")
  work=$(mktemp -d)
  log="$artifacts/$name.log"
  if [[ -d "$root/tests/fuzz/corpus/$name" ]]; then
    cp -r "$root/tests/fuzz/corpus/$name/." "$work/"
  fi
  if "$target" "$work" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
       -print_final_stats=1 -artifact_prefix="$artifacts/$name-" >"$log" 2>&1; then
    echo "fuzz $name: $(grep -m1 -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$') runs, clean"
    rm -rf "$work"
  else
    echo "fuzz $name: FAILED (log $log)"
    tail -n 40 "$log"
    rm -rf "$work"
    return 1
  fi
}
export -f run_one

targets=$(find "$bin_dir" -maxdepth 1 -type f -name 'fuzz-*' -perm -u+x | sort)
if [[ -z "$targets" ]]; then
  echo "no fuzz targets in $bin_dir" >&2
  exit 1
fi
count=$(echo "$targets" | wc -l)
seconds=$(( budget * 2 / count ))
(( seconds >= 5 )) || seconds=5
echo "fuzzing $count targets for ${seconds} s each (budget ${budget} s, two at a time)"
echo "$targets" | xargs -P 2 -I{} bash -c 'run_one "$@"' _ {} "$seconds" "$root" "$artifacts"
