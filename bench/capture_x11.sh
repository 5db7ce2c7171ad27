#!/usr/bin/env bash
# Records a 1920x1080 virtual display at 30 fps for 60 s while previewing it
# into a live sprite, the display changing colour twice a second. Prints
# pictures captured and missing (target <= 1 %), processor time a picture,
# and display-to-sprite latency (target <= 2 frame periods, 66.7 ms).
# Usage: bench/capture_x11.sh [seconds=60] [preview]   (FLK_BUILD picks the build tree;
# "preview" leaves the recording out)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${FLK_BUILD:-build/release}
preset=$(basename "$build")
cmake --preset "$preset" -DFLK_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target bench_capture_x11 >/dev/null
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
echo "== $(nproc) cores, build $build"
FLICKWELL_HOME=$home xvfb-run -a -s "-screen 0 1920x1080x24" "$build/bench/bench_capture_x11" "${1:-60}" ${2:-}
