# shellcheck shell=sh
# Sourced by the other scripts.

# configure FOLDER ARGUMENTS...: configures a build folder with CMake. Refuses a build folder that
# was copied or moved with the tree, since it still names its old place.
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
