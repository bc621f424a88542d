# shellcheck shell=bash
# Programs in the background and a virtual screen of one's own; to be sourced. Whoever does has
# `runtime`, a short-lived folder with a short path, and calls `finish` when it ends.

processes=() # everything that was started, the last one last

# wait_until SECONDS COMMAND... fails when the command did not succeed in that time.
wait_until() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@"; do
        if ((SECONDS >= deadline)); then
            return 1
        fi
        sleep 0.05
    done
}

# start COMMAND... in the background, to be ended with this script.
start() {
    "$@" &
    processes+=($!)
}

finish() {
    local index
    for ((index = ${#processes[@]} - 1; index >= 0; --index)); do
        kill "${processes[index]}" 2>/dev/null || true
        wait "${processes[index]}" 2>/dev/null || true
    done
    if [[ -n $runtime ]]; then
        rm -rf "$runtime"
    fi
}

# use_home FOLDER: from here on nothing is read from or written to the user's own folders.
use_home() {
    export HOME=$1
    export XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share
    export XDG_CACHE_HOME=$HOME/.cache XDG_RUNTIME_DIR=$runtime
}

# start_screen SIZE, with a window manager and a session bus.
start_screen() {
    export LC_ALL=C.UTF-8
    start Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp -noreset 3>"$runtime/display" \
        2>"$runtime/screen.log"
    wait_until 10 test -s "$runtime/display"
    DISPLAY=:$(<"$runtime/display")
    export DISPLAY QT_QPA_PLATFORM=xcb
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$runtime/bus
    start dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS" \
        2>"$runtime/bus.log"
    start openbox --sm-disable &>"$runtime/openbox.log"
    wait_until 10 test -S "$runtime/bus"
}
