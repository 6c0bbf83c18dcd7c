# Completion of ruklog's commands for bash.

# Prints "all" and the modules that the Agent has, a name a line; without an Agent "all" alone.
_ruklog_modules() { # PROGRAM
    local table
    echo all
    # An Agent that stalls must not take the shell with it.
    table=$(timeout 2 "$1" show debug </dev/null 2>/dev/null) || return 0
    # A name ends before two blanks.  Names that a shell would not take as they are, are left out.
    sed -En '2,$ s/^ *([[:alnum:]_.:\/+-]+)  .*/\1/p' <<<"$table"
}

# Offers those of the words that begin with what is typed.
_ruklog_offer() { # TYPED WORD...
    local typed=$1 word
    shift
    for word; do
        [[ $word != "$typed"* ]] || COMPREPLY+=("$word")
    done
}

_ruklog() { # PROGRAM TYPED
    local typed=${COMP_WORDS[COMP_CWORD]} levels modules
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        _ruklog_offer "$typed" help show start stop resume clear debug
        return
    fi
    case ${COMP_WORDS[1],,}:$COMP_CWORD in
    show:2)
        _ruklog_offer "$typed" info all last tail debug
        ;;
    debug:2)
        mapfile -t modules < <(_ruklog_modules "$1")
        _ruklog_offer "$typed" "${modules[@]}"
        ;;
    debug:*)
        levels=(all none default error notice warning info debug temp packet log)
        [[ $typed != -* ]] || levels=("${levels[@]/#/-}")
        _ruklog_offer "$typed" "${levels[@]}"
        ;;
    esac
}

complete -F _ruklog ruklog
