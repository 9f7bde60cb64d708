#!/usr/bin/env bash
# Records a real application on a virtual display, polishes the take and exports it: the main job from end to end.
# Usage: demo.sh BIN_FOLDER OUTPUT_FOLDER. Ends everything it started, also on failure or Ctrl-C.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(cd "$1" && pwd)
mkdir -p "$2"
output=$(cd "$2" && pwd)
seconds=12

stage=$(mktemp -d "${TMPDIR:-/tmp}/tavaro-demo.XXXXXX")
started=()

clean_up() {
    local group
    trap - EXIT INT TERM HUP
    for group in "${started[@]}"; do kill -TERM -- "-$group" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$stage"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

fail() {
    echo "demo: $1" >&2
    exit 1
}

# start NAME COMMAND…: in a process group of its own, so that its children end with it.
start() {
    local log="$stage/$1.log"
    shift
    setsid "$@" >"$log" 2>&1 &
    started+=($!)
}

# wait_until WHAT SECONDS COMMAND…
wait_until() {
    local what=$1 tries=$(($2 * 10))
    shift 2
    until "$@" >/dev/null 2>&1; do
        ((tries-- > 0)) || fail "$what did not appear in time"
        sleep 0.1
    done
}

# timed NAME COMMAND…
timed() {
    local name=$1 from=$EPOCHREALTIME
    shift
    "$@"
    stages+=("$(LC_ALL=C awk -v name="$name" -v a="$from" -v b="$EPOCHREALTIME" 'BEGIN { printf "%-8s %6.1f s", name, b - a }')")
}

start_display() {
    start display Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3>"$stage/display-number"
    wait_until "The virtual display" 20 test -s "$stage/display-number"
    export DISPLAY=":$(<"$stage/display-number")"
    unset WAYLAND_DISPLAY
    start window-manager openbox --config-file "$here/openbox.xml"
}

start_application() {
    cp -r "$here/geany" "$stage/geany"
    cp "$here/films.py" "$stage/films.py"
    export GTK_THEME=Adwaita GDK_DPI_SCALE=1.35 NO_AT_BRIDGE=1
    start application dbus-run-session -- geany -c "$stage/geany" -i -s "$stage/films.py"
    wait_until "The application's window" 30 xdotool search --onlyvisible --class Geany
    xdotool mousemove 980 640
    sleep 1.5 # the window paints its first frames
}

take_is_running() { [[ -n $(find "$XDG_DATA_HOME/Tavaro/Recordings" -name in-progress.json 2>/dev/null) ]]; }

# The performance starts when the take does; the recorder ends by itself.
record() {
    local recorder performer
    "$bin/tavaro" record --seconds "$seconds" --no-polish -o "$project" &
    recorder=$!
    wait_until "The recording" 20 take_is_running
    setsid xdotool "$stage/performance" >"$stage/performance.log" 2>&1 &
    performer=$!
    started+=("$performer")
    wait "$recorder"
    wait "$performer" || fail "the performance stopped: $(tail -n 1 "$stage/performance.log")"
}

project="$output/demo.recproj"
movie="$output/demo.mp4"
stages=()
rm -rf "$project"
rm -f "$movie"
export XDG_DATA_HOME="$stage/data"

"$here/act.sh" >"$stage/performance"
start_display
start_application
timed record record
timed polish "$bin/tavaro" polish "$project" --mode desktopApp
timed export "$bin/tavaro" export "$project" --preset youtube-1080 -o "$movie"

echo
printf '%s\n' "${stages[@]}"
echo "$movie"
