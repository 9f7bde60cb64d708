#!/usr/bin/env bash
# Plays performance.json on a virtual display: an agent opens a real application, works it while it is recorded, and
# polishes and exports the take. The main job from end to end, with nobody at the machine.
# Usage: demo.sh BIN_FOLDER OUTPUT_FOLDER. Ends everything it started, also on failure or Ctrl-C.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(cd "$1" && pwd)
mkdir -p "$2"
output=$(cd "$2" && pwd)

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

# Everything of the demo's is its own: the display, one session bus for Tavaro and the application, so that each can be
# seen by the other, and the folders of a user.
start_display() {
    start display Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3>"$stage/display-number"
    wait_until "The virtual display" 20 test -s "$stage/display-number"
    export DISPLAY=":$(<"$stage/display-number")"
    start window-manager openbox --config-file "$here/openbox.xml"
    # Popovers and menus with round corners stand on black without it.
    start compositor picom --backend xrender --config /dev/null
    start bus dbus-daemon --session --nofork --print-address=3 3>"$stage/bus-address"
    wait_until "The session bus" 20 test -s "$stage/bus-address"
    export DBUS_SESSION_BUS_ADDRESS="$(<"$stage/bus-address")"
}

make_user() {
    export HOME="$stage/home" XDG_RUNTIME_DIR="$stage/runtime" GTK_THEME=Adwaita GDK_DPI_SCALE=1.35
    unset WAYLAND_DISPLAY NO_AT_BRIDGE XDG_DATA_HOME XDG_CONFIG_HOME XDG_CACHE_HOME XDG_STATE_HOME
    mkdir -p "$HOME/.local/share/applications" "$XDG_RUNTIME_DIR"
    chmod 700 "$XDG_RUNTIME_DIR"
}

# The application opens the demo's file, with settings of its own, wherever it is opened from.
install_application() {
    cp -r "$here/geany" "$stage/geany"
    cp "$here/films.py" "$stage/films.py"
    sed "s|^Exec=.*|Exec=geany -c $stage/geany -i -s $stage/films.py|" /usr/share/applications/geany.desktop \
        >"$HOME/.local/share/applications/geany.desktop"
}

# Started here rather than by the first call, so that it ends with the demo.
start_tavaro() {
    start tavaro "$bin/tavaro" serve
    wait_until "Tavaro" 20 answers
}

answers() { "$bin/tavaro" mcp --json | grep -q '"isRunning":true'; }

perform() {
    sed "s|OUTPUT|$output|" "$here/performance.json" >"$stage/performance.json"
    "$bin/tavaro" play "$stage/performance.json" -o "$project"
}

project="$output/demo.recproj"
movie="$output/demo.mp4"
rm -rf "$project"
rm -f "$movie" "$output/demo.png"

make_user
start_display
install_application
start_tavaro
perform
zooms=$("$bin/tavaro" info "$project" | sed -n 's/^zooms  *\([0-9]\)/\1/p')
((zooms >= 3)) || fail "the film has $zooms zooms; three at least were expected"

echo "$movie"
