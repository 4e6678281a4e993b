// Call tracing as unixODBC does it. Its driver manager asks other files than those that hold the settings of the page:
// the system's odbcinst.ini, and when that has no section [ODBC], ~/.odbcinst.ini (docs/installer-library.md). The
// installer library can't write the second, so this does.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "installer/configuration_change.h"

namespace installer {

// The longest path of a trace file, in bytes, that the driver manager takes; it cuts a longer one.
inline constexpr std::size_t kLongestTracePath = 62;

// What it takes for a trace file when none is named.
inline constexpr const char* kDefaultTraceFile = "/tmp/sql.log";

// Whether it takes this value of "Trace" for on.
[[nodiscard]] bool isTraceOn(std::string_view value);
// The errno with which a trace file can't be written or made; 0 when it can.
[[nodiscard]] int traceWritingError(const std::string& path);

// What programs that start now will do.
struct TraceState {
    bool isOn = false;
    std::string file{};    // The trace file, when it is on.
    std::string source{};  // The file that decides so; empty when none says anything.
};
[[nodiscard]] TraceState traceState();

// Why the driver manager would not trace to a file, if so.
struct TraceObstacle {
    enum Reason { kSystemDecides, kNoPath, kRelativePath, kPathTooLong, kNotWritable } reason;
    std::string file{};  // The system's file that decides, or the trace file.
    int error = 0;       // With kNotWritable, an errno.
};
[[nodiscard]] std::optional<TraceObstacle> findTraceObstacle(const std::string& traceFile);

// Lets the driver manager trace to `traceFile`, or leaves it to what the person's file said before: then that is byte
// for byte as it was, unless others changed it.
[[nodiscard]] std::optional<ChangeFailure> mirrorTracing(const std::optional<std::string>& traceFile);

// The text of the person's file with tracing to `traceFile` in it; `isNew` for a file that is not there.
[[nodiscard]] std::string withTracing(std::string_view text, const std::string& traceFile, bool isNew);
// What the text was before that; the same text when nothing of ours is in it. `isNew` tells whether there was no file.
[[nodiscard]] std::string withoutTracing(std::string_view text, bool& isNew);

}  // namespace installer
