#!/bin/bash
# Starts the Varnholt ODBC Administrator from the tree that this script stands in. What the environment says already wins.
here=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd)

: "${VH_INSTALLDIR:=$here}"
: "${KVLIB:=$here/lib}"
: "${ODBCINST:=$here/etc/odbcinst.ini}"
export VH_INSTALLDIR KVLIB ODBCINST

# The last place where help looks for a browser.
PATH=$PATH:$here/libexec/browser

# X resources are looked up under the program's name, so it must be "odbcadmin" wherever it stands.
exec -a odbcadmin "$here/libexec/odbcadmin" "$@"
