#include "components/identification.h"

namespace {

const std::string& version() {
    static const std::string text = componentVersion();
    return text;
}

}  // namespace

const char* getFileVersionString() {
    return version().c_str();
}

const char16_t* getFileVersionStringW() {
    // Version texts are ASCII, so each byte is a unit.
    static const std::u16string wide(version().begin(), version().end());
    return wide.c_str();
}

const char* getCompanyNameString() {
    return "Varnholt Technologies";
}
