#include "doctor/data_source_findings.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <map>
#include <set>

#include "doctor/driver_list.h"
#include "doctor/names.h"
#include "installer/configuration.h"

namespace doctor {

namespace {

using installer::kDataSourceList;
using installer::sameName;

constexpr FindingKind kListMisnamed{DoctorMessage::kListMisnamed, Severity::kWarning, "list-misnamed"};
constexpr FindingKind kNoSection{DoctorMessage::kNoSection, Severity::kError, "listed-without-section"};
constexpr FindingKind kNoSectionNear{DoctorMessage::kNoSectionNear, Severity::kError, "listed-without-section"};
constexpr FindingKind kNotListed{DoctorMessage::kNotListed, Severity::kWarning, "section-not-listed"};
constexpr FindingKind kNoDriver{DoctorMessage::kNoDriver, Severity::kError, "no-driver"};
constexpr FindingKind kDriverQuoted{DoctorMessage::kDriverQuoted, Severity::kError, "driver-quoted"};
constexpr FindingKind kDriverComment{DoctorMessage::kDriverComment, Severity::kError, "driver-comment"};
constexpr FindingKind kDriverUnknown{DoctorMessage::kDriverUnknown, Severity::kError, "driver-unknown"};
constexpr FindingKind kDriverUnknownNear{DoctorMessage::kDriverUnknownNear, Severity::kError, "driver-unknown"};
constexpr FindingKind kDriverPathDiffers{DoctorMessage::kDriverPathDiffers, Severity::kWarning, "driver-path-differs"};
constexpr FindingKind kNoDataSources{DoctorMessage::kNoDataSources, Severity::kWarning, "no-data-sources"};
constexpr FindingKind kNameTooLong{DoctorMessage::kNameTooLong, Severity::kError, "name-too-long"};
constexpr FindingKind kNameIsDriver{DoctorMessage::kNameIsDriver, Severity::kError, "name-is-driver"};
constexpr FindingKind kNameUnknownNear{DoctorMessage::kNameUnknownNear, Severity::kError, "name-unknown"};
constexpr FindingKind kNameUnknown{DoctorMessage::kNameUnknown, Severity::kError, "name-unknown"};
constexpr FindingKind kNameElsewhere{DoctorMessage::kNameElsewhere, Severity::kError, "name-in-unread-file"};

bool isListName(const std::string& name) {
    return sameName(name, kDataSourceList);
}

// A section that was meant for the list of data sources: its lines have the names of sections.
bool isMisnamedList(const IniSection& section, const IniView& view) {
    if (isListName(section.name) || section.entries.empty() || section.find("Driver") != nullptr ||
        nearest(section.name, {kDataSourceList, "Data Sources", "DSN"}).empty()) {
        return false;
    }
    return std::all_of(section.entries.begin(), section.entries.end(),
                       [&view](const IniEntry& entry) { return view.find(entry.key) != nullptr; });
}

void checkDriver(const DataSourceFile& file, const IniSection& section, const std::vector<Registered>& drivers,
                 const std::string& driverPath, const std::string& listed, Findings& findings) {
    const IniEntry* entry = section.find("Driver");
    const auto add = [&](const FindingKind& kind, std::size_t line, std::vector<std::string> subjects) {
        subjects.insert(subjects.begin(), section.name);
        findings.push_back({kind, file.path, line, std::move(subjects), section.name});
    };
    if (entry == nullptr || entry->value.empty()) {
        add(kNoDriver, entry != nullptr ? entry->line : section.line, {listed.empty() ? "NAME" : listed});
        return;
    }
    const std::string& value = entry->value;
    const auto isCalled = [&drivers](const std::string& name) {
        return std::any_of(drivers.begin(), drivers.end(),
                           [&name](const Registered& driver) { return sameName(driver.section.name, name); });
    };
    if (value.starts_with('/')) {
        for (const Registered& driver : drivers) {
            const IniEntry* library = libraryEntry(driver.section, "Driver");
            if (library != nullptr && library->value != value && library->value.starts_with('/') &&
                baseName(library->value) == baseName(value)) {
                add(kDriverPathDiffers, entry->line, {value, driver.section.name, library->value, driver.file});
                return;
            }
        }
        return;
    }
    if (isCalled(value)) {
        return;
    }
    const std::string_view inner = std::string_view(value).substr(1, value.size() - 2);
    if (value.size() > 2 && std::string_view("\"'{").find(value.front()) != std::string_view::npos) {
        add(kDriverQuoted, entry->line, {value, std::string(inner)});
        return;
    }
    if (const std::size_t mark = value.find_first_of(";#"); mark != std::string::npos) {
        if (const std::string name = installer::trimmed(value.substr(0, mark)); isCalled(name)) {
            add(kDriverComment, entry->line, {value, name});
            return;
        }
    }
    if (drivers.empty()) {
        // That is told of the file itself.
        return;
    }
    std::vector<std::string> names;
    std::string near;
    for (const Registered& driver : drivers) {
        names.push_back(driver.section.name);
        const IniEntry* library = libraryEntry(driver.section, "Driver");
        const std::string base = library != nullptr ? baseName(library->value) : "";
        if (base == baseName(value) || base == baseName(value) + ".so") {
            near = driver.section.name;
        }
    }
    near = near.empty() ? nearest(value, names) : near;
    add(near.empty() ? kDriverUnknown : kDriverUnknownNear, entry->line, {value, driverPath, near});
}

class Sources {
public:
    Sources(const Account& account, Findings& findings)
        : account_(account),
          findings_(findings),
          files_(dataSourceFiles(account)),
          drivers_(registeredDrivers(account)) {}

