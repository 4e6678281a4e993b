// Where things are: variables of the environment, paths, and the folder of what is kept between two runs.
#pragma once

#include <string>

// A variable's value, or the other text where it has none.
std::string environmentOr(const char* name, const std::string& otherwise);

// The path without its last parts.
std::string parentFolder(const std::string& path, int parts = 1);

// Our folder for files that may go at any time, below XDG_CACHE_HOME or ~/.cache, made where it is missing. Empty where
// there can be none, where it is another person's, and for root where it would be made in the folder of one: root works
// in the homes of others.
std::string cacheFolder();
