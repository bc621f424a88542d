# shellcheck shell=bash
# The Debian packages that ./run, ./test, ./fuzz and ./bench need; to be sourced. "FIRST|SECOND" is
# the first of them that the release has.

# shellcheck disable=SC2034 # used by those that source this file
build_packages=(
    cmake g++ ninja-build pkgconf
    "libboost1.81-dev|libboost-dev" libxcb1-dev
    nlohmann-json3-dev qt6-base-dev qt6-base-private-dev qt6-svg-dev
)

# shellcheck disable=SC2034
lint_packages=(clang-tidy)

# The compiler that has a fuzzer, and what it links with.
# shellcheck disable=SC2034
fuzz_packages=(clang libclang-rt-dev)

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
    at-spi2-core binutils clang-format fonts-dejavu-core fonts-liberation
    "fonts-liberation-sans-narrow|fonts-liberation" gir1.2-atspi-2.0 i3-wm lxqt-panel marco
    mate-settings-daemon-common python3 python3-gi python3-xlib qt6-wayland sway systemd trayer weston
    xfce4-panel xfwm4
)

# Whole desktops for tests/desktop/check-desktops, and what draws them without a graphics card.
# shellcheck disable=SC2034
kde_packages=(breeze-icon-theme kded5 kwin-x11 libgl1-mesa-dri plasma-desktop plasma-workspace)
# shellcheck disable=SC2034
gnome_packages=(
    gir1.2-gtk-4.0 gnome-shell gnome-shell-extension-appindicator libgl1-mesa-dri xwayland
)

# What makes the Debian packages and reads them.
# shellcheck disable=SC2034
package_packages=(appstream desktop-file-utils dpkg-dev file lintian man-db)

# missing_packages NAME... prints, of each that is not installed, the alternative to install. A package
# whose version an administrator holds is installed.
missing_packages() {
    local installed package alternatives name
    installed=$(dpkg-query -W -f ';${db:Status-Status} ${Package};')
    for package in "$@"; do
        IFS='|' read -r -a alternatives <<<"$package"
        for name in "${alternatives[@]}"; do
            if [[ $installed == *";installed $name;"* ]]; then
                continue 2
            elif [[ -n $(apt-cache madison "$name" 2>/dev/null) ]]; then
                break
            fi
        done
        echo "$name"
    done
}

# apt-get waits for the lock of an installation, but not for that of the package lists. The machine's
# own update may hold either for minutes after a start.
readonly lock_timeout_seconds=600

# update_package_lists COMMAND... runs apt-get by COMMAND, which ends in `env`.
update_package_lists() {
    local deadline=$((SECONDS + lock_timeout_seconds)) errors
    until errors=$("$@" LC_ALL=C apt-get update -q 2>&1 >&3); do
        if [[ $errors != *"Could not get lock"* ]] || ((SECONDS >= deadline)); then
            cat >&2 <<<"$errors"
            return 1
        fi
        echo "Waiting for the package lists, which another program updates."
        sleep 5
    done 3>&1
}

# install_packages NAME... installs those that are missing, and does nothing without any.
install_packages() {
    if ! command -v dpkg-query >/dev/null; then
        echo "This is no Debian system; it must have the counterparts of: $*" >&2
        return
    fi
    local missing as_root=(env)
    mapfile -t missing < <(missing_packages "$@")
    if ((${#missing[@]} == 0)); then
        return
    fi

    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "As root, install: ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo env)
    fi
    update_package_lists "${as_root[@]}"
    # Which alternative there is may be known only now.
    mapfile -t missing < <(missing_packages "$@")
    echo "Installing ${missing[*]}"
    "${as_root[@]}" DEBIAN_FRONTEND=noninteractive \
        apt-get -o DPkg::Lock::Timeout=$lock_timeout_seconds \
        install -q -y --no-install-recommends "${missing[@]}"
}
