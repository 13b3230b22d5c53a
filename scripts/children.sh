# shellcheck shell=sh
# Sourced: ends the child processes of a script when the script ends for any reason. Processes in
# $started are sent SIGTERM. Those in $players are killed first: a player that receives SIGTERM
# while it draws, or that loses its screen, may hang.
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
