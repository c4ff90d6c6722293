# bash completion for tavrikctl

_tavrikctl() {
    local current previous
    current=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD - 1]}
    case $previous in
        --console) return ;;
        --svg)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
    esac
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "check draw --help --version" -- "$current")
    elif [[ $current == -* && ${COMP_WORDS[1]} == check ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--console --json --fix --in-place --help" -- "$current")
    elif [[ $current == -* && ${COMP_WORDS[1]} == draw ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--console --svg --help" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -o filenames -F _tavrikctl tavrikctl
