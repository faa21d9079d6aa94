# Completes the commands and options of vespermoor-utils. Asks the program itself, so that it knows
# exactly what the program does. File names are left to the shell.

function __vespermoor_utils_commands
    vespermoor-utils --help 2>/dev/null |
        string match -rg '^  ([a-z]+ {2,}.*)$' | string replace -r ' {2,}' \t
end

function __vespermoor_utils_options
    set -l words (commandline -opc)
    vespermoor-utils $words[2] --help 2>/dev/null |
        string match -rg '^  (?:-[a-z],)?(--[a-z-]+)'
end

complete -c vespermoor-utils -n __fish_use_subcommand -f -a '(__vespermoor_utils_commands)'
complete -c vespermoor-utils -n '__fish_seen_subcommand_from case' -f
complete -c vespermoor-utils \
    -n '__fish_seen_subcommand_from case; and test (count (commandline -opc)) -eq 2' \
    -a 'kebab camel'
complete -c vespermoor-utils -n 'string match -q -- "-*" (commandline -ct)' \
    -a '(__vespermoor_utils_options)'
