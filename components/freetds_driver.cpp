// The product's driver for Microsoft SQL Server and Sybase: a thin library that depends on Debian's FreeTDS driver
// (libtdsodbc.so), which describes its settings itself, and adds the identification functions.
#include "components/component.h"

std::string componentVersion() {
    return kProductVersion;
}
