# Completion of ruklog-agentsim's options for bash.

_ruklog_agentsim() { # PROGRAM TYPED PREVIOUS
    local typed=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]}
    local options=(--capacity --console --feed --first-entry --help --kmsg
        --management-ip --modules --no-line-feed --pidfile --preload --rate --socket
        --version-mismatch)
    COMPREPLY=()
    # In "--feed=FILE" the "=" is a word of its own.
    if [ "$typed" = = ]; then
        typed=
    elif [ "$option" = = ]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $option in
    --feed | --pidfile | --socket)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$typed")
        ;;
    --capacity | --first-entry | --management-ip | --modules | --preload | --rate) ;;
    *)
        for option in "${options[@]}"; do
            [[ $option != "$typed"* ]] || COMPREPLY+=("$option")
        done
        ;;
    esac
}

complete -F _ruklog_agentsim ruklog-agentsim
