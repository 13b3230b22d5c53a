# Completion of panelwall's command line, for bash: source this file, or put it into
# /usr/share/bash-completion/completions under the name panelwall.

_panelwall() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $previous in
    --speed | --seconds | --size | --transition-unit | --web-address)
        return ;;
    esac
    case $current in
    -*)
        COMPREPLY=($(compgen -W "--record --replay --speed --send --anywhere --compare --seconds
            --snapshot --size --transition-unit --web --web-address --web-link
            --help --version" -- "$current"))
        ;;
    *) COMPREPLY=($(compgen -f -- "$current")) ;;
    esac
}
complete -o filenames -F _panelwall panelwall
