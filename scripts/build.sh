# shellcheck shell=bash
# Builds of the presets; to be sourced at the root of the source tree.

# build PRESET [TARGET...] configures only when it must; without a target it builds what the preset
# is for.
build() {
    local preset=$1 targets=()
    shift
    if ! grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "build/$preset/CMakeCache.txt"; then
        # New, or made by a clone in another folder.
        cmake --fresh --preset "$preset"
    elif [[ ! build/$preset/build.ninja -nt CMakePresets.json ]]; then
        cmake --preset "$preset"
    fi
    if (($# > 0)); then
        targets=(--target "$@")
    fi
    cmake --build --preset "$preset" "${targets[@]}"
}
