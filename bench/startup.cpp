// What a start takes: time, waits for the X server and memory, beside two windows of Motif alone. All rows are measured
// in turns and in one run, so that what else the machine does is the same for all; printed are the medians, and how
// many times the anchor of its goal a row takes.
//
//     startup_bench [REPETITIONS [MILLISECONDS]]
//
// The milliseconds are what the slow line adds each way.
#include "tests/support/x_display.h"
// Before this line nothing of X11.

#include <X11/keysym.h>

#include <poll.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/x_proxy.h"
#include "tests/support/odbc_files.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kPatience(60000);
// A program that asks for nothing as long as this has done what it does at first.
constexpr int kQuietTime = 300;

double millisecondsBetween(Clock::time_point begin, Clock::time_point end) {
    return std::chrono::duration<double, std::milli>(end - begin).count();
}

// Sees the windows that the window manager puts up.
class Watcher {
public:
    Watcher() : display_(XOpenDisplay(nullptr)) {
        XSelectInput(display_, DefaultRootWindow(display_), SubstructureNotifyMask);
        XSync(display_, True);
    }
    ~Watcher() { XCloseDisplay(display_); }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // Waits until one comes up, or goes; false when none does.
    bool sees(int type) {
        const Clock::time_point end = Clock::now() + kPatience;
        while (Clock::now() < end) {
            while (XPending(display_) > 0) {
                XEvent event;
                XNextEvent(display_, &event);
                const bool isMenu = event.type == MapNotify && event.xmap.override_redirect != 0;
                if (event.type == type && !isMenu) {
                    return true;
                }
            }
            pollfd connection{ConnectionNumber(display_), POLLIN, 0};
            poll(&connection, 1, static_cast<int>(kPatience.count()));
        }
        return false;
    }

private:
    Display* display_;
};

// The most that a process has had in memory, in MB.
double peakMemory(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:")) {
            return std::atof(line.c_str() + line.find(':') + 1) / 1024;
        }
    }
    return 0;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

struct Row {
    std::string name;
    std::vector<std::string> command;
    // Drivers, each with a library of its own, and data sources of five keys each.
    int drivers = 0;
    int sources = 0;
    std::optional<milliseconds> delay{};  // Behind a proxy when there is one.
    bool isCold = false;                  // No library has been asked before.

    std::vector<double> times{};  // Until the window is there, over the slow line until it is drawn.
    std::vector<double> memory{};
    std::vector<double> waits{};
    std::vector<double> allWaits{};
};

// The libraries of drivers, copies of our SQLite driver, and what the administrator keeps from one start to the next.
class Installation {
public:
    static constexpr int kDrivers = 100;

    Installation() {
        std::filesystem::create_directory(folder_.path("lib"));
        for (int i = 0; i < kDrivers; ++i) {
            std::filesystem::copy_file(VH_BENCH_STAGE "/lib/vhsqlite23.so", library(i));
        }
        // Of libraries that are newer no answer is kept (components/kept_answers.h).
        std::this_thread::sleep_for(milliseconds(3000));
    }
    std::string cache() const { return folder_.path("cache"); }
    std::string library(int number) const { return folder_.path("lib/driver" + std::to_string(number) + ".so"); }
    void forgetAnswers() const { std::filesystem::remove(cache() + "/varnholt-odbcadmin/components"); }

private:
    TemporaryFolder folder_;
};

const Installation& installation() {
    static const Installation only;
    return only;
}

void writeConfiguration(const OdbcFiles& files, const Row& row) {
    if (row.isCold) {
        installation().forgetAnswers();
    }
    std::string drivers;
    for (int i = 0; i < row.drivers; ++i) {
        drivers.append("[Driver ").append(std::to_string(i)).append("]\nDriver=").append(installation().library(i));
        drivers += "\nSetup=" VH_BENCH_STAGE "/lib/vhsetup23.so\n";
    }
    std::string list = "[ODBC Data Sources]\n";
    std::string sections;
    for (int i = 0; i < row.sources; ++i) {
        const std::string name = "data source " + std::to_string(i);
        list += name + "=Driver 0\n";
        sections += "[" + name + "]\nDriver=Driver 0\nDescription=d\nDatabase=/tmp/" + name +
                    ".db\nTimeout=100\nJournalMode=WAL\n";
    }
    files.write(OdbcFiles::kDrivers, drivers);
    files.write(OdbcFiles::kUser, list + sections);
}

// Waits until the program behind the proxy has done what it does.
void waitForQuiet(const XProxy& proxy) {
    do {
        std::this_thread::sleep_for(milliseconds(10));
    } while (proxy.quietTime() < kQuietTime);
}

