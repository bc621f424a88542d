# shellcheck shell=bash
# Builds of the preset `release`; to be sourced at the root of the source tree.

# build_release TARGET... configures only when it must; no target means everything.
build_release() {
    if [[ ! build/release/build.ninja -nt CMakePresets.json ]]; then
        cmake --preset release
    fi
    local targets=()
    if (($# > 0)); then
        targets=(--target "$@")
    fi
    cmake --build build/release "${targets[@]}"
}