    void check() {
        for (const DataSourceFile& file : files_) {
            for (const IniSection& section : file.view.sections) {
                const bool isMisnamed = isMisnamedList(section, file.view);
                if (isListName(section.name) || isMisnamed) {
                    addList(section);
                }
                if (isMisnamed) {
                    findings_.push_back({kListMisnamed, file.path, section.line, {section.name}});
                    meantLists_.insert(section.name);
                }
            }
        }
        for (const DataSourceFile& file : files_) {
            checkList(file);
            for (const IniSection& section : file.view.sections) {
                checkSection(file, section);
            }
        }
        // A file that a variable names and that holds nothing is told of itself.
        const std::string* named = variable(account_, "ODBCINI");
        const ConfigFile* file = findFile(account_, userFile(account_));
        const bool isUnread = file == nullptr || !file->isRegular || file->error != 0;
        const bool isTold = (named != nullptr && !named->empty() && (isUnread || isDriverListName(*named))) ||
                            (file != nullptr && refusedLine(file->text) != 0) ||
                            std::any_of(findings_.begin(), findings_.end(), [](const Finding& finding) {
                                return finding.kind.text == DoctorMessage::kHomesDiffer;
                            });
        if (listed_.empty() && !hasSections_ && !isTold) {
            std::string others;
            for (const auto& [path, text] : account_.otherFiles) {
                others += (others.empty() ? "" : ", ") + path;
            }
            findings_.push_back({kNoDataSources,
                                 userFile(account_),
                                 0,
                                 {account_.userName, userFile(account_), systemFile(account_),
                                  others.empty() ? "~/.odbc.ini" : others}});
        }
    }

private:
    void addList(const IniSection& list) {
        for (const IniEntry& entry : list.entries) {
            listed_[installer::foldedName(entry.key)] = entry.value;
        }
    }
    bool hasSection(const std::string& name) const {
        return std::any_of(files_.begin(), files_.end(),
                           [&name](const DataSourceFile& file) { return file.view.find(name) != nullptr; });
    }
    void checkList(const DataSourceFile& file) {
        std::vector<std::string> unlisted;
        for (const IniSection& section : file.view.sections) {
            if (!isListName(section.name) && !sameName(section.name, "ODBC") && !section.entries.empty() &&
                !listed_.contains(installer::foldedName(section.name))) {
                unlisted.push_back(section.name);
            }
        }
        const IniSection* list = file.view.find(kDataSourceList);
        if (list == nullptr) {
            return;
        }
        std::size_t lost = 0;
        for (const IniEntry& entry : list->entries) {
            lost += hasSection(entry.key) ? 0 : 1;
        }
        for (const IniEntry& entry : list->entries) {
            if (hasSection(entry.key)) {
                continue;
            }
            std::string near = nearest(entry.key, unlisted);
            // Where only one of each is left they belong together, whatever they are called.
            near = near.empty() && lost == 1 && unlisted.size() == 1 ? unlisted.front() : near;
            if (near.empty()) {
                findings_.push_back({kNoSection, file.path, entry.line, {entry.key, entry.value}, entry.key});
                continue;
            }
            const IniSection* section = file.view.find(near);
            findings_.push_back({kNoSectionNear,
                                 file.path,
                                 entry.line,
                                 {entry.key, section->name, std::to_string(section->line)},
                                 entry.key});
            told_.insert(installer::foldedName(section->name));
        }
    }
    void checkSection(const DataSourceFile& file, const IniSection& section) {
        const auto listed = listed_.find(installer::foldedName(section.name));
        // Of two sections the first counts, and the second is told of as such.
        if (isListName(section.name) || sameName(section.name, "ODBC") || meantLists_.contains(section.name) ||
            file.view.find(section.name) != &section) {
            return;
        }
        if (listed == listed_.end() && !isDataSource(section)) {
            return;
        }
        hasSections_ = true;
        if (section.name.size() > SQL_MAX_DSN_LENGTH) {
            findings_.push_back(
                {kNameTooLong,
                 file.path,
                 section.line,
                 {section.name, std::to_string(section.name.size()), std::to_string(SQL_MAX_DSN_LENGTH)},
                 section.name});
        }
        checkDriver(file, section, drivers_, driverFile(account_), listed != listed_.end() ? listed->second : "",
                    findings_);
        if (listed == listed_.end() && !told_.contains(installer::foldedName(section.name))) {
            findings_.push_back(
                {kNotListed, file.path, section.line, {section.name, section.value("Driver")}, section.name});
        }
    }

