// Identifies ICU, the character conversion library, by the version that is loaded (u_getVersion).
#include <unicode/uversion.h>

#include "components/component.h"

std::string componentVersion() {
    UVersionInfo version;
    char text[U_MAX_VERSION_STRING_LENGTH];
    u_getVersion(version);
    u_versionToString(version, text);
    return text;
}
