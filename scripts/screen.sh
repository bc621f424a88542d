# shellcheck shell=bash
# Programs in the background and a private virtual screen; to be sourced. The caller sets traps that
# call `finish`, then calls make_runtime.

# A closed standard descriptor would be reused by the next file that is opened.
{ : <&0; } 2>/dev/null || exec </dev/null
{ : >&1; } 2>/dev/null || exec >/dev/null
{ : >&2; } 2>/dev/null || exec 2>/dev/null

# make_runtime NAME sets `runtime` to a new folder for sockets and logs. It is below /tmp whatever
# TMPDIR says: the path of a socket has 107 bytes at most. A folder that a killed run left is removed.
make_runtime() {
    local note=build/$1.folder
    if [[ -e $note ]]; then
        rm -rf "$(<"$note")"
    fi
    runtime=$(mktemp -d "/tmp/$1.XXXXXX")
    printf '%s\n' "$runtime" >"$note"
}

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

# give_up MESSAGE LOG ends this script with the message and what the log says.
give_up() {
    echo "$1. What it wrote:" >&2
    cat "$2" >&2
    exit 1
}

# require SECONDS MESSAGE LOG COMMAND... waits like wait_until, and gives up with the message.
require() {
    local seconds=$1 message=$2 log=$3
    shift 3
    wait_until "$seconds" "$@" || give_up "$message within $seconds s" "$log"
}

# start COMMAND... in the background, to be ended with this script.
start() {
    "${together[@]}" "$@" &
}

# Ends what was started, the last one first, and leaves no file.
finish() {
    trap '' INT TERM HUP
    local processes index
    mapfile -t processes < <(jobs -p)
    for ((index = ${#processes[@]} - 1; index >= 0; --index)); do
        kill "${processes[index]}" 2>/dev/null || true
        wait "${processes[index]}" 2>/dev/null || true
    done
    if [[ -n $runtime ]]; then
        rm -rf "$runtime"
    fi
}

# display_answers: whether a program could open its window on the display that the environment
# names. A socket that a dead server has left does not.
display_answers() {
    # Without a locale, because perl complains about one that is not installed.
    LC_ALL=C perl -MIO::Socket::UNIX -MIO::Socket::INET -e '
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
    require 10 "The virtual screen does not start" "$runtime/screen.log" \
        test -s "$runtime/display"
    DISPLAY=:$(<"$runtime/display")
    export DISPLAY QT_QPA_PLATFORM=xcb
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$runtime/bus
    start dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS" \
        2>"$runtime/bus.log"
    start openbox --sm-disable &>"$runtime/openbox.log"
    require 10 "The session bus does not start" "$runtime/bus.log" test -S "$runtime/bus"
}
