# offers.zsh PROGRAMS: asks an interactive zsh, on a terminal of its own, what it offers for a line.
emulate -R zsh
zmodload zsh/zpty zsh/zselect
programs=${1:A}
here=${0:A:h}
work=$(mktemp -d)
integer failures=0 agent=0
trap '(( agent == 0 )) || kill $agent; rm -rf $work' EXIT

# The shell that completes.  What is offered goes to a file, and "done" after it.
cat >$work/setup.zsh <<TEXT
PROMPT= RPROMPT=
unsetopt beep
fpath=($here/../../completions \$fpath)
autoload -Uz compinit
compinit -u -D
cd $work/files
TEXT
cat >>$work/setup.zsh <<'TEXT'
# A call with one of these only sorts out what matches.
compadd() {
    if (( ! ${@[(I)-[OAD]*]} )); then
        local -a offered
        builtin compadd -O offered "$@"
        (( $#offered == 0 )) || print -rl -- $offered >>../offered
    fi
    builtin compadd "$@"
}
capture() { _main_complete; print done >>../offered; }
zle -C capture list-choices capture
bindkey '^T' capture
print ready >../ready
TEXT
mkdir $work/files
touch $work/files/events.txt

start_shell() { # PATH
    rm -f $work/ready
    PATH=$1 TERM=vt100 zpty -b shell zsh -f -i
    zpty -w shell "source $work/setup.zsh"
    wait_for ready $work/ready
}

# Waits for a line in a file, and keeps the shell's terminal empty meanwhile.
wait_for() { # LINE FILE
    local output
    integer tries
    for (( tries = 0; tries < 1000; ++tries )); do
        while zpty -t shell && zpty -r shell output; do :; done
        grep -qx $1 $2 2>/dev/null && return
        zselect -t 2
    done
    print "no '$1' in $2"
    exit 1
}

# Expects these offers, in any order, for a line; ^U and ^T empty the line and complete it.
expect() { # OFFERS LINE
    rm -f $work/offered
    zpty -w -n shell $'\C-U'"$2"$'\C-T'
    wait_for done $work/offered
    local offered=$(grep -vx done $work/offered | sort | xargs)
    local expected=$(print -rl -- ${=1} | sort | xargs)
    if [[ $offered != $expected ]]; then
        print -r -- "line:     $2"
        print -r -- "expected: $expected"
        print -r -- "offered:  $offered"
        (( ++failures ))
    fi
}

levels='all none default error notice warning info debug temp packet log'

# The grammar, with a table that holds odd names.
start_shell $here/fake:$programs:$PATH
expect 'help show start stop resume clear debug' 'ruklog '
expect 'show start stop' 'ruklog s'
expect '' 'ruklog x'
expect 'info all last tail debug' 'ruklog show '
expect 'info all last tail debug' 'ruklog SHOW '
expect 'tail' 'ruklog show t'
expect '' 'ruklog show last '
expect '' 'ruklog show debug '
expect '' 'ruklog help '
expect '' 'ruklog start '
expect '' 'ruklog clear '
expect 'all flow flood mac-table.v2/a:b a_name_longer_than_20_columns' 'ruklog debug '
expect 'flow flood' 'ruklog debug fl'
expect $levels 'ruklog debug flow '
expect $levels 'ruklog debug flow none e '
expect 'default debug' 'ruklog debug flow de'
expect '-all -none -default -error -notice -warning -info -debug -temp -packet -log' \
    'ruklog debug flow -'
expect '-warning' 'ruklog debug all all -w'

# The stand-in Agent's options are those of its help, and some have values.
expect "$($programs/ruklog-agentsim --help | LC_ALL=C sed -En 's/^  (--[a-z-]+).*/\1/p')" \
    'ruklog-agentsim --'
expect '--preload' 'ruklog-agentsim --pr'
expect 'events.txt' 'ruklog-agentsim --feed '
expect 'events.txt' 'ruklog-agentsim --kmsg --feed=ev'
expect '' 'ruklog-agentsim --rate '
zpty -d shell

# No Agent, then an Agent, with the tool itself.
start_shell $programs:$PATH
expect 'all' 'ruklog debug '
$programs/ruklog-agentsim >$work/said &
agent=$!
wait_for "ruklog-agentsim: serving.*" $work/said
expect 'all kern user daemon auth syslog cron local flow port bridge vxlan mirror timer' \
    'ruklog debug '
expect 'port' 'ruklog debug po'
zpty -d shell

(( failures == 0 ))
