// INI files of many data sources: our cache, the installer library, and a bare search for "[" in the same text.
#include <benchmark/benchmark.h>
#include <odbcinst.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "admin/exchange_sort.h"
#include "installer/configuration_change.h"
#include "installer/configuration_reader.h"
#include "kvini/install_dir.h"
#include "kvini/profile.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr unsigned long kBufferSize = 256;

// range(0) data sources of five keys each, as the administrator writes them; the last one is asked for.
class IniBench : public benchmark::Fixture {
public:
    using benchmark::Fixture::SetUp;
    void SetUp(benchmark::State& state) override {
        std::string list = "[ODBC Data Sources]\n";
        std::string sections;
        for (int i = 1; i <= state.range(0); ++i) {
            last = "data source " + std::to_string(i);
            list += last + "=Driver 0\n";
            sections += "\n[" + last + "]\nDriver=Driver 0\nDescription=d\nDatabase=/tmp/" + last +
                        ".db\nTimeout=100\nJournalMode=WAL\n";
        }
        text = list + sections;
        // Without a catalog every operation looks for it.
        bosSetInstallDir(VH_BENCH_STAGE);
        file = folder.write("odbc.ini", text);
    }

    std::string last;
    std::string text;
    std::string file;

private:
    TemporaryFolder folder;
};

BENCHMARK_DEFINE_F(IniBench, lookUp)(benchmark::State& state) {
    char buffer[kBufferSize];
    for (auto step : state) {
        if (kvGetProfileString(last.c_str(), "JournalMode", "", buffer, sizeof buffer, file.c_str()) != 3) {
            state.SkipWithError("The value was not found.");
            return;
        }
    }
}

BENCHMARK_DEFINE_F(IniBench, floor)(benchmark::State& state) {
    for (auto step : state) {
        int brackets = 0;
        const char* at = text.data();
        const char* const end = at + text.size();
        while ((at = static_cast<const char*>(std::memchr(at, '[', static_cast<std::size_t>(end - at)))) != nullptr) {
            ++brackets;
            ++at;
        }
        benchmark::DoNotOptimize(brackets);
    }
}

// Keys that are not there, each another, since the library keeps the answers to the last questions.
BENCHMARK_DEFINE_F(IniBench, installerLibrary)(benchmark::State& state) {
    char buffer[kBufferSize];
    int number = 0;
    for (auto step : state) {
        const std::string key = "key " + std::to_string(++number);
        if (SQLGetPrivateProfileString(last.c_str(), key.c_str(), "none", buffer, sizeof buffer, file.c_str()) != 4) {
            state.SkipWithError("The file was not read.");
            return;
        }
    }
}

// All data sources: the keys of the section that lists them.
BENCHMARK_DEFINE_F(IniBench, listKeys)(benchmark::State& state) {
    std::string buffer(text.size(), '\0');
    for (auto step : state) {
        benchmark::DoNotOptimize(
            kvGetPrivateProfileSection("ODBC Data Sources", buffer.data(), buffer.size(), file.c_str()));
    }
}

BENCHMARK_DEFINE_F(IniBench, update)(benchmark::State& state) {
    int number = 0;
    for (auto step : state) {
        if (kvWriteProfileString(last.c_str(), "Timeout", std::to_string(++number).c_str(), file.c_str()) != 1) {
            state.SkipWithError("The value was not written.");
            return;
        }
    }
}

// Writes settings of the last data source, range(1) of them, as the setup library does.
template <typename Write>
void writeSettings(benchmark::State& state, const std::string& file, Write write) {
    setenv("ODBCINI", file.c_str(), 1);
    SQLSetConfigMode(ODBC_USER_DSN);
    int number = 0;
    for (auto step : state) {
        if (!write(std::to_string(++number))) {
            state.SkipWithError("The settings were not written.");
            return;
        }
    }
}

BENCHMARK_DEFINE_F(IniBench, libraryWrite)(benchmark::State& state) {
    writeSettings(state, file, [&](const std::string& value) {
        bool done = true;
        for (int key = 0; key < state.range(1); ++key) {
            done = SQLWritePrivateProfileString(last.c_str(), ("Key" + std::to_string(key)).c_str(), value.c_str(),
                                                ".odbc.ini") != 0 &&
                   done;
        }
        return done;
    });
}

BENCHMARK_DEFINE_F(IniBench, carefulChange)(benchmark::State& state) {
    writeSettings(state, file, [&](const std::string& value) {
        installer::ConfigurationChange change;
        for (int key = 0; key < state.range(1); ++key) {
            change.write(last, "Key" + std::to_string(key), value.c_str());
        }
        return !change.commit();
    });
}

