// Files that are read and written at once.
#pragma once

#include <string>

// The whole file; empty when it can't be read, is none, or has more than 16 MB.
std::string readFile(const std::string& path);

// Writes the whole file or nothing; not across a power failure. False when it could not.
bool writeFile(const std::string& path, const std::string& text);
