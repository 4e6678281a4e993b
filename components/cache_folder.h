// What is kept for this person between two runs: files that may go at any time.
#pragma once

#include <string>

// An environment variable's value, or the other text where it has none.
std::string valueOf(const char* name, const std::string& otherwise);

// The path without its last parts.
std::string above(const std::string& path, int parts = 1);

// Our folder for it (XDG Base Directory Specification), made where it is missing. Empty where there can be none, and
// where it would have to be made in the folder of another person: root works in the homes of others.
std::string cacheFolder();

// Writes the whole file or nothing. False when it could not.
bool writeWhole(const std::string& path, const std::string& text);
