// What each component of the product defines about itself; identification.cpp, linked into every component, tells it to
// whoever asks.
#pragma once

#include <string>

// The one place of the version: the one that all components of a delivery share, and the administrator's with its
// build.
inline constexpr const char* kProductVersion = "05.30.0002";
inline constexpr const char* kAdministratorVersion = "05.30.0002 (B0023, U0021)";

inline constexpr const char* kCompany = "Varnholt Technologies";

// The version text of this component. It is asked once.
std::string componentVersion();
