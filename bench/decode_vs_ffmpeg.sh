#!/bin/sh
# Decodes the same 5-second 1080x1920 H.264 segment to 720x720 NV12 with
# bench_decode and with the ffmpeg command line, and prints both rates.
# Usage: bench/decode_vs_ffmpeg.sh [path/to/bench_decode]
set -eu
bench=${1:-build-release/bench/bench_decode}
[ -x "$bench" ] || { echo "bench_decode not found at $bench (build with -DFLK_BUILD_BENCH=ON)" >&2; exit 1; }
command -v ffmpeg >/dev/null || { echo "ffmpeg not installed" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export FLK_DECODE_BENCH_VIDEO="$work/recording.mp4"

"$bench" --benchmark_format=json --benchmark_out="$work/ours.json" --benchmark_out_format=json >/dev/null
ours=$(python3 -c 'import json,sys; b=json.load(open(sys.argv[1]))["benchmarks"][0]; print(b["frames_per_second"])' "$work/ours.json")

runs=5
start=$(date +%s.%N)
i=0
while [ $i -lt $runs ]; do
    ffmpeg -loglevel error -nostdin -i "$FLK_DECODE_BENCH_VIDEO" -t 5 -vf scale=720:720,format=nv12 -f null - 
    i=$((i + 1))
done
end=$(date +%s.%N)
frames=$(ffmpeg -nostdin -i "$FLK_DECODE_BENCH_VIDEO" -t 5 -vf scale=720:720,format=nv12 -f null - 2>&1 |
         tr '\r' '\n' | sed -n 's/^frame= *\([0-9]*\).*/\1/p' | tail -1)
theirs=$(python3 -c "print($frames * $runs / ($end - $start))")

python3 - "$ours" "$theirs" <<'PY'
import sys
ours, theirs = float(sys.argv[1]), float(sys.argv[2])
print(f"flickwell decoder: {ours:8.1f} frames/s")
print(f"ffmpeg:            {theirs:8.1f} frames/s")
print(f"ratio:             {ours / theirs:8.2f}x (target >= 0.90x)")
PY
