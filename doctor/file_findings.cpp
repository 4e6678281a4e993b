#include "doctor/file_findings.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <set>

#include "doctor/driver_list.h"
#include "doctor/ini_view.h"
#include "doctor/names.h"
#include "doctor/utf8.h"
#include "installer/configuration.h"

namespace doctor {

namespace {

using installer::kDataSourceList;

constexpr FindingKind kFolderIsFile{DoctorMessage::kFolderIsFile, Severity::kError, "odbcsysini-is-file"};
constexpr FindingKind kFolderMissing{DoctorMessage::kFolderMissing, Severity::kError, "odbcsysini-missing"};
constexpr FindingKind kFolderEmpty{DoctorMessage::kFolderEmpty, Severity::kError, "odbcsysini-empty"};
constexpr FindingKind kRelative{DoctorMessage::kRelative, Severity::kWarning, "variable-relative"};
constexpr FindingKind kDriverFileIsPath{DoctorMessage::kDriverFileIsPath, Severity::kError, "odbcinstini-is-path"};
constexpr FindingKind kUserFileMissing{DoctorMessage::kUserFileMissing, Severity::kError, "odbcini-missing"};
constexpr FindingKind kDriverFileMissing{DoctorMessage::kDriverFileMissing, Severity::kError, "driver-file-missing"};
constexpr FindingKind kNotRegular{DoctorMessage::kNotRegular, Severity::kError, "file-not-regular"};
constexpr FindingKind kUnreadable{DoctorMessage::kUnreadable, Severity::kError, "file-unreadable"};
constexpr FindingKind kHomesDiffer{DoctorMessage::kHomesDiffer, Severity::kWarning, "homes-differ"};
constexpr FindingKind kWrongOwner{DoctorMessage::kWrongOwner, Severity::kWarning, "file-owner"};
constexpr FindingKind kPasswordOpen{DoctorMessage::kPasswordOpen, Severity::kWarning, "password-readable"};
constexpr FindingKind kNotRead{DoctorMessage::kNotRead, Severity::kWarning, "file-not-read"};
constexpr FindingKind kLayersDiffer{DoctorMessage::kLayersDiffer, Severity::kWarning, "layers-differ"};
constexpr FindingKind kDriverNameEmpty{DoctorMessage::kDriverNameEmpty, Severity::kError, "odbcinstini-empty"};
constexpr FindingKind kIsDriverList{DoctorMessage::kIsDriverList, Severity::kError, "odbcini-is-driver-file"};
constexpr FindingKind kRefused{DoctorMessage::kRefused, Severity::kError, "file-refused"};
constexpr FindingKind kMark{DoctorMessage::kMark, Severity::kError, "byte-order-mark"};
constexpr FindingKind kWide{DoctorMessage::kWide, Severity::kError, "utf-16"};
constexpr FindingKind kNotUtf8{DoctorMessage::kNotUtf8, Severity::kWarning, "invalid-utf-8"};
constexpr FindingKind kLineTooLong{DoctorMessage::kLineTooLong, Severity::kError, "line-too-long"};
constexpr FindingKind kNoEquals{DoctorMessage::kNoEquals, Severity::kWarning, "line-without-equals"};
constexpr FindingKind kKeyTwice{DoctorMessage::kKeyTwice, Severity::kWarning, "key-twice"};
constexpr FindingKind kSectionTwice{DoctorMessage::kSectionTwice, Severity::kWarning, "section-twice"};
constexpr FindingKind kCaseDiffers{DoctorMessage::kCaseDiffers, Severity::kWarning, "names-differ-in-case"};
constexpr FindingKind kNoBracket{DoctorMessage::kNoBracket, Severity::kWarning, "header-not-closed"};
constexpr FindingKind kQuoted{DoctorMessage::kQuoted, Severity::kWarning, "value-quoted"};
constexpr FindingKind kLineEnds{DoctorMessage::kLineEnds, Severity::kWarning, "dos-line-ends"};
constexpr FindingKind kTrailingBlank{DoctorMessage::kTrailingBlank, Severity::kWarning, "trailing-blank"};

bool isQuoted(const std::string& value) {
    return value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
}

bool isWide(const std::string& text) {
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}

bool isMarked(const std::string& text) {
    return text.starts_with("\xEF\xBB\xBF");
}

void checkVariables(const Account& account, Findings& findings) {
    if (const std::string* folder = variable(account, "ODBCSYSINI")) {
        const ConfigFile* found = findFile(account, *folder);
        const std::string directory = folder->substr(0, folder->rfind('/'));
        if (folder->empty()) {
            findings.push_back({kFolderEmpty, "", 0, {driverFile(account), systemFile(account)}});
        } else if (found != nullptr && found->isRegular) {
            findings.push_back({kFolderIsFile, *folder, 0, {*folder, directory.empty() ? "/" : directory}});
        } else if (found == nullptr) {
            findings.push_back({kFolderMissing, *folder, 0, {*folder}});
        } else if (folder->front() != '/') {
            findings.push_back({kRelative, "", 0, {"ODBCSYSINI", *folder}});
        }
    }
    const std::string* driverName = variable(account, "ODBCINSTINI");
    if (driverName != nullptr && driverName->empty()) {
        findings.push_back({kDriverNameEmpty, "", 0, {}});
    } else if (driverName != nullptr && driverName->front() == '/' &&
               findFile(account, driverFile(account)) == nullptr) {
        const std::size_t slash = driverName->rfind('/');
        findings.push_back(
            {kDriverFileIsPath,
             driverFile(account),
             0,
             {*driverName, driverFile(account), driverName->substr(0, slash), driverName->substr(slash + 1)}});
    }
    const std::string* userName = variable(account, "ODBCINI");
    if (userName != nullptr && !userName->empty()) {
        if (findFile(account, *userName) == nullptr) {
            findings.push_back({kUserFileMissing, *userName, 0, {*userName, systemFile(account)}});
        } else if (isDriverListName(*userName)) {
            findings.push_back({kIsDriverList, *userName, 0, {*userName}});
        } else if (userName->front() != '/') {
            findings.push_back({kRelative, "", 0, {"ODBCINI", *userName}});
        }
    }
    const std::string* ownName = variable(account, "ODBC_INI");
    if (ownName != nullptr && userName == nullptr && *ownName != userFile(account)) {
        findings.push_back({kLayersDiffer, *ownName, 0, {*ownName, userFile(account)}});
    }
}

bool hasDataSources(const Account& account) {
    return std::any_of(account.files.begin(), account.files.end(),
                       [](const auto& file) { return viewOf(file.second.text).find(kDataSourceList) != nullptr; });
}

// Files that somebody may have meant and that nobody reads.
void checkPlaces(const Account& account, Findings& findings) {
    const std::set<std::string> read{userFile(account), systemFile(account), driverFile(account),
                                     userDriverFile(account)};
    const std::string* home = variable(account, "HOME");
    const std::string* folder = variable(account, "ODBCSYSINI");
    for (const auto& [path, file] : account.files) {
        const std::string base = baseName(path);
        if (read.contains(path) || (folder != nullptr && path == *folder) || file.error != 0 || !file.isRegular ||
            (base.find("odbc") == std::string::npos && base.find("ODBC") == std::string::npos) ||
            viewOf(file.text).sections.empty()) {
            continue;
        }
        const bool isDriverList = base.find("inst") != std::string::npos;
        if (home != nullptr && path == *home + "/.odbc.ini" && *home != account.home) {
            if (variable(account, "ODBCINI") == nullptr) {
                findings.push_back({kHomesDiffer, path, 0, {*home, account.home, userFile(account)}});
            }
        } else if (path != account.home + "/.odbc.ini" && path != account.systemFolder + "/odbc.ini" &&
                   path != account.systemFolder + "/odbcinst.ini") {
            findings.push_back({kNotRead, path, 0, {path, isDriverList ? driverFile(account) : userFile(account)}});
        }
    }
}

void checkState(const Account& account, const std::string& path, bool isOwn, Findings& findings) {
    const ConfigFile* file = findFile(account, path);
    if (file == nullptr) {
        return;
    }
    if (!file->isRegular) {
        findings.push_back({kNotRegular, path, 0, {path}});
        return;
    }
    if (file->error != 0) {
        findings.push_back({kUnreadable, path, 0, {path, std::strerror(file->error)}});
        return;
    }
    if (const std::size_t line = refusedLine(file->text); line != 0 && !isMarked(file->text) && !isWide(file->text)) {
        findings.push_back({kRefused, path, line, {path}});
    }
    if (file->owner != account.user && file->owner != 0) {
        findings.push_back(
            {kWrongOwner, path, 0, {path, std::to_string(file->owner), isOwn ? account.userName : "root"}});
    } else if (isOwn && file->owner != account.user) {
        findings.push_back({kWrongOwner, path, 0, {path, "root", account.userName}});
    }
    if ((file->mode & 0044U) == 0) {
        return;
    }
    for (const IniSection& section : viewOf(file->text).sections) {
        for (const IniEntry& entry : section.entries) {
            if (isOwn && installer::isPasswordKey(entry.key) && !entry.value.empty()) {
                findings.push_back({kPasswordOpen, path, entry.line, {path, section.name}, section.name});
                return;
            }
        }
    }
}

bool isUtf8(std::string_view text) {
    for (std::size_t place = 0; place < text.size();) {
        if (static_cast<unsigned char>(text[place]) < 0x80) {
            ++place;
        } else if (nextLetter(text, place) < 0) {
            return false;
        }
    }
    return true;
}

void checkLines(const ConfigFile& file, Findings& findings) {
    const auto add = [&](const FindingKind& kind, std::size_t line, std::vector<std::string> subjects,
                         const std::string& about = {}) {
        findings.push_back({kind, file.path, line, std::move(subjects), about});
    };
    if (isMarked(file.text)) {
        add(kMark, 1, {file.path});
    }
    if (isWide(file.text)) {
        add(kWide, 1, {file.path});
        return;
    }
    std::size_t number = 0;
    bool isForeign = false;
    bool hasReturns = false;
    std::size_t begin = 0;
    while (begin < file.text.size()) {
        const std::size_t end = std::min(file.text.find('\n', begin), file.text.size());
        const std::string_view line = std::string_view(file.text).substr(begin, end - begin);
        begin = end + 1;
        ++number;
        if (line.size() > installer::kLongestLine && line.front() != '#' && line.front() != ';') {
            add(kLineTooLong, number, {std::to_string(line.size()), std::to_string(installer::kLongestLine)});
        }
        if (!isForeign && !isUtf8(line)) {
            add(kNotUtf8, number, {file.path});
            isForeign = true;
        }
        if (!hasReturns && line.ends_with('\r')) {
            add(kLineEnds, number, {file.path});
            hasReturns = true;
        }
        if (line.find('=') != std::string_view::npos && (line.ends_with(' ') || line.ends_with('\t'))) {
            add(kTrailingBlank, number, {installer::trimmed(line.substr(0, line.find('=')))});
        }
    }
}

void checkSections(const ConfigFile& file, bool isDriverList, Findings& findings) {
    const IniView view = viewOf(file.text);
    const auto add = [&](const FindingKind& kind, std::size_t line, std::vector<std::string> subjects,
                         const std::string& about = {}) {
        findings.push_back({kind, file.path, line, std::move(subjects), about});
    };
    std::map<std::string, const IniSection*> sections;
    for (const IniSection& section : view.sections) {
        const auto [first, isNew] = sections.emplace(installer::foldedName(section.name), &section);
        if (!isNew) {
            const bool isSame = first->second->name == section.name;
            add(isSame ? kSectionTwice : kCaseDiffers, section.line,
                {section.name, first->second->name, std::to_string(first->second->line)}, section.name);
        }
        if (!section.isClosed) {
            add(kNoBracket, section.line, {section.name}, section.name);
        }
        const bool isList = installer::sameName(section.name, kDataSourceList);
        std::map<std::string, const IniEntry*> entries;
        for (const IniEntry& entry : section.entries) {
            const auto [earlier, isFirst] = entries.emplace(installer::foldedName(entry.key), &entry);
            if (!isFirst) {
                const bool isSame = !isList || earlier->second->key == entry.key;
                add(isSame ? kKeyTwice : kCaseDiffers, entry.line,
                    {entry.key, earlier->second->key, std::to_string(earlier->second->line)},
                    isList ? "" : section.name);
            }
            if (!entry.hasEquals) {
                add(kNoEquals, entry.line, {entry.key}, section.name);
            } else if (isQuoted(entry.value) && !isList &&
                       (isDriverList || !installer::sameName(entry.key, "Driver"))) {
                add(kQuoted, entry.line, {entry.key}, section.name);
            }
        }
    }
}

}  // namespace

void findFileFaults(const Account& account, Findings& findings) {
    checkVariables(account, findings);
    checkState(account, userFile(account), true, findings);
    for (const std::string& path : {systemFile(account), driverFile(account)}) {
        checkState(account, path, false, findings);
    }
    const bool isVariableWrong = std::any_of(findings.begin(), findings.end(), [&account](const Finding& finding) {
        return std::string_view(finding.kind.name).starts_with("odbcsysini") ||
               std::string_view(finding.kind.name).starts_with("odbcinstini") ||
               (finding.kind.text == kRefused.text && finding.file == driverFile(account));
    });
    const bool isWanted = hasDataSources(account) || variable(account, "ODBCSYSINI") != nullptr ||
                          variable(account, "ODBCINSTINI") != nullptr;
    if (!isVariableWrong && isWanted && registeredDrivers(account).empty()) {
        findings.push_back({kDriverFileMissing, driverFile(account), 0, {driverFile(account)}});
    }
    checkPlaces(account, findings);
}

void findLineFaults(const Account& account, Findings& findings) {
    for (const auto& [path, isDriverList] : std::map<std::string, bool>{{userFile(account), false},
                                                                        {systemFile(account), false},
                                                                        {driverFile(account), true},
                                                                        {userDriverFile(account), true}}) {
        if (const ConfigFile* file = findFile(account, path); file != nullptr && file->error == 0) {
            checkLines(*file, findings);
            if (!isWide(file->text)) {
                checkSections(*file, isDriverList, findings);
            }
        }
    }
}

}  // namespace doctor
