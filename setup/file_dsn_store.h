// A file data source as it is stored: the one section of a file of its own (docs/file-dsn.md). GUI thread only: it
// works through the installer library.
#pragma once

#include <optional>
#include <string>

#include "setup/user_dsn_store.h"

// Nothing when `path` may name a file data source: absolute, and of the length that the installer library takes.
[[nodiscard]] std::optional<SetupFailure> checkFileName(const std::string& path);

[[nodiscard]] bool fileExists(const std::string& path);

// All keys of the file's section, "Driver" included, each once; none when there is no such file.
[[nodiscard]] Settings readFileDataSource(const std::string& path);

// Stores a change, after checking it; `change.name` is the path, and `change.storedName` the same when the file is to
// keep what the change does not name. `change.stored` is not used: the file is read once more. It keeps its permission,
// or becomes readable for its owner alone when it holds a password. Returns what went wrong.
[[nodiscard]] std::optional<SetupFailure> saveFileDataSource(const DataSourceChange& change);
