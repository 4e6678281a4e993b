# To be sourced: an X server and window manager of the script's own, and pictures of the windows on it. Everything that is
# put into `processes` ends with the script. `scratch` is a folder that goes with it.
scratch=$(mktemp -d)
processes=()
# The window manager would spin for ever when it is asked politely after its server has gone.
trap 'kill -KILL "${processes[@]}" 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$scratch"' EXIT

# Starts a screen of the size $1 with $2 dots an inch.
startScreen() {
    Xvfb -displayfd 3 -screen 0 "${1:-800x680}x24" -dpi "${2:-96}" 3>"$scratch/display" 2>"$scratch/server-log" &
    processes+=($!)
    for _ in $(seq 100); do
        [ -s "$scratch/display" ] && break
        sleep 0.1
    done
    DISPLAY=:$(cat "$scratch/display")
    export DISPLAY
    mwm >/dev/null 2>&1 &
    processes+=($!)
    sleep 0.5
}

# Waits until the window with the title $1 is on the screen, and a little until it is drawn.
waitForWindow() {
    for _ in $(seq 100); do
        xwininfo -name "$1" 2>/dev/null | grep -q IsViewable && break
        sleep 0.1
    done
    if ! xwininfo -name "$1" >/dev/null 2>&1; then
        echo "The window \"$1\" did not open." >&2
        exit 1
    fi
    sleep 1
}

# Takes a picture to the file $1 of the window that the other arguments name for xwininfo.
takePicture() {
    local picture=$1
    shift
    local width height x y
    read -r width height x y < <(xwininfo "$@" -frame | awk '
        / Width:/ { width = $2 } / Height:/ { height = $2 }
        /Absolute upper-left X:/ { x = $4 } /Absolute upper-left Y:/ { y = $4 }
        END { print width, height, x, y }')
    import -window root -crop "${width}x$height+$x+$y" +repage +dither -colors 200 "PNG8:$picture"
}
