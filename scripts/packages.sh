# shellcheck shell=bash
# The Debian packages that ./run, ./test, ./fuzz and ./bench need; to be sourced.

# shellcheck disable=SC2034 # used by those that source this file
build_packages=(
    cmake g++ ninja-build pkgconf
    libcpp-httplib-dev libboost1.81-dev libxcb1-dev
    nlohmann-json3-dev qt6-base-dev qt6-base-private-dev qt6-svg-dev
)

# shellcheck disable=SC2034
lint_packages=(clang-tidy)

# The compiler that has a fuzzer, and what it links with.
# shellcheck disable=SC2034
fuzz_packages=(clang libclang-rt-14-dev)

# A user's service manager; installed, it starts nothing by itself.
# shellcheck disable=SC2034
service_packages=(systemd)

# A screen where there is none, with a window manager, a session bus and something to take a
# picture with.
# shellcheck disable=SC2034
screen_packages=(dbus-daemon openbox scrot xvfb)

# shellcheck disable=SC2034
bench_packages=(dbus-daemon openbox xvfb)

# shellcheck disable=SC2034
test_packages=(
    at-spi2-core binutils clang-format fonts-dejavu-core fonts-liberation gir1.2-atspi-2.0 python3
    python3-gi python3-xlib qt6-wayland systemd trayer weston
)

# What makes the Debian packages and reads them.
# shellcheck disable=SC2034
package_packages=(appstream desktop-file-utils dpkg-dev file lintian man-db)

# install_packages NAME... installs those that are missing, and does nothing without any.
install_packages() {
    if ! command -v dpkg-query >/dev/null; then
        echo "This is no Debian system; it must have the counterparts of: $*" >&2
        return
    fi
    local present missing=() package
    present=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' "$@" 2>/dev/null || true)
    for package in "$@"; do
        if ! grep -qxF "ii  $package" <<<"$present"; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi

    local as_root=()
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "As root, install: ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}"
}
