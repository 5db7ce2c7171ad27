#!/usr/bin/env bash
# Side by side, in one run on this machine:
#  1. our export of a device-template document (1080x1920, 30 fps, H.264 + AAC)
#     against ffmpeg's CLI doing the same composition (background picture +
#     the recording scaled to 720x720 and warped onto the same screen quad +
#     the device artwork on top) and against an encode-only pass of as many
#     raw frames (the x264 floor);
#  2. a 540x960, 15 fps, 5 s GIF of ours against ffmpeg's two-pass
#     palettegen/paletteuse GIF made from our MP4 of the same document.
#  3. the bound our stages set: cores / the CPU per frame that `export --verbose`
#     measures stage by stage, and our rate as a share of it;
#  4. with --loaded: the MP4 runs again while a second process keeps one core
#     busy, and our ratio to ffmpeg's composition then against the quiet one.
# Usage: bench/export_vs_ffmpeg.sh [--loaded] [seconds=10]   (after `make build`)
set -euo pipefail
cd "$(dirname "$0")/.."
loaded=0
if [ "${1:-}" = "--loaded" ]; then loaded=1; shift; fi
seconds=${1:-10}
build=${FLK_BUILD:-build/release}
cli=$build/bin/flickwell-cli
maker=$build/tools/flk-make-recording
work=build/bench-export
for tool in "$cli" "$maker"; do
    [ -x "$tool" ] || { echo "missing $tool: run make build first" >&2; exit 1; }
done
command -v ffmpeg >/dev/null || { echo "ffmpeg is not installed" >&2; exit 1; }
rm -rf "$work" && mkdir -p "$work"
quiet=(-loglevel error -nostdin -y)

# Runs a command; prints "<wall seconds> <peak resident MB>" of it and its children.
measure() {
    python3 - "$@" <<'PY'
import resource, subprocess, sys, time
start = time.monotonic()
code = subprocess.call(sys.argv[1:], stdout=subprocess.DEVNULL)
wall = time.monotonic() - start
peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
if code != 0:
    sys.exit(f"failed ({code}): {' '.join(sys.argv[1:])}")
print(f"{wall:.2f} {peak:.0f}")
PY
}

echo "== inputs: a ${seconds} s recording in the \"Phone Perspective\" template"
"$maker" "$work/recording.mp4" --size 1080x1920 --duration "$seconds" >/dev/null
"$cli" new --template "Phone Perspective" --video "$work/recording.mp4" --out "$work/device.flickwell" --force >/dev/null

# The composition's pieces, taken from the document itself: the background
# alone rendered to a picture, the device artwork and the screen quad.
python3 - "$work" <<'PY'
import json, sys, zipfile, os
work = sys.argv[1]
z = zipfile.ZipFile(os.path.join(work, "device.flickwell"))
scene = json.loads(z.read(next(n for n in z.namelist() if n.startswith("scenes/") and n.endswith(".json"))))
nodes = scene["children"]
background = next(n for n in nodes if n["className"] == "FLKColorGradientSprite")
device = next(n for n in nodes if n["className"] == "FLKTexturedSprite")
screen = next(n for n in nodes if n["className"] == "FLKVideoContainer")
os.makedirs(os.path.join(work, "bg"), exist_ok=True)
json.dump({**scene, "children": [background]}, open(os.path.join(work, "bg", "scene.json"), "w"))
open(os.path.join(work, "device.png"), "wb").write(z.read(device["resourceURL"]))
pts = [(p["X"], p["Y"]) for p in device["shape"]["points"]]
x0, y0 = min(p[0] for p in pts), min(p[1] for p in pts)
w, h = max(p[0] for p in pts) - x0, max(p[1] for p in pts) - y0
q = [(p["X"], p["Y"]) for p in screen["plane"]["points"]]  # top-left, top-right, bottom-right, bottom-left
corners = [q[0], q[1], q[3], q[2]]                           # ffmpeg: TL, TR, BL, BR
open(os.path.join(work, "geometry.sh"), "w").write(
    f"device_at='{x0:.0f}:{y0:.0f}'\ndevice_size='{w:.0f}:{h:.0f}'\n"
    f"quad='{':'.join(f'{x:.2f}:{y:.2f}' for x, y in corners)}'\n")
PY
. "$work/geometry.sh"
"$cli" frame "$work/bg/scene.json" --out "$work/background.png" --size 1080x1920

frames=$((seconds * 30))
echo "== MP4, ${frames} frames at 1080x1920"
ours_export() {
    measure "$cli" export "$work/device.flickwell" --size 1080x1920 --out "$work/ours.mp4" --quiet --verbose \
        2>"$work/stages.txt"
}
warp="scale=720:720,scale=1080:1920,perspective=${quad}:sense=destination"
ffmpeg_composition() {
    measure ffmpeg "${quiet[@]}" \
    -loop 1 -framerate 30 -i "$work/background.png" -i "$work/recording.mp4" -loop 1 -framerate 30 -i "$work/device.png" \
    -f lavfi -i "color=white:s=718x718:r=30,pad=720:720:1:1:black" -f lavfi -i "anullsrc=r=44100:cl=stereo" \
    -filter_complex "[1:v]fps=30,${warp},format=yuv420p[v];[3:v]${warp},format=gray[m];[v][m]alphamerge[screen];\
[0:v][screen]overlay=shortest=1[s];[2:v]scale=${device_size}[d];[s][d]overlay=${device_at}:shortest=1,format=yuv420p[out]" \
    -map "[out]" -map 4:a -t "$seconds" -r 30 -c:v libx264 -pix_fmt yuv420p -c:a aac -shortest "$work/ffmpeg.mp4"
}
read -r ours_wall ours_peak < <(ours_export)
read -r ff_wall ff_peak < <(ffmpeg_composition)

