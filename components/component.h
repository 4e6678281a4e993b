// What each component of the product defines about itself; identification.cpp, linked into every component, tells it to
// whoever asks.
#pragma once

#include <string>

// The version that all components of one delivery share.
inline constexpr const char* kProductVersion = "05.30.0002";

// The version text of this component. It is asked once.
std::string componentVersion();
