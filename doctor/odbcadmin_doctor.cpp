// odbcadmin-doctor: says what is wrong with the account's ODBC configuration, and what mends it.
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <string>

#include "components/component.h"
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

}  // namespace

int main(int argc, char** argv) {
    bosSetInstallDir(nullptr);
    std::setlocale(LC_ALL, "");
    const doctor::Texts texts;
    bool isForScripts = false;
    bool areOptionsOver = false;
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
        } else if (argument == "--version") {
            return say(stdout, std::string("odbcadmin-doctor ") + kProductVersion + "\n", 0);
        } else {
            const bool isAsked = argument == "--help";
            return say(isAsked ? stdout : stderr, doctor::doctorText(DoctorMessage::kUsage) + "\n",
                       isAsked ? 0 : kBadUse);
        }
    }
    const doctor::Account account = doctor::takeSnapshot();
    const doctor::Findings findings = doctor::diagnose(account, name);
    return say(stdout,
               isForScripts ? doctor::reportForScripts(account, findings)
                            : doctor::reportForPeople(account, findings, isatty(STDOUT_FILENO) != 0),
               doctor::exitStatus(findings));
}
