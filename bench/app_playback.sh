#!/usr/bin/env bash
# The desktop program playing the demo document ("Phone Perspective", a 16 s
# 1080x1920 recording) in a 1280x800 window on a virtual display with Mesa's
# software GL, as on a machine without a GPU. Prints launch to first frame,
# frames presented per second while playing, processor use while paused and
# peak memory. Targets on 2 cores: >= 30 fps, < 2 s, < 2 %, < 500 MB.
# Usage: bench/app_playback.sh [play-seconds=10] [idle-seconds=10] [warm-up-seconds=2]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${FLK_BUILD:-build/release}
cmake --preset release >/dev/null
cmake --build "$build" --target bench_app_playback flickwell-cli flk-make-recording >/dev/null
doc=build/demo/device.flickwell
if [ ! -f "$doc" ]; then
    mkdir -p build/demo
    "$build/tools/flk-make-recording" build/demo/recording.mp4 --size 1080x1920 --duration 16 >/dev/null
    "$build/bin/flickwell-cli" new --template "Phone Perspective" --video build/demo/recording.mp4 --out "$doc" --force >/dev/null
fi
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
echo "== $(nproc) cores, $(glxinfo -B 2>/dev/null | grep -m1 'renderer string' || echo 'Mesa llvmpipe')"
FLICKWELL_HOME=$home SDL_AUDIODRIVER=dummy xvfb-run -a -s "-screen 0 1280x1024x24" \
    "$build/bin/bench_app_playback" "$doc" "${1:-10}" "${2:-10}" "${3:-2}"
