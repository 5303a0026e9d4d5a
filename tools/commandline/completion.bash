# Completion in bash for wickfield-bundle and kzfile: commands, options and their values, by what the program's own --help
# says. Sourced, or put where bash-completion looks, under the program's name.
# shellcheck shell=bash disable=SC2207  # splitting at line ends is what is wanted, and IFS says so

# _wickfield_help PROGRAM [COMMAND]: the help, or nothing.
_wickfield_help() {
    "$@" --help 2> /dev/null < /dev/null
}

# _wickfield_commands HELP: one per line.
_wickfield_commands() {
    local line within=0
    while IFS= read -r line; do
        if [[ $line == commands: ]]; then
            within=1
        elif [[ -z $line ]]; then
            within=0
        elif (( within )) && [[ $line =~ ^\ \ ([a-z-]+)\  ]]; then
            printf '%s\n' "${BASH_REMATCH[1]}"
        fi
    done <<< "$1"
}

# _wickfield_options HELP: one per line, each "-letter --word value", with "." for a letter or a value that it has not.
_wickfield_options() {
    local line
    while IFS= read -r line; do
        if [[ $line =~ ^\ +((-[A-Za-z]),\ )?(--[a-z-]+)(\ ([^\ ]+))?(\ \ |$) ]]; then
            printf '%s %s %s\n' "${BASH_REMATCH[2]:-.}" "${BASH_REMATCH[3]}" "${BASH_REMATCH[5]:-.}"
        fi
    done <<< "$1"
}

# _wickfield_offer KIND BEGINNING: offers what a value or an operand of that kind may be.
_wickfield_offer() {
    local names=''
    case $1 in
        *'|'*) names=$(compgen -W "${1//|/$'\n'}" -- "$2") ;;
        FOLDER | BUNDLE) names=$(compgen -d -- "$2") ;;
        FILE | NAME | SOURCE | SOURCE=* | ARCHIVE | DESTINATION) names=$(compgen -f -- "$2") ;;
    esac
    if [[ $1 != *'|'* ]]; then
        compopt -o filenames 2> /dev/null  # which quotes them, and ends a folder in "/"
    fi
    if [[ $1 == SOURCE=* ]]; then
        compopt -o nospace 2> /dev/null  # the destination follows
    fi
    if [[ -n $names ]]; then
        mapfile -t COMPREPLY <<< "$names"
    fi
}

_wickfield_complete() {
    local program=$1 current=$2 previous=$3 command='' help options letter word value operand index IFS=$'\n'
    COMPREPLY=()
    # "--option=value" arrives as three words.
    if [[ $current == = ]]; then
        current=''
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    help=$(_wickfield_help "$program")
    for (( index = 1; index < COMP_CWORD; index++ )); do
        if [[ ${COMP_WORDS[index]} != -* ]]; then
            command=${COMP_WORDS[index]}
            break
        fi
    done
    if [[ -z $command && $current != -* ]]; then
        COMPREPLY=($(compgen -W "$(_wickfield_commands "$help")" -- "$current"))
        return
    fi
    if [[ -n $command ]]; then
        help=$(_wickfield_help "$program" "$command")
    fi
    options=$(_wickfield_options "$help")
    while IFS=' ' read -r letter word value; do
        if [[ $value != . && ($previous == "$letter" || $previous == "$word") ]]; then
            _wickfield_offer "$value" "$current"
            return
        fi
    done <<< "$options"
    if [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "$(cut -d ' ' -f 2 <<< "$options")" -- "$current"))
    elif [[ -n $command ]]; then
        operand=${help%%$'\n'*}
        operand=${operand##*[ \[]}
        _wickfield_offer "${operand%%[].]*}" "$current"
    fi
}

complete -F _wickfield_complete wickfield-bundle kzfile