ffmpeg "${quiet[@]}" -i "$work/ours.mp4" -f rawvideo -pix_fmt yuv420p "$work/raw.yuv"
read -r enc_wall enc_peak < <(measure ffmpeg "${quiet[@]}" -f rawvideo -pix_fmt yuv420p -s 1080x1920 -r 30 \
    -i "$work/raw.yuv" -c:v libx264 -f mp4 "$work/encode-only.mp4")
rm -f "$work/raw.yuv"

python3 - "$frames" "$ours_wall" "$ours_peak" "$ff_wall" "$ff_peak" "$enc_wall" <<'PY'
import sys
n, ours, peak, ff, ff_peak, enc = int(sys.argv[1]), *map(float, sys.argv[2:])
print(f"ours:                {n / ours:6.1f} fps  ({ours:.1f} s, peak {peak:.0f} MB)")
print(f"ffmpeg composition:  {n / ff:6.1f} fps  ({ff:.1f} s, peak {ff_peak:.0f} MB)")
print(f"x264 encode only:    {n / enc:6.1f} fps  ({enc:.1f} s)")
print(f"ours / ffmpeg composition: {ff / ours:.2f}x   ours / encode-only floor: {enc / ours:.2f}x")
print("(ours bounds x264's lookahead to 10 frames at 1080x1920 to hold its memory; both ffmpeg runs keep its 40)")
PY

echo "== our stages (CPU and waits in ms per frame, from export --verbose)"
sed -n '/^stage/,$p' "$work/stages.txt"
python3 - "$frames" "$ours_wall" "$(nproc)" "$work/stages.txt" <<'PY'
import re, sys
n, wall, cores, path = int(sys.argv[1]), float(sys.argv[2]), int(sys.argv[3]), sys.argv[4]
cpu = float(re.search(r"CPU per frame: ([0-9.]+) ms", open(path).read()).group(1))
bound = cores * 1000 / cpu
print(f"bound: {cores} cores / {cpu:.1f} ms CPU a frame = {bound:.1f} fps; ours {n / wall:.1f} fps = {100 * n / wall / bound:.0f} % of it")
PY

if [ "$loaded" = 1 ]; then
    echo "== MP4 again while a second process keeps one core busy (yes > /dev/null, not niced)"
    yes >/dev/null &
    load_pid=$!
    trap 'kill "$load_pid" 2>/dev/null || true' EXIT
    read -r ours_loaded _ < <(ours_export)
    read -r ff_loaded _ < <(ffmpeg_composition)
    kill "$load_pid" 2>/dev/null || true
    wait "$load_pid" 2>/dev/null || true
    trap - EXIT
    python3 - "$frames" "$ours_wall" "$ff_wall" "$ours_loaded" "$ff_loaded" <<'PY'
import sys
n, ours, ff, ours_l, ff_l = int(sys.argv[1]), *map(float, sys.argv[2:])
quiet, busy = ff / ours, ff_l / ours_l
print(f"loaded: ours {n / ours_l:.1f} fps, ffmpeg composition {n / ff_l:.1f} fps")
print(f"ours / ffmpeg: quiet {quiet:.2f}x, loaded {busy:.2f}x ({100 * (busy / quiet - 1):+.0f} %)")
PY
fi

echo "== GIF, 540x960, 15 fps, 5 s"
"$maker" "$work/recording5.mp4" --size 1080x1920 --duration 5 >/dev/null
"$cli" new --template "Phone Perspective" --video "$work/recording5.mp4" --out "$work/gif.flickwell" --force >/dev/null
"$cli" export "$work/gif.flickwell" --size 540x960 --out "$work/reference.mp4" --quiet >/dev/null
read -r ours_gif_wall _ < <(measure "$cli" export "$work/gif.flickwell" --size 540x960 --gif-fps 15 --out "$work/ours.gif" --quiet)
read -r ff_gif_wall _ < <(measure sh -c "ffmpeg ${quiet[*]} -i '$work/reference.mp4' -vf fps=15,palettegen '$work/palette.png' &&
    ffmpeg ${quiet[*]} -i '$work/reference.mp4' -i '$work/palette.png' -lavfi 'fps=15[v];[v][1:v]paletteuse' '$work/ffmpeg.gif'")
ssim() {
    ffmpeg -nostdin -i "$1" -i "$work/reference.mp4" -lavfi "[1:v]fps=15,format=rgb24[r];[0:v]format=rgb24[g];[g][r]ssim" \
        -f null - 2>&1 | grep -o 'All:[0-9.]*' | cut -d: -f2
}
for name in ours ffmpeg; do
    gif="$work/$name.gif"
    wall=$([ "$name" = ours ] && echo "$ours_gif_wall" || echo "$ff_gif_wall")
    printf '%-7s %8.2f MB  SSIM %s  %6.1f s\n' "$name" "$(python3 -c "print($(stat -c %s "$gif") / 1e6)")" "$(ssim "$gif")" "$wall"
done
