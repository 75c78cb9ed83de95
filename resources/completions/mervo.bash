# Completion of mervo for bash: commands, options, tool ids and the names of a tool's arguments.

_mervo_ask() { # what the program says to these words, one candidate on a line
    "${COMP_WORDS[0]/#\~/$HOME}" "$@" 2>/dev/null
}

_mervo_offer() { # those of the candidates $2 ... that begin with $1
    local current=$1
    shift
    mapfile -t COMPREPLY < <(compgen -W "$*" -- "$current")
}

_mervo_automations() { # the names of the automations: the folders that hold a loop.json
    local home=${MERVO_HOME:-$HOME/mervo} file
    for file in "${home/#\~/$HOME}"/automations/*/loop.json; do
        [[ -f $file ]] && file=${file%/loop.json} && echo "${file##*/}"
    done
}

_mervo_value() { # bash splits a word at "=": the file of body-file= and the name of an automation can be completed
    local current=${COMP_WORDS[COMP_CWORD]} key=${COMP_WORDS[COMP_CWORD - 2]}
    [[ $current == = ]] && key=${COMP_WORDS[COMP_CWORD - 1]} current=
    [[ ${COMP_WORDS[2]}:$key == auto.*:name ]] && _mervo_offer "$current" $(_mervo_automations)
    [[ $key == body-file ]] || return
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

_mervo_argument() { # the names of arguments that are not given yet
    local current=${COMP_WORDS[COMP_CWORD]} given=" ${COMP_WORDS[*]} " name
    local -a names=()
    while read -r name; do
        [[ $given == *" $name ="* || $given == *" $name="* ]] && continue
        names+=("$name=")
        [[ $name == body && $given != *" body-file"* ]] && names+=(body-file=)
    done < <(_mervo_ask tools "${COMP_WORDS[2]}" --arguments)
    compopt -o nospace 2>/dev/null
    _mervo_offer "$current" "${names[@]}"
}

_mervo() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local -a commands=(run tools explain pending autonomy auto-run auto-done permissions bootstrap-permissions secret doctor help)
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        _mervo_offer "$current" "${commands[@]}" --help --version
        return
    fi
    case $command:$current in
        run:-* | explain:-* | pending:-* | permissions:* | bootstrap-permissions:* | doctor:*)
            _mervo_offer "$current" --json --help ;;
        tools:-*) _mervo_offer "$current" --json --ids --arguments --help ;;
        auto-run:-*) _mervo_offer "$current" --force --help ;;
        auto-run:*) ((COMP_CWORD == 2)) && _mervo_offer "$current" $(_mervo_automations) ;;
        secret:*) ((COMP_CWORD == 2)) && _mervo_offer "$current" set test ;;
        run:* | explain:* | tools:*)
            if ((COMP_CWORD == 2)); then
                _mervo_offer "$current" $(_mervo_ask tools --ids)
            elif [[ $command == tools ]]; then
                return
            elif [[ $current == = || $previous == = ]]; then
                _mervo_value
            else
                _mervo_argument
            fi
            ;;
        pending:*) _mervo_offer "$current" $(_mervo_ask pending | sed -n 's/^\([0-9A-F]\{8\}\)  .*/\1/p') ;;
        autonomy:*) _mervo_offer "$current" panic copilote yolo ;;
        help:*) _mervo_offer "$current" "${commands[@]}" ;;
    esac
}

complete -F _mervo mervo
