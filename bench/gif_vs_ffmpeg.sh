#!/bin/sh
# Encodes the synthetic 3-second screen recording with bench_gif (both palette
# modes) and with ffmpeg's two-pass palettegen/paletteuse, then prints size and
# SSIM/PSNR against the same source frames, measured by ffmpeg for all three.
# Usage: bench/gif_vs_ffmpeg.sh [path/to/bench_gif]
set -eu
bench=${1:-build-release/bench/bench_gif}
[ -x "$bench" ] || { echo "bench_gif not found at $bench (build with -DFLK_BUILD_BENCH=ON)" >&2; exit 1; }
command -v ffmpeg >/dev/null || { echo "ffmpeg not installed" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
size=360x780
frame_bytes=$((360 * 780 * 3))

OMP_WAIT_POLICY=passive FLK_GIF_BENCH_DIR="$work" "$bench" | grep BM_
/usr/bin/time -f "ffmpeg (both passes): %U s user %S s sys %e s real" sh -c "
  ffmpeg -loglevel error -nostdin -y -f rawvideo -pix_fmt rgb24 -s $size -r 15 -i '$work/source.rgb' -vf palettegen '$work/palette.png' &&
  ffmpeg -loglevel error -nostdin -y -f rawvideo -pix_fmt rgb24 -s $size -r 15 -i '$work/source.rgb' -i '$work/palette.png' -lavfi paletteuse '$work/ffmpeg.gif'"

for name in shared perframe ffmpeg; do
    gif="$work/$name.gif"
    ffmpeg -loglevel error -nostdin -y -i "$gif" -fps_mode passthrough -f rawvideo -pix_fmt rgb24 "$work/$name.rgb"
    scores=$(ffmpeg -nostdin -f rawvideo -pix_fmt rgb24 -s $size -i "$work/$name.rgb" \
                    -f rawvideo -pix_fmt rgb24 -s $size -i "$work/source.rgb" -lavfi "ssim;[0:v][1:v]psnr" -f null - 2>&1 |
             grep -o 'All:[0-9.]*\|average:[0-9.inf]*' | tr '\n' ' ')
    echo "$name: $(stat -c %s "$gif") bytes, $(( $(stat -c %s "$work/$name.rgb") / frame_bytes )) frames, $scores"
done
