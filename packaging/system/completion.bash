# Completion for odbcadmin-doctor and odbcadmin-register: options, and the names that odbcinst lists.

# Reads the line up to the cursor as the shell does, into variables of the caller: the value of its last word, the quote that
# is open there, and how much of the value readline keeps: it puts the completion in the place of what stands behind the open
# quote, or else behind the last of its word breaks that is not quoted.
_varnholt_odbcadmin_read() {
    local place character next outside=0
    value= quote= kept=0
    for ((place = 0; place < ${#1}; ++place)); do
        character=${1:place:1} next=${1:place + 1:1}
        if [[ $character == \\ && $quote != \' && (-z $quote || $next == [\"\$\`\\]) ]]; then
            value+=$next
            ((++place))
        elif [[ -n $quote && $character == "$quote" ]]; then
            quote= kept=$outside
        elif [[ -n $quote ]]; then
            value+=$character
        elif [[ $character == [\'\"] ]]; then
            quote=$character outside=$kept kept=${#value}
        elif [[ $character == [$' \t\n'] ]]; then
            value= kept=0
        else
            value+=$character
            [[ $COMP_WORDBREAKS != *"$character"* ]] || kept=${#value}
        fi
    done
}

_varnholt_odbcadmin() {
    local command=${COMP_WORDS[0]##*/} kind=-s options='--json --timeout --help --version' own=()
    local value quote kept name names rest
    if [[ $command == odbcadmin-register ]]; then
        kind=-d options='--remove --help --version' own=('Varnholt SQLite' 'Varnholt PostgreSQL' 'Varnholt FreeTDS')
    fi
    COMPREPLY=()
    _varnholt_odbcadmin_read "${COMP_LINE:0:COMP_POINT}"
    if [[ $value == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$value")
        return
    fi
    [[ ${COMP_WORDS[COMP_CWORD - 1]} == --timeout ]] && return
    mapfile -t names < <({ odbcinst -q "$kind" 2>/dev/null | sed 's/^\[\(.*\)\]$/\1/'; printf '%s\n' "${own[@]}"; } |
        grep . | sort -u)
    for name in "${names[@]}"; do
        [[ $name == "$value"* ]] || continue
        rest=${name:kept}
        case $quote in
            \') COMPREPLY+=("'${rest//\'/"'\\''"}'") ;;
            \") COMPREPLY+=("\"$(sed 's/[\\"$`]/\\&/g' <<<"$rest")\"") ;;
            *) COMPREPLY+=("${rest:+$(printf %q "$rest")}") ;;
        esac
    done
}
complete -F _varnholt_odbcadmin odbcadmin-doctor odbcadmin-register
