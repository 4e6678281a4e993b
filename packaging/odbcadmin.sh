#!/bin/bash
# Starts the program that it is named after, of the Varnholt ODBC Administrator, from the tree that this script stands in.
# What the environment says already wins.
here=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd)
program=odbcadmin

# Where the driver manager finds the drivers that are named without a directory: beside itself.
modules() {
    local libraries
    libraries=$(LD_TRACE_LOADED_OBJECTS=1 "$here/libexec/$program") 2>/dev/null
    [[ $libraries =~ [[:space:]](/[^[:space:]]*)/libodbc\.so ]] && echo ":${BASH_REMATCH[1]}/odbc"
}

: "${VH_INSTALLDIR:=$here}"
: "${KVLIB:=$here/lib:$here/lib/setup$(modules)}"
: "${ODBCINST:=$here/etc/odbcinst.ini}"
export VH_INSTALLDIR KVLIB ODBCINST

# The last place where help looks for a browser.
PATH=$PATH:$here/libexec/browser

# X resources are looked up under the program's name, so it must be "odbcadmin" wherever it stands.
exec -a odbcadmin "$here/libexec/$program" "$@"
