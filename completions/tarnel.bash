# Completion of tarnel's command line for bash.
_tarnel() {
    local word _
    COMPREPLY=()
    while IFS=$'\t' read -r word _; do
        COMPREPLY+=("$word")
    done < <("${COMP_WORDS[0]}" complete "${COMP_WORDS[@]:1:COMP_CWORD-1}" "${2#[\"\']}" 2>/dev/null)
    # Names with blanks are quoted as those of files are.
    [[ ${COMPREPLY[*]} != *' '* ]] || compopt -o filenames
}
complete -o default -F _tarnel tarnel
