#include "doctor/trace_findings.h"

#include <cstring>

#include "doctor/ini_view.h"
#include "installer/configuration.h"
#include "installer/trace_mirror.h"

namespace doctor {

namespace {

constexpr FindingKind kTracing{DoctorMessage::kTracing, Severity::kWarning, "trace-on"};
constexpr FindingKind kTraceValue{DoctorMessage::kTraceValue, Severity::kWarning, "trace-value"};
constexpr FindingKind kTracePath{DoctorMessage::kTracePath, Severity::kWarning, "trace-path"};
constexpr FindingKind kTraceLong{DoctorMessage::kTraceLong, Severity::kWarning, "trace-path-long"};
constexpr FindingKind kTraceUnwritable{DoctorMessage::kTraceUnwritable, Severity::kWarning, "trace-unwritable"};
constexpr FindingKind kTraceElsewhere{DoctorMessage::kTraceElsewhere, Severity::kWarning, "trace-not-read"};

bool isMeantOn(const std::string& value) {
    return installer::isTraceOn(value) || installer::sameName(value, "True") || value == "\"1\"" || value == "01" ||
           value == "2";
}

void checkTrace(const Account& account, const std::string& path, const IniSection& section, Findings& findings) {
    const IniEntry* trace = section.find("Trace");
    const std::string value = section.value("Trace");
    if (!installer::isTraceOn(value)) {
        if (isMeantOn(value)) {
            findings.push_back({kTraceValue, path, trace->line, {value}});
        }
        return;
    }
    const IniEntry* entry = section.find("TraceFile");
    const std::string file = entry != nullptr ? entry->value : installer::kDefaultTraceFile;
    const std::size_t line = entry != nullptr ? entry->line : trace->line;
    const auto unwritable = account.writeErrors.find(file);
    const auto size = account.sizes.find(file);
    if (installer::isTraceOn(section.value("TracePid"))) {
        // The path is that of a directory then, with a file of each process.
        findings.push_back({kTracing, path, trace->line, {file, "0"}});
    } else if (!file.starts_with('/')) {
        findings.push_back({kTracePath, path, line, {file}});
    } else if (file.size() > installer::kLongestTracePath) {
        findings.push_back({kTraceLong, path, line, {file, file.substr(0, installer::kLongestTracePath)}});
    } else if (unwritable != account.writeErrors.end()) {
        findings.push_back({kTraceUnwritable, path, line, {file, std::strerror(unwritable->second)}});
    } else {
        findings.push_back(
            {kTracing, path, trace->line, {file, std::to_string(size != account.sizes.end() ? size->second : 0)}});
    }
}

}  // namespace

void findTraceFaults(const Account& account, Findings& findings) {
    // The first of the files that has the section decides.
    for (const std::string& path : {driverFile(account), userDriverFile(account)}) {
        const ConfigFile* file = findFile(account, path);
        const IniView view = viewOf(file != nullptr ? file->text : "");
        if (const IniSection* section = view.find("ODBC")) {
            checkTrace(account, path, *section, findings);
            return;
        }
    }
    const std::string path = userFile(account);
    const ConfigFile* file = findFile(account, path);
    const IniView view = viewOf(file != nullptr ? file->text : "");
    const IniSection* section = view.find("ODBC");
    if (section != nullptr && isMeantOn(section->value("Trace"))) {
        findings.push_back({kTraceElsewhere, path, section->find("Trace")->line, {path, userDriverFile(account)}});
    }
}

}  // namespace doctor
