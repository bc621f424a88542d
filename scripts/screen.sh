# shellcheck shell=bash
# Programs in the background and a virtual screen of one's own; to be sourced. Whoever does has
# `runtime`, a short-lived folder with a short path, and calls `finish` when it ends.

# What is started ends with this shell, however that ends.
together=()
if command -v setpriv >/dev/null; then
    together=(setpriv --pdeathsig TERM)
fi

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
    "${together[@]}" "$@" &
}

# Ends what was started, the last one first, and leaves no file.
finish() {
    trap '' INT TERM HUP
    local process
    for process in $(jobs -p | tac); do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
    if [[ -n $runtime ]]; then
        rm -rf "$runtime"
    fi
}

# display_answers: whether a program could open its window on the display that the environment
# names. A socket that a dead server has left does not.
display_answers() {
    perl -MIO::Socket::UNIX -MIO::Socket::INET -e '
        my ($x, $wayland, $runtime) = map { $_ // "" } @ENV{qw(DISPLAY WAYLAND_DISPLAY XDG_RUNTIME_DIR)};
        if ($wayland ne "") {
            $wayland = "$runtime/$wayland" unless $wayland =~ m{^/};
            exit 0 if IO::Socket::UNIX->new(Peer => $wayland);
        }
        if (my ($host, $number) = $x =~ m{^(.*):(\d+)(?:\.\d+)?$}) {
            my $path = $host =~ m{^/} ? "$host:$number" : "/tmp/.X11-unix/X$number";
            if ($host =~ m{^(?:unix)?$|/}) {
                exit 0 if IO::Socket::UNIX->new(Peer => "\0$path") || IO::Socket::UNIX->new(Peer => $path);
            } else {
                exit 0 if IO::Socket::INET->new(PeerAddr => $host, PeerPort => 6000 + $number, Timeout => 3);
            }
        }
        exit 1'
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
