# Completion for odbcadmin-doctor and odbcadmin-register: options, and the names that odbcinst lists.
_varnholt_odbcadmin() {
    local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[0]##*/} kind=-s options='--json --timeout --help --version' names
    if [[ $command == odbcadmin-register ]]; then
        kind=-d options='--remove --help'
    fi
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        return
    fi
    [[ ${COMP_WORDS[COMP_CWORD - 1]} == --timeout ]] && return
    names=$(odbcinst -q "$kind" 2>/dev/null | sed 's/^\[\(.*\)\]$/\1/')
    if [[ $command == odbcadmin-register ]]; then
        names+=$'\nVarnholt SQLite\nVarnholt PostgreSQL\nVarnholt FreeTDS'
    fi
    local IFS=$'\n' name
    COMPREPLY=()
    for name in $(sort -u <<<"$names"); do
        # A word that begins with a quote is completed as it stands, any other with its blanks hidden from the shell.
        if [[ $word == [\'\"]* ]]; then
            [[ $name == "${word:1}"* ]] && COMPREPLY+=("${word:0:1}$name${word:0:1}")
        elif [[ $(printf %q "$name") == "$word"* ]]; then
            COMPREPLY+=("$(printf %q "$name")")
        fi
    done
}
complete -F _varnholt_odbcadmin odbcadmin-doctor odbcadmin-register
