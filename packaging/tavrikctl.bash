# bash completion for tavrikctl

_tavrikctl() {
    local current previous words
    current=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD - 1]}
    case $previous in
        --console | --to | --port | --count) return ;;
        --svg | --from)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        send) words="osd preview kvm relation details hotkey pause continue mto" ;;
        osd) words="on off" ;;
        preview | kvm) words="off" ;;
    esac
    if ((COMP_CWORD == 1)); then
        words="check draw send status decode watch --help --version"
    elif [[ $current == -* ]]; then
        case ${COMP_WORDS[1]} in
            check) words="--console --json --fix --in-place --help" ;;
            draw) words="--console --svg --help" ;;
            send) words="--to --all-consoles --from --dry-run --yes --json --help" ;;
            status) words="--json --help" ;;
            decode) words="--port --json --help" ;;
            watch) words="--count --json --help" ;;
        esac
    fi
    if [[ -n $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -o filenames -F _tavrikctl tavrikctl
