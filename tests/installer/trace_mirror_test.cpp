#include "installer/trace_mirror.h"

#include <gtest/gtest.h>

#include "tests/support/odbc_files.h"

using namespace std::string_literals;

namespace {

TEST(TraceMirrorTest, TextsAreAsBeforeWhenTracingIsSwitchedOff) {
    const OdbcFiles files;
    for (const char* before : {"", "# mine", "[Other]\nX=1", "[Other]\r\nX=1\r\n", "[ODBC]", "[odbc]\n",
                               "[ODBC]\ntrace = 0 \nPooling=No\nTraceFile=/mine\nTRACE=1\n\n[ODBC]\nTrace=1\n",
                               "  [ODBC]\n\tTrace=1", "[A]\n[ODBC]\n[B]\nTrace=0\n"}) {
        const std::string on = installer::withTracing(before, "/t.log", false);
        EXPECT_EQ(installer::withTracing(on, "/t.log", false), on) << before;
        bool isNew = true;
        EXPECT_EQ(installer::withoutTracing(on, isNew), before) << on;
        EXPECT_FALSE(isNew);
        // What the driver manager makes of it: the first section and the first key of a name count.
        files.write(".odbcinst.ini", on);
        const installer::TraceState state = installer::traceState();
        EXPECT_EQ(std::to_string(state.isOn) + state.file, "1/t.log") << on;
        // What others add while it is on stays.
        const auto withMore = [](const std::string& text) {
            return text + (text.empty() || text.ends_with('\n') ? "" : "\n") + "[New]\nA=1\n";
        };
        EXPECT_EQ(installer::withoutTracing(withMore(on), isNew), withMore(before));
    }
}

}  // namespace
