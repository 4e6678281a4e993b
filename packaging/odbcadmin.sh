#!/bin/bash
# Starts the Varnholt ODBC Administrator from the tree that this script stands in, or, under the name of one of its commands,
# that. What the environment says already wins.
here=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd)
program=${BASH_SOURCE[0]##*/}
[[ $program == odbcadmin-* ]] || program=odbcadmin

# Where the driver manager finds the drivers that are named without a directory: beside itself.
modules() {
    local libraries
    libraries=$(LD_TRACE_LOADED_OBJECTS=1 "$here/libexec/odbcadmin")
    [[ $libraries =~ [[:space:]](/[^[:space:]]*)/libodbc\.so ]] && echo ":${BASH_REMATCH[1]}/odbc"
}

: "${VH_INSTALLDIR:=$here}"
: "${KVLIB:=$here/lib:$here/lib/setup$(modules)}"
# The help of the language whose texts are shown; the names of locales are those of folders.
own=$here/etc/odbcinst.ini
locale=${LC_MESSAGES:-C}
[[ $locale == C ]] && locale=${LANG:-C}
[[ -f $here/etc/$locale/odbcinst.ini ]] && own=$here/etc/$locale/odbcinst.ini
: "${ODBCINST:=$own}"
export VH_INSTALLDIR KVLIB ODBCINST

# The tree may have been moved: its file, which says where it stands, is then written anew, in the tree or for this person.
text=$(<"$own")
if [[ $text$'\n' != *"InstallDir=$here"$'\n'* && $text =~ InstallDir=([^$'\n']*) && $ODBCINST == "$own" ]]; then
    [[ -w ${own%/*} ]] || ODBCINST=${XDG_CACHE_HOME:-$HOME/.cache}/varnholt-odbcadmin/odbcinst.ini
    mkdir -p "${ODBCINST%/*}" && printf '%s\n' "${text//"=${BASH_REMATCH[1]}"/"=$here"}" >"$ODBCINST.$$" &&
        mv -f "$ODBCINST.$$" "$ODBCINST"
fi

# The last place where help looks for a browser.
PATH=$PATH:$here/libexec/browser

# X resources are looked up under the program's name, so it must be "odbcadmin" wherever it stands.
exec -a "$program" "$here/libexec/$program" "$@"
