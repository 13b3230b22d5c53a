# shellcheck shell=sh
# Sourced after packages.sh and children.sh.

# screen WIDTH HEIGHT FOLDER: starts a virtual screen, sets $DISPLAY to it, and ends it with the
# script. MIRROR_TEST_SERVER names the server, as for tests; its output goes to FOLDER.
screen() {
    server=$(server_packages)
    # shellcheck disable=SC2086
    need $screen_packages $server
    rm -f "$3/display"
    mkfifo "$3/display"
    case ${MIRROR_TEST_SERVER:-xvfb} in
    xvfb) set -- "$@" Xvfb -screen 0 "$1x$2x24" ;;
    xvnc) set -- "$@" Xvnc -geometry "$1x$2" -depth 24 -rfbport -1 -SecurityTypes None ;;
    xorg) set -- "$@" Xorg -config "$PWD/tests/support/xorg.conf" -logfile /dev/null \
        -novtswitch -sharevts ;;
    esac
    screen_size=own$1x$2 # unlike the names of the modes that the driver has
    screen_folder=$3
    screen_mode="100 $1 $(($1 + 1)) $(($1 + 2)) $(($1 + 3)) $2 $(($2 + 1)) $(($2 + 2)) $(($2 + 3))"
    shift 3
    "$@" -displayfd 3 -nolisten tcp -noreset 3>"$screen_folder/display" 2>"$screen_folder/server.log" &
    started="$started $!"
    read -r number <"$screen_folder/display"
    DISPLAY=:$number
    export DISPLAY
    if [ "${MIRROR_TEST_SERVER:-}" = xorg ]; then
        # shellcheck disable=SC2086
        xrandr --newmode "$screen_size" $screen_mode
        xrandr --addmode DUMMY0 "$screen_size"
        xrandr --output DUMMY0 --mode "$screen_size"
    fi
}
