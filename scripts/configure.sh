# shellcheck shell=sh
# Sourced by the other scripts.

# configure FOLDER ARGUMENTS...: has CMake configure a build folder. One that was copied or moved here
# with the tree is for the place that it comes from, and is refused.
configure() {
    configured=$1
    shift
    if [ -f "$configured/CMakeCache.txt" ]; then
        made_for=$(sed -n 's/^CMAKE_CACHEFILE_DIR:INTERNAL=//p' "$configured/CMakeCache.txt")
        if [ "$(cd "$made_for" 2>/dev/null && pwd -P)" != "$(cd "$configured" && pwd -P)" ]; then
            echo "$configured was made for another place, $made_for, and cannot be used here." \
                "Remove it and try again: rm -r \"$PWD/$configured\"" >&2
            exit 1
        fi
    fi
    cmake -B "$configured" "$@"
}
