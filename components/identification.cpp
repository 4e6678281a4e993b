// The functions that the administrator looks up by name in each library that it lists. The texts belong to the
// component and stay valid as long as it is loaded; the functions may be called from any thread.
#include <string>

#include "components/component.h"

namespace {

const std::string& version() {
    static const std::string text = componentVersion();
    return text;
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) const char* getFileVersionString() {
    return version().c_str();
}

__attribute__((visibility("default"))) const char16_t* getFileVersionStringW() {
    // Version texts are ASCII, so each byte is a unit.
    static const std::u16string wide(version().begin(), version().end());
    return wide.c_str();
}

__attribute__((visibility("default"))) const char* getCompanyNameString() {
    return kCompany;
}
}
