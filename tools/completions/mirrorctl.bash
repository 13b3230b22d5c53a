# Completion of mirrorctl's command line, for bash: source this file, or put it into
# /usr/share/bash-completion/completions under the name mirrorctl.

_mirrorctl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} options=
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        COMPREPLY=($(compgen -W "displays check layout run palette snapshot doctor --help
            --version" -- "$current"))
        return
    fi
    case $command:$previous in
    *:--mode)
        COMPREPLY=($(compgen -W "match melt fade palette" -- "$current"))
        return ;;
    layout:--display)
        COMPREPLY=($(compgen -W "$("${COMP_WORDS[0]}" displays 2>/dev/null |
            sed -n 's/^ *\([0-9][0-9]*\) .*/\1/p')" -- "$current"))
        return ;;
    *:--screen | *:--seconds | *:--control-version | *:--bridge)
        return ;;
    esac
    case $command in
    displays) options="--json" ;;
    check) options="--screen --display --no-display --strict --json" ;;
    layout) options="--display --screen --control-version --mode --bridge" ;;
    run) options="--mode --seconds --once --json --no-count" ;;
    palette) options="--json" ;;
    snapshot) options="--seconds --json" ;;
    doctor) options="--no-mark --json" ;;
    *) return ;;
    esac
    case $current in
    -*) COMPREPLY=($(compgen -W "$options --help" -- "$current")) ;;
    *)
        [ "$command" = displays ] || [ "$command" = layout ] ||
            COMPREPLY=($(compgen -f -- "$current"))
        ;;
    esac
}
complete -o filenames -F _mirrorctl mirrorctl
