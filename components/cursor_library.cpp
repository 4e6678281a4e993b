// Identifies unixODBC's cursor library, which tells no version at run time: it is the one that was installed when this
// was built.
#include "components/component.h"

std::string componentVersion() {
    return CURSOR_LIBRARY_VERSION;
}
