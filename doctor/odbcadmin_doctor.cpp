// odbcadmin-doctor: says what is wrong with the account's ODBC configuration, and what mends it.
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "components/component.h"
#include "doctor/connection.h"
#include "doctor/diagnosis.h"
#include "doctor/report.h"
#include "doctor/snapshot.h"
#include "kvini/install_dir.h"

namespace {

constexpr int kBadUse = 3;

int say(std::FILE* stream, const std::string& text, int status) {
    std::fputs(text.c_str(), stream);
    return std::fflush(stream) == 0 ? status : kBadUse;
}

constexpr std::chrono::seconds kUsualPatience(20);
constexpr long kLongestPatience = 3600;

// The seconds that the text has; nothing when it is no number of them that makes sense.
std::optional<std::chrono::seconds> secondsOf(const std::string& text) {
    char* end = nullptr;
    const long seconds = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || seconds < 1 || seconds > kLongestPatience) {
        return std::nullopt;
    }
    return std::chrono::seconds(seconds);
}

// Tries the connection, with a line on the terminal while it lasts.
std::optional<doctor::ConnectionFacts> connectTo(const doctor::Account& account, const std::string& name,
                                                 std::chrono::seconds patience) {
    constexpr const char* kEraseLine = "\r\033[K";
    const bool isShown = isatty(STDERR_FILENO) != 0;
    long shown = -1;
    auto facts = doctor::tryConnection(account, name, patience, [&](long seconds) {
        if (isShown && seconds != shown) {
            shown = seconds;
            say(stderr, kEraseLine + doctor::doctorText(DoctorMessage::kConnecting, {name, std::to_string(seconds)}),
                0);
        }
    });
    if (isShown) {
        say(stderr, kEraseLine, 0);
    }
    return facts;
}

}  // namespace

int main(int argc, char** argv) {
    bosSetInstallDir(nullptr);
    // The language is chosen as the administrator does it: before the locale is set.
    const doctor::Texts texts;
    std::setlocale(LC_ALL, "");
    bool isForScripts = false;
    bool areOptionsOver = false;
    std::optional<std::chrono::seconds> patience = kUsualPatience;
    std::string name;
    for (int place = 1; place < argc; ++place) {
        const std::string argument = argv[place];
        if (areOptionsOver || !argument.starts_with('-')) {
            if (argument.empty() || !name.empty()) {
                return say(stderr, doctor::doctorText(DoctorMessage::kUsage) + "\n", kBadUse);
            }
            name = argument;
        } else if (argument == "--") {
            areOptionsOver = true;
        } else if (argument == "--json") {
            isForScripts = true;
        } else if (argument == "--timeout" && place + 1 < argc && (patience = secondsOf(argv[place + 1]))) {
            ++place;
        } else if (argument == "--version") {
            return say(stdout, std::string("odbcadmin-doctor ") + kProductVersion + "\n", 0);
        } else {
            const bool isAsked = argument == "--help";
            return say(isAsked ? stdout : stderr, doctor::doctorText(DoctorMessage::kUsage) + "\n",
                       isAsked ? 0 : kBadUse);
        }
    }
    doctor::Account account = doctor::takeSnapshot();
    if (!name.empty()) {
        account.connection = connectTo(account, name, *patience);
    }
    const doctor::Findings findings = doctor::diagnose(account, name);
    return say(stdout,
               isForScripts ? doctor::reportForScripts(account, findings)
                            : doctor::reportForPeople(account, findings, name, isatty(STDOUT_FILENO) != 0),
               doctor::exitStatus(findings));
}
