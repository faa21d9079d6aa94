#compdef vespermoor-utils

# Completes the commands and options of vespermoor-utils. Asks the program itself, so that it knows
# exactly what the program does.

_vespermoor-utils() {
    local -a found
    if ((CURRENT == 2)); then
        found=(${(f)"$(_call_program commands $words[1] --help |
            sed -nE '/^Subcommands:/,$ s/^  ([a-z]+) .*/\1/p')"})
        compadd -a found
    elif [[ $PREFIX == -* ]]; then
        found=(${(f)"$(_call_program options $words[1] $words[2] --help |
            sed -nE 's/^  (-[a-z],)?(--[a-z-]+).*/\2/p')"})
        compadd -a found
    elif [[ $words[2] == case ]]; then
        ((CURRENT == 3)) && compadd kebab camel
    else
        _files
    fi
}

_vespermoor-utils "$@"
