// What each component of the product defines about itself; identification.cpp, linked into every component, tells it to
// whoever asks.
#pragma once

#include <string>

// The one place of the version that all components of a delivery share, and of the administrator's build.
inline constexpr const char* kProductVersion = "05.30.0002";
inline constexpr const char* kAdministratorBuild = " (B0023, U0021)";

inline constexpr const char* kCompany = "Varnholt Technologies";

// The version text of this component. It is asked once.
std::string componentVersion();
