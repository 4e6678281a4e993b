// What every component of the product says about itself: the functions that the administrator looks up by name in each
// library that it lists. Linked into each component; they may be called from any thread.
#pragma once

#include <string>

// The version that all components of one delivery share.
inline constexpr const char* kProductVersion = "05.30.0002";

// The version text of this component. Each component defines its own; it is asked once.
std::string componentVersion();

extern "C" {
// Texts that belong to the component and stay valid as long as it is loaded.
__attribute__((visibility("default"))) const char* getFileVersionString();
__attribute__((visibility("default"))) const char16_t* getFileVersionStringW();
__attribute__((visibility("default"))) const char* getCompanyNameString();
}
