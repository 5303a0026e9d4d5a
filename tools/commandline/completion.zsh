#compdef wickfield-bundle kzfile
# Completion in zsh for wickfield-bundle and kzfile: commands, options and their values, by what the program's own --help
# says. Put into a folder of $fpath, under the program's name behind "_".

# _wickfield_names KIND: what a value or an operand of that kind may be.
_wickfield_names() {
    case $1 in
        *'|'*) compadd -- ${(s:|:)1} ;;
        FOLDER | BUNDLE) _files -/ ;;
        FILE | NAME | SOURCE | SOURCE=* | ARCHIVE | DESTINATION) _files ;;
    esac
}

_wickfield() {
    local program=$words[1] command line previous=$words[CURRENT-1]
    local -a help names match mbegin mend
    command=${${(@)words[2,CURRENT-1]:#-*}[1]}
    help=("${(@f)$(_call_program help $program $command --help)}")
    if [[ $PREFIX == --*=* ]]; then
        previous=${PREFIX%%=*}
        compset -P 1 '*='
    fi
    for line in $help; do
        if [[ $line =~ '^ +((-[A-Za-z]), )?(--[a-z-]+) ([^ ]+)  ' && ( $previous == $match[2] || $previous == $match[3] ) ]]; then
            _wickfield_names $match[4]
            return
        fi
    done
    for line in $help; do
        if [[ $PREFIX == -* && $line =~ '^ +(-[A-Za-z], )?(--[a-z-]+)( [^ ]+)?  +(.*)' ]]; then
            names+=("$match[2]:$match[4]")
        elif [[ $PREFIX != -* && -z $command && $line =~ '^  ([a-z]+) +(.*)' ]]; then
            names+=("$match[1]:$match[2]")
        fi
    done
    if (( $#names )); then
        _describe word names
    elif [[ -n $command ]]; then
        _wickfield_names ${${${help[1]##* }%%...}//[^A-Z]/}
    fi
}

_wickfield "$@"