// What the User DSN page reads: the names, and for each of them its driver.
BENCHMARK_DEFINE_F(IniBench, namesAndDrivers)(benchmark::State& state) {
    setenv("ODBCINI", file.c_str(), 1);
    SQLSetConfigMode(ODBC_USER_DSN);
    for (auto step : state) {
        installer::ConfigurationReader reader(installer::kDataSourceFile);
        std::size_t found = 0;
        for (const std::string& name :
             reader.listKeys(installer::kDataSourceList, installer::Growth::kByKilobyte).names) {
            found += reader.readValue(installer::kDataSourceList, name).empty() ? 0 : 1;
        }
        if (found != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("The list was not read.");
            return;
        }
    }
}

BENCHMARK_DEFINE_F(IniBench, sortNames)(benchmark::State& state) {
    std::vector<std::string> names;
    for (int i = 0; i < state.range(0); ++i) {
        names.push_back("data source " + std::to_string(i));
    }
    std::vector<char*> pointers;
    std::transform(names.begin(), names.end(), std::back_inserter(pointers),
                   [](std::string& name) { return name.data(); });
    std::shuffle(pointers.begin(), pointers.end(), std::minstd_rand(1));
    for (auto step : state) {
        std::vector<char*> sorted = pointers;
        exchangeSort(sorted);
        benchmark::DoNotOptimize(sorted.data());
    }
}

// range(0) settings of one data source: reading them, changing one of them, and a new name for it.
class ManySettings : public benchmark::Fixture {
public:
    using benchmark::Fixture::SetUp;
    void SetUp(benchmark::State& state) override {
        std::string text = "[ODBC Data Sources]\nold=D\n\n[old]\n";
        for (int i = 0; i < state.range(0); ++i) {
            text += "Key" + std::to_string(i) + "=value " + std::to_string(i) + "\n";
        }
        setenv("ODBCINI", folder.write("odbc.ini", text).c_str(), 1);
        SQLSetConfigMode(ODBC_USER_DSN);
    }
    static std::vector<installer::Attribute> read(const char* name) {
        return installer::readSection(name, installer::kDataSourceFile);
    }

private:
    TemporaryFolder folder;
};

BENCHMARK_DEFINE_F(ManySettings, readAll)(benchmark::State& state) {
    for (auto step : state) {
        if (read("old").size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("The settings were not read.");
            return;
        }
    }
}

BENCHMARK_DEFINE_F(ManySettings, changeOne)(benchmark::State& state) {
    int number = 0;
    for (auto step : state) {
        installer::ConfigurationChange change;
        change.write("old", "Key7", std::to_string(++number).c_str());
        if (change.commit()) {
            state.SkipWithError("The setting was not written.");
            return;
        }
    }
}

BENCHMARK_DEFINE_F(ManySettings, rename)(benchmark::State& state) {
    std::string from = "old";
    std::string to = "new";
    const std::vector<installer::Attribute> settings = read("old");
    for (auto step : state) {
        installer::ConfigurationChange change;
        change.removeDataSource(from);
        for (const auto& [key, value] : settings) {
            change.write(to, key, value.c_str());
        }
        change.write(installer::kDataSourceList, to, "D");
        if (change.commit()) {
            state.SkipWithError("The settings were not written.");
            return;
        }
        std::swap(from, to);
    }
}

void changes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"sources", "keys"})->ArgsProduct({{10, 1000}, {1, 5}})->Unit(benchmark::kMicrosecond);
    benchmark->UseRealTime();
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("sources")->Arg(10)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK_REGISTER_F(IniBench, lookUp)->Apply(sizes);
BENCHMARK_REGISTER_F(IniBench, floor)->Apply(sizes);
BENCHMARK_REGISTER_F(IniBench, installerLibrary)->Apply(sizes);
BENCHMARK_REGISTER_F(IniBench, listKeys)->Apply(sizes);
// The disk takes its part of the time.
BENCHMARK_REGISTER_F(IniBench, update)->Apply(sizes)->UseRealTime();
BENCHMARK_REGISTER_F(IniBench, namesAndDrivers)->Apply(sizes);
BENCHMARK_REGISTER_F(IniBench, sortNames)->Apply(sizes);
BENCHMARK_REGISTER_F(ManySettings, readAll)->Arg(3000)->Unit(benchmark::kMicrosecond);
BENCHMARK_REGISTER_F(ManySettings, changeOne)->Arg(3000)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_REGISTER_F(ManySettings, rename)->Arg(3000)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_REGISTER_F(IniBench, libraryWrite)->Apply(changes);
BENCHMARK_REGISTER_F(IniBench, carefulChange)->Apply(changes);

}  // namespace

BENCHMARK_MAIN();
