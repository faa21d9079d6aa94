# Completes the commands and options of vespermoor-utils. Asks the program itself, so that it knows
# exactly what the program does. File names are left to the shell.

_vespermoor_utils() {
    local program=$1 current=${COMP_WORDS[COMP_CWORD]} words=
    if [ "$COMP_CWORD" -eq 1 ]; then
        words=$("$program" --help 2>/dev/null |
            sed -nE '/^Subcommands:/,$ s/^  ([a-z]+) .*/\1/p')
    elif [ "${current#-}" != "$current" ]; then
        words=$("$program" "${COMP_WORDS[1]}" --help 2>/dev/null |
            sed -nE 's/^  (-[a-z],)?(--[a-z-]+).*/\2/p')
    elif [ "${COMP_WORDS[1]}" = case ]; then
        [ "$COMP_CWORD" -ne 2 ] || words="kebab camel"
        compopt +o default 2>/dev/null
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -o default -F _vespermoor_utils vespermoor-utils