// One start; false when no window comes.
bool measure(Row& row) {
    const OdbcFiles files;
    writeConfiguration(files, row);
    Watcher watcher;
    ScopedEnvironment environment{{"XDG_CACHE_HOME", installation().cache()}};
    std::unique_ptr<XProxy> proxy;
    if (row.delay) {
        proxy = std::make_unique<XProxy>(std::getenv("DISPLAY"), *row.delay);
        environment.set("DISPLAY", proxy->display());
    }
    const Clock::time_point begin = Clock::now();
    auto program = std::make_unique<Program>(row.command);
    if (!watcher.sees(MapNotify)) {
        return false;
    }
    Clock::time_point end = Clock::now();
    if (proxy) {
        waitForQuiet(*proxy);
        end = proxy->lastRequest();
        row.waits.push_back(proxy->waitsUntilWindow());
        row.allWaits.push_back(proxy->waits());
    } else {
        std::this_thread::sleep_for(milliseconds(kQuietTime));
    }
    row.times.push_back(millisecondsBetween(begin, end));
    row.memory.push_back(peakMemory(program->process()));
    program.reset();
    return watcher.sees(UnmapNotify) || watcher.sees(DestroyNotify);
}

// A person before an administrator, whose requests pass through a proxy.
class Session {
public:
    explicit Session(const Row& row) {
        writeConfiguration(files_, row);
        environment_.set("DISPLAY", proxy_.display());
        environment_.set("XDG_CACHE_HOME", installation().cache());
        program_ = std::make_unique<Program>(row.command);
        isUp_ = watcher_.sees(MapNotify);
        if (isUp_) {
            waitForQuiet(proxy_);
        }
    }

    bool isUp() const { return isUp_; }
    XPerson& person() { return person_; }
    std::string userFile() const { return files_.read(OdbcFiles::kUser); }

    // What keys do, in milliseconds from there, or from the first exposure that they cause, to the last request; 0 when
    // nothing comes.
    double timeOf(bool fromExposure, const std::function<void()>& pressKeys) {
        proxy_.watch(fromExposure);
        pressKeys();
        const Clock::time_point end = Clock::now() + milliseconds(5000);
        while (proxy_.drawingTime() == 0 && Clock::now() < end) {
            std::this_thread::sleep_for(milliseconds(1));
        }
        waitForQuiet(proxy_);
        return proxy_.drawingTime();
    }

private:
    const OdbcFiles files_;
    XPerson person_;
    Watcher watcher_;
    ScopedEnvironment environment_{};
    XProxy proxy_{std::getenv("DISPLAY"), milliseconds(0)};
    std::unique_ptr<Program> program_;
    bool isUp_ = false;
};

// What is done to a list of data sources, by keys: from the one that confirms it to the page that is right again.
struct Change {
    const char* name;
    KeySym letter;             // Of the page's button.
    std::vector<Input> steps;  // What leads from there to the box that is confirmed.
    KeySym confirmed;
    KeySym modifier = NoSymbol;
    std::vector<double> times{};
};

// Adds, configures and removes a data source among those of an administrator. False when it did not.
bool measureChanges(const Row& row, std::vector<Change>& changes) {
    Session session(row);
    if (!session.isUp()) {
        return false;
    }
    XPerson& person = session.person();
    for (Change& change : changes) {
        session.timeOf(false, [&] { person.key(change.letter, XK_Alt_L); });
        for (const Input& step : change.steps) {
            session.timeOf(false, [&] { person.enter({step}); });
        }
        change.times.push_back(session.timeOf(false, [&] { person.key(change.confirmed, change.modifier); }));
    }
    const std::string after = session.userFile();
    const auto hasTime = [](const Change& change) { return change.times.back() > 0; };
    return after.find("[data source 1a]") != std::string::npos && after.find("[data source 0]") == std::string::npos &&
           std::all_of(changes.begin(), changes.end(), hasTime);
}

// Turns the pages of an administrator with so many data sources by its keys: for each, what it takes from the exposure
// to the drawn page.
std::vector<double> turnPages(const Row& row, int pages) {
    Session session(row);
    std::vector<double> times;
    for (int page = 0; session.isUp() && page < pages; ++page) {
        times.push_back(session.timeOf(true, [&] { session.person().key(XK_Next, XK_Control_L); }));
    }
    return times;
}

void printRow(const Row& row) {
    std::printf("%-56s %8.1f ms %6.1f MB", row.name.c_str(), median(row.times), median(row.memory));
    if (row.delay) {
        std::printf(" %5.0f waits, %.0f until it is drawn", median(row.waits), median(row.allWaits));
    }
    std::printf("\n");
}

