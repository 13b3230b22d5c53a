# Completion of lightbridge's command line, for bash: source this file, or put it into
# /usr/share/bash-completion/completions under the name lightbridge.

_lightbridge() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local options="--seconds --output --help" commands=
    COMPREPLY=()
    case $previous in
    --seconds | --output | --transition-unit)
        return ;;
    esac
    case ${COMP_WORDS[1]} in
    identify) options="$options --pixel" ;;
    test) ;;
    *) options="$options --transition-unit --no-flash-limit --version" ;;
    esac
    [ "$COMP_CWORD" -ne 1 ] || commands="identify test"
    case $current in
    -*) COMPREPLY=($(compgen -W "$options" -- "$current")) ;;
    *) COMPREPLY=($(compgen -W "$commands" -- "$current") $(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _lightbridge lightbridge