    const Account& account_;
    Findings& findings_;
    std::vector<DataSourceFile> files_;
    std::vector<Registered> drivers_;
    std::map<std::string, std::string> listed_;  // Names in lower case, with the drivers that the list has for them.
    std::set<std::string> told_;
    std::set<std::string> meantLists_;
    bool hasSections_ = false;
};

}  // namespace

void findDataSourceFaults(const Account& account, Findings& findings) {
    Sources(account, findings).check();
}

void findMissingName(const Account& account, const std::string& name, Findings& findings) {
    std::vector<std::string> names;
    for (const DataSourceFile& file : dataSourceFiles(account)) {
        if (file.view.find(name) != nullptr) {
            return;
        }
        for (const IniSection& section : file.view.sections) {
            if (isDataSource(section)) {
                names.push_back(section.name);
            }
        }
    }
    // In a file that is refused it is where it should be.
    for (const std::string& path : {userFile(account), systemFile(account)}) {
        const ConfigFile* file = findFile(account, path);
        if (file != nullptr && refusedLine(file->text) != 0 && viewOf(file->text).find(name) != nullptr) {
            return;
        }
    }
    // That there are none at all, or that a file is not read, is then said with it.
    std::erase_if(findings, [](const Finding& finding) { return finding.kind.text == kNoDataSources.text; });
    std::map<std::string, std::string> texts = account.otherFiles;
    for (const auto& [path, file] : account.files) {
        if (!isDriverListName(path) && path != driverFile(account) && refusedLine(file.text) == 0) {
            texts[path] = file.text;
        }
    }
    for (const auto& [path, text] : texts) {
        const IniView view = viewOf(text);
        if (const IniSection* section = view.find(name); section != nullptr && isDataSource(*section)) {
            std::erase_if(findings, [&path = path](const Finding& finding) { return finding.file == path; });
            findings.push_back({kNameElsewhere,
                                path,
                                section->line,
                                {name, path, account.userName, userFile(account), systemFile(account)},
                                name});
            return;
        }
    }
    for (const Registered& driver : registeredDrivers(account)) {
        if (sameName(driver.section.name, name)) {
            findings.push_back({kNameIsDriver, driver.file, driver.section.line, {name, userFile(account)}, name});
            return;
        }
    }
    const std::string near = nearest(name, names);
    findings.push_back({near.empty() ? kNameUnknown : kNameUnknownNear,
                        userFile(account),
                        0,
                        {name, userFile(account), systemFile(account), account.userName, near},
                        name});
}

}  // namespace doctor
