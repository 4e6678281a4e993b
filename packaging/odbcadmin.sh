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
: "${ODBCINST:=$here/etc/odbcinst.ini}"
export VH_INSTALLDIR KVLIB ODBCINST

# The last place where help looks for a browser.
PATH=$PATH:$here/libexec/browser

# X resources are looked up under the program's name, so it must be "odbcadmin" wherever it stands.
exec -a "$program" "$here/libexec/$program" "$@"
