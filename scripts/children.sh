# shellcheck shell=sh
# Sourced: ends with a script what that script has started, however it ends. In $started are the
# processes that are asked to, in $players those that are killed: a player that is asked while it
# draws, or that loses its screen, may hang.
started=
players=
cleanup() {
    trap - EXIT INT TERM
    for pid in $players; do
        kill -KILL "$pid" 2>/dev/null || true
    done
    for pid in $started; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in $players $started; do
        wait "$pid" 2>/dev/null || true
    done
    exit "${1:-1}"
}
trap 'cleanup $?' EXIT
trap 'cleanup 130' INT
trap 'cleanup 143' TERM