void printRatio(const char* what, double value, double anchor, const char* goal) {
    std::printf("%-60s %8.2f x   goal %s\n", what, value / anchor, goal);
}

}  // namespace

int main(int argc, char** argv) {
    const int repetitions = argc > 1 ? std::atoi(argv[1]) : 5;
    const milliseconds delay(argc > 2 ? std::atoi(argv[2]) : 25);
    const std::string administrator = VH_BENCH_STAGE "/bin/odbcadmin";
    const std::vector<std::string> bare{VH_BENCH_BARE_NOTEBOOK};
    const std::vector<std::string> dressed{VH_BENCH_BARE_NOTEBOOK, "dressed"};
    enum {
        kBare,
        kDressed,
        kOneTen,
        kHundredCold,
        kHundredDrivers,
        kThousand,
        kFiveThousand,
        kSlowBare,
        kSlowDressed,
        kSlow
    };
    std::vector<Row> rows{
        {"bare notebook", bare},
        {"dressed notebook", dressed},
        {"administrator, 1 driver, 10 data sources", {administrator}, 1, 10},
        {"administrator, 100 drivers, asked for the first time", {administrator}, Installation::kDrivers, 10, {}, true},
        {"administrator, 100 drivers, 10 data sources", {administrator}, Installation::kDrivers, 10},
        {"administrator, 1 driver, 1,000 data sources", {administrator}, 1, 1000},
        {"administrator, 1 driver, 5,000 data sources", {administrator}, 1, 5000},
        {"bare notebook over the slow line", bare, 0, 0, delay},
        {"dressed notebook over the slow line", dressed, 0, 0, delay},
        {"administrator over the slow line, 1 and 10", {administrator}, 1, 10, delay}};
    const XServer server;
    for (int i = 0; i < repetitions; ++i) {
        for (Row& row : rows) {
            if (!measure(row)) {
                std::fprintf(stderr, "%s: no window came\n", row.name.c_str());
                return EXIT_FAILURE;
            }
        }
    }
    const std::vector<double> pages = turnPages(rows[kThousand], 5);
    const std::vector<Change> changes{{"Add", XK_a, {XK_space, XK_Return, "data source 1a"}, XK_Return},
                                      {"Configure", XK_g, {XK_Tab, XK_End, "x"}, XK_Return},
                                      {"Remove", XK_r, {}, XK_y, XK_Alt_L}};
    std::vector<Change> withTen = changes;
    std::vector<Change> withThousand = changes;
    for (int i = 0; i < repetitions; ++i) {
        if (!measureChanges(rows[kOneTen], withTen) || !measureChanges(rows[kThousand], withThousand)) {
            std::fprintf(stderr, "the data sources were not changed\n");
            return EXIT_FAILURE;
        }
    }

    std::for_each(rows.begin(), rows.end(), printRow);
    std::printf("pages drawn after their exposures, 1,000 data sources, ms:");
    for (const double time : pages) {
        std::printf(" %.1f", time);
    }
    std::printf("   goal 30\n");
    for (std::size_t i = 0; i < changes.size(); ++i) {
        std::printf("%s with 10 and with 1,000 data sources, ms: %.1f %.1f\n", changes[i].name,
                    median(withTen[i].times), median(withThousand[i].times));
    }
    std::printf("\n");
    const auto time = [&rows](std::size_t row) { return median(rows[row].times); };
    const auto memory = [&rows](std::size_t row) { return median(rows[row].memory); };
    printRatio("start, 1 driver, 10 data sources, to dressed", time(kOneTen), time(kDressed), "1.3");
    printRatio("start, 1,000 data sources, to 10", time(kThousand), time(kOneTen), "1.4");
    printRatio("start, 5,000 data sources, to 10", time(kFiveThousand), time(kOneTen), "3.5");
    printRatio("start, 100 drivers, to 1", time(kHundredDrivers), time(kOneTen), "2");
    printRatio("the same, drivers asked for the first time", time(kHundredCold), time(kOneTen), "-");
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const std::string what = std::string(changes[i].name) + " with 1,000 data sources, to 10";
        printRatio(what.c_str(), median(withThousand[i].times), median(withTen[i].times), "3");
    }
    printRatio("waits for the X server until it is drawn, to dressed", median(rows[kSlow].allWaits),
               median(rows[kSlowDressed].allWaits), "1.1");
    printRatio("start over the slow line until it is drawn, to dressed", time(kSlow), time(kSlowDressed), "1.2");
    printRatio("peak memory, to dressed", memory(kOneTen), memory(kDressed), "1.3");
    std::printf("%-60s %8.1f MB  goal 15\n", "peak memory, 5,000 data sources beyond 10",
                memory(kFiveThousand) - memory(kOneTen));
}
