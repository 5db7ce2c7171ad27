#!/bin/sh
# Answers the few adb commands the capture code uses, for one phone that
# streams a prepared H.264 file through screenrecord, paced in real time,
# and ends at the file's end as screenrecord ends at its time limit.
#   FLK_STANDIN_STREAM  the Annex-B file each screenrecord run streams
#   FLK_STANDIN_STATE   a folder: "runs" counts screenrecord runs; a file
#                       "unplugged" there makes the phone disappear
#   FLK_STANDIN_DEVICES the phones' lines (default: one ready phone)
#   FLK_STANDIN_HOLD    when set, the file goes out at once and screenrecord
#                       then stays open, as on a phone whose screen is still
# track-devices then passes on what is appended to "track-updates" there:
# blocks as adb sends them ("0000" when the last phone went). Each command's
# first word is appended to "calls" there.
state=${FLK_STANDIN_STATE:-/tmp}
echo "$1" >> "$state/calls"
devices() {
  if [ -e "$state/unplugged" ]; then return; fi
  printf '%s\n' "${FLK_STANDIN_DEVICES:-STANDIN01              device product:standin model:Standin_Phone device:standin transport_id:1}"
}
case "$1" in
  devices)
    echo "List of devices attached"
    devices
    echo
    ;;
  track-devices)
    list=$(devices)
    [ -n "$list" ] && list="$list
"
    printf '%04x%s' "$(printf '%s' "$list" | wc -c)" "$list"
    # adb keeps the connection open until the client goes.
    : >> "$state/track-updates"
    exec tail -n 0 -f "$state/track-updates"
    ;;
  -s)
    serial=$2
    shift 2
    if [ "$1" != "exec-out" ] || [ "$2" != "screenrecord" ]; then echo "standin: unsupported $*" >&2; exit 1; fi
    if [ -e "$state/unplugged" ]; then echo "adb: device '$serial' not found" >&2; exit 1; fi
    echo run >> "$state/runs"
    # exec keeps this process id: a test ends the stream through it.
    echo $$ > "$state/screenrecord.pid"
    if [ -n "$FLK_STANDIN_HOLD" ]; then
      cat "$FLK_STANDIN_STREAM"
      exec tail -f /dev/null
    fi
    exec ffmpeg -hide_banner -loglevel error -re -r 30 -f h264 -i "$FLK_STANDIN_STREAM" -c copy -f h264 -
    ;;
  *)
    echo "standin: unsupported $*" >&2
    exit 1
    ;;
esac
