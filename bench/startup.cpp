// The time from the start of the program to its mapped, filled window, on an X server of its own. Its pages are filled
// before the window is mapped, so the mapped window is the filled one.
#include <benchmark/benchmark.h>

#include "tests/support/x_display.h"
// Before this line nothing of X11.

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "tests/support/odbc_files.h"

namespace {

constexpr const char* kTitle = "Varnholt ODBC Administrator";

// One start: the seconds until a window with the title can be seen.
std::optional<double> secondsToWindow(XPerson& person, const std::string& program) {
    const auto begin = std::chrono::steady_clock::now();
    Program running({program});
    while (person.windows(kTitle, false).empty()) {
        const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - begin;
        if (waited.count() > 60) {
            return std::nullopt;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    return seconds.count();
}

void measure(benchmark::State& state, const std::string& program) {
    static const XServer server;
    XPerson person;
    for (auto step : state) {
        const std::optional<double> seconds = secondsToWindow(person, program);
        while (!person.windows(kTitle, false).empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        if (!seconds) {
            state.SkipWithError("The window did not come.");
            return;
        }
        state.SetIterationTime(*seconds);
    }
}

void bareNotebook(benchmark::State& state) {
    measure(state, VH_BENCH_BARE_NOTEBOOK);
}

// range(0): drivers, each with a library of its own name, all of them our SQLite driver; range(1): data sources of five
// keys each.
void administrator(benchmark::State& state) {
    const OdbcFiles files;
    std::string drivers;
    for (int i = 0; i < state.range(0); ++i) {
        const std::string library = files.path("driver" + std::to_string(i) + ".so");
        std::filesystem::create_symlink(VH_BENCH_STAGE "/lib/vhsqlite23.so", library);
        drivers += "[Driver " + std::to_string(i) + "]\nDriver=" + library + "\n";
    }
    std::string list = "[ODBC Data Sources]\n";
    std::string sections;
    for (int i = 0; i < state.range(1); ++i) {
        const std::string name = "data source " + std::to_string(i);
        list += name + "=Driver 0\n";
        sections += "[" + name + "]\nDriver=Driver 0\nDescription=d\nDatabase=/tmp/" + name +
                    ".db\nTimeout=100\nJournalMode=WAL\n";
    }
    files.write(OdbcFiles::kDrivers, drivers);
    files.write(OdbcFiles::kUser, list + sections);
    measure(state, VH_BENCH_STAGE "/bin/odbcadmin");
}

}  // namespace

BENCHMARK(bareNotebook)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(administrator)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->ArgNames({"drivers", "sources"})
    ->Args({1, 10})
    ->Args({20, 10})
    ->Args({100, 10})
    ->Args({1, 100})
    ->Args({1, 1000});
BENCHMARK_MAIN();
