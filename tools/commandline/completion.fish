# Completion in fish for wickfield-bundle and kzfile: commands, options and their values, by what the program's own --help
# says. Put where fish looks, under the program's name.

# The program's help, or the command's once there is one.
function __wickfield_help
    set -l words (commandline -opc)
    for word in $words[2..]
        if not string match -q -- '-*' $word
            $words[1] $word --help 2>/dev/null
            return
        end
    end
    $words[1] --help 2>/dev/null
end

# __wickfield_names KIND: what a value or an operand of that kind may be.
function __wickfield_names
    switch $argv[1]
        case '*|*'
            string split '|' -- $argv[1]
        case FOLDER BUNDLE
            __fish_complete_directories (commandline -ct)
        case FILE NAME SOURCE 'SOURCE=*' ARCHIVE DESTINATION
            __fish_complete_path (commandline -ct)
    end
end

function __wickfield_offers
    command -q (commandline -opc)[1]
    or return
    set -l help (__wickfield_help)
    set -l previous (commandline -opc)[-1]
    for line in $help
        set -l parts (string match -rg -- '^ +((?:-\w, )?--[a-z-]+) (\S+)  ' $line)
        and contains -- $previous (string split ', ' -- $parts[1])
        and __wickfield_names $parts[2]
        and return
    end
    if string match -q -- '-*' (commandline -ct)
        string replace -rf -- '^ +(?:-\w, )?(--[a-z-]+)(?: \S+)?  +(.*)' '$1\t$2' $help
    else if contains commands: $help
        string replace -rf -- '^  ([a-z]+) +(.*)' '$1\t$2' $help
    else
        __wickfield_names (string match -rg -- '([A-Z]+)\.*$' $help[1])
    end
end

complete -c wickfield-bundle -f -a '(__wickfield_offers)'
complete -c kzfile -f -a '(__wickfield_offers)'
