#include "doctor/connection.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "doctor/driver_list.h"
#include "doctor/server_look.h"
#include "installer/connection_attempt.h"

namespace doctor {

namespace {

constexpr std::chrono::milliseconds kLookPatience(4000);

int readError(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && access(path.c_str(), R_OK) == 0 ? 0 : errno;
}

}  // namespace

std::optional<ConnectionFacts> tryConnection(const Account& account, const std::string& name,
                                             std::chrono::seconds patience, const std::function<void(long)>& progress) {
    const std::optional<DataSource> source = findDataSource(account, name);
    if (!source) {
        return std::nullopt;
    }
    using std::chrono::duration;
    const auto begin = std::chrono::steady_clock::now();
    const auto passed = [begin] { return std::chrono::steady_clock::now() - begin; };
    ConnectionFacts facts;
    {
        ConnectionAttempt attempt({"DSN=" + connectionValue(name) + ";"});
        std::optional<ConnectionOutcome> outcome;
        while (!outcome && passed() < patience) {
            progress(std::chrono::duration_cast<std::chrono::seconds>(passed()).count());
            outcome = attempt.waitForOutcome(std::chrono::milliseconds(100));
        }
        facts.isOver = outcome.has_value();
        if (outcome) {
            facts.connected = outcome->connected;
            facts.diagnostics = outcome->diagnostics;
            facts.server = outcome->server;
            facts.crash = outcome->crash;
        }
        facts.seconds = duration<double>(passed()).count();
    }
    if (!facts.connected) {
        if (const IniEntry* file = databaseFile(source->section)) {
            facts.databaseError = readError(file->value);
        }
        facts.look = lookAtServer(addressOf(source->section, source->library), kLookPatience);
    }
    return facts;
}

}  // namespace doctor
