#!/usr/bin/env bash
# Writes the demo's performance as an xdotool script: glides, clicks and typing at a person's pace, about eleven
# seconds. Every coordinate is a pixel of a 1920 × 1080 screen with the editor maximised.
set -euo pipefail

x=980 y=640

# glide X Y SECONDS: an eased, slightly curved path in steps of a 60th of a second.
glide() {
    LC_ALL=C awk -v x0="$x" -v y0="$y" -v x1="$1" -v y1="$2" -v seconds="$3" 'BEGIN {
        steps = int(seconds * 60)
        for (i = 1; i <= steps; i++) {
            t = i / steps
            e = t < 0.5 ? 4 * t * t * t : 1 - (2 - 2 * t) ^ 3 / 2
            bow = sin(e * 3.14159265) * 0.04
            printf "mousemove %d %d\nsleep 0.0152\n", x0 + (x1 - x0) * e + (y1 - y0) * bow, y0 + (y1 - y0) * e - (x1 - x0) * bow
        }
    }'
    x=$1 y=$2
}

rest() { echo "sleep $1"; }

click() { printf 'mousedown 1\nsleep 0.07\nmouseup 1\n'; }

double_click() {
    click
    rest 0.08
    click
}

key_name() {
    case $1 in
        [[:alnum:]]) echo "$1" ;;
        ' ') echo space ;; '"') echo quotedbl ;; ',') echo comma ;; '.') echo period ;;
        '(') echo parenleft ;; ')') echo parenright ;;
        *) echo "act.sh: no key is known for '$1'" >&2; exit 1 ;;
    esac
}

# type_text TEXT: keys one by one, a little slower after spaces and punctuation.
type_text() {
    local text=$1 i character
    for ((i = 0; i < ${#text}; i++)); do
        character=${text:i:1}
        echo "key --delay 0 $(key_name "$character")"
        case $character in [[:alnum:]]) rest 0.045 ;; *) rest 0.07 ;; esac
    done
}

# Clicks that come less than about five seconds apart share one zoom, so both edits of the list are seen from one place.
echo "mousemove $x $y"
rest 0.7
glide 660 538 0.8 # behind the second film of the list
rest 0.12
click
rest 0.25
echo "key --delay 0 Return"
rest 0.15
type_text 'Film("Night Train", 98, 8.7),'
rest 0.15
glide 509 604 0.45 # the minutes of the film below
rest 0.1
double_click
rest 0.3
type_text '112'
rest 0.55
glide 183 59 0.9 # the toolbar's Save
rest 0.1
click
rest 0.4
glide 540 901 0.8 # the empty line below the function
rest 0.1
click
rest 0.15
type_text 'tonight(CATALOGUE, 110)'
rest 0.7
glide 1180 660 0.8
