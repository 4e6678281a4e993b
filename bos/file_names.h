// File names: how the configuration files are found, paths put together and taken apart, and temporary names.
// docs/ini-format.md tells the rules of the configuration files. All path buffers hold kPathSize bytes. A function that
// returns 1 leaves the reason on the calling thread's current error list. Everything here may be called from any thread
// as long as none changes the environment.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "bos/path_size.h"

// What became of a file name: the path to open, and the system error number when it can't be used (0 otherwise).
struct ResolvedName {
    std::string path;
    int systemError = 0;
};

// With `recogniseNames` a configuration file's name leads to its path; with `homeRelative` every other name is placed
// in the home directory. Only the files of the ODBC environment must exist (ENOENT).
[[nodiscard]] ResolvedName resolveFileName(const std::string& name, bool recogniseNames, bool homeRelative);

// True for "ODBCINST.INI" and ".odbcinst.ini" in any case, and for what the variable "ODBCINST" holds.
[[nodiscard]] bool isDriverFileName(std::string_view name);

// A name that no file has, in the directory that tempnam (POSIX) would take: "TMPDIR", else "KV_TMPDIR", else /tmp.
// Another process may take the name first: create the file exclusively.
[[nodiscard]] std::string temporaryName();

// Prefixes `name` in place with a directory and "/": "HOME", else the variable "KV", else the current directory.
// Returns 0, or 1 with the name unchanged when the result does not fit.
[[nodiscard]] int boshpath(char* name);

// Joins `directory` (null or "" for none) and `name` in `path`, with one "/" between them; an absolute name stands
// alone. Returns 0, or 1 with an empty path when the result does not fit.
[[nodiscard]] int bosfpath(char* path, const char* directory, const char* name);

// bosfpath, then adds ".", `extension` (null or "" for none, a leading "." is its own) when the file name has none.
[[nodiscard]] int bospath(char* path, const char* directory, const char* name, const char* extension);

// Splits `path` at its last "/": the directory without it ("/" for the root, "" for none) and the name behind it.
// Either buffer may be null. Returns 0, or 1 with empty buffers when a part does not fit.
[[nodiscard]] int bosParseName(const char* path, char* directory, char* name);
