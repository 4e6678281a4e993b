#include "installer/configuration_change.h"

#include <odbcinst.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <set>

#include "installer/configuration.h"
#include "installer/plain_text.h"
#include "installer/private_file.h"

namespace installer {

namespace {

// Says which file's first text a process has kept: its number and the path. A setup library is loaded anew for each
// call, so nothing but the process can remember that.
constexpr const char* kKeptVariable = "VH_KEPT_SETTINGS";

// Lets the library write all that it reads in the file once more: it deletes a section that can't be there.
bool rewriteByLibrary(const std::string& file) {
    return SQLWritePrivateProfileString("\001", nullptr, nullptr, file.c_str()) != 0;
}

// Whether the library reads each line whole. Then what it wrote tells how it reads them, and there is no need to ask it
// again, which takes as long as the change itself.
bool isReadWhole(const std::string& text) {
    const std::vector<std::string_view> lines = splitLines(text);
    return text.find('\0') == std::string::npos &&
           std::none_of(lines.begin(), lines.end(), [](std::string_view line) { return line.size() > kLongestLine; });
}

// The line for which the library reads nothing of this text, which stands in `file`; 0 when it reads it.
int findUnreadableLine(std::string_view text, const std::string& file) {
    const std::size_t line = findFirstLine(text);
    return line == 0 || rewriteByLibrary(file) ? 0 : static_cast<int>(line);
}

std::string normalized(const IniLine& line) {
    return line.kind == IniLineKind::kSection ? "[" + std::string(line.name) + "]"
                                              : std::string(line.name) + "=" + std::string(line.value);
}

std::string nameOfKept(const std::string& path) {
    return path + "~";
}

// Keeps the old text, once in a run of the program. Where there is none, because the library makes an empty file by
// reading, what an earlier run kept is worth more. False, with errno set, when the disk is full; a directory that takes
// no new file is no reason to refuse a change.
bool keepFirstText(const FileText& old, const DirectoryLock& lock) {
    const std::string mark = std::to_string(getpid()) + " " + old.path;
    const char* kept = std::getenv(kKeptVariable);
    if (kept != nullptr && mark == kept) {
        return true;
    }
    if (!old.text.empty() && !writeCopy(old, nameOfKept(old.path), lock) && errno != EACCES && errno != EPERM &&
        errno != EROFS) {
        return false;
    }
    setenv(kKeptVariable, mark.c_str(), 1);
    return true;
}

}  // namespace

std::optional<ChangeFailure> findReadFailure(const std::string& path) {
    const PrivateFile copy;
    FileText file;
    if (!copy || !readFile(followLinks(path), file) || !copy.write(file.text)) {
        return ChangeFailure{ChangeFailure::kSystem, path, errno};
    }
    const int line = findUnreadableLine(file.text, copy.path());
    return line == 0 ? std::nullopt : std::optional(ChangeFailure{ChangeFailure::kBadLine, path, 0, line});
}

ConfigurationChange::ConfigurationChange() : path_(dataSourcePath()), isDataSourceFile_(true) {}

ConfigurationChange::ConfigurationChange(const std::string& path, bool startsAnew)
    : path_(path), isDataSourceFile_(false), startsAnew_(startsAnew) {}

void ConfigurationChange::write(const std::string& section, const std::string& key, const char* value) {
    // Who reads them gets them without the blanks at their ends.
    const Step::Kind kind = value != nullptr ? Step::kSet : Step::kDeleteKey;
    steps_.push_back({kind, trimmed(section), trimmed(key), trimmed(value != nullptr ? value : "")});
}

void ConfigurationChange::removeSection(const std::string& section) {
    steps_.push_back({Step::kDeleteSection, section, {}, {}});
}

void ConfigurationChange::removeDataSource(const std::string& name) {
    removeSection(name);
    // The library deletes the section and leaves the name in the list: the data source would be back, without settings.
    steps_.push_back({Step::kDeleteKey, kDataSourceList, name, {}});
}

// Makes the step in the text. False when there is nothing to delete.
bool ConfigurationChange::apply(const Step& step, IniText& text) {
    switch (step.kind) {
        case Step::kSet:
            text.set(step.section, step.key, step.value);
            return true;
        case Step::kDeleteKey:
            return text.removeKey(step.section, step.key);
        default:
            return text.removeSection(step.section);
    }
}

// Lets the library make the step, in a file that it calls `file`. Each is one call and one writing of the file.
bool ConfigurationChange::applyByLibrary(const Step& step, const std::string& file) {
    if (step.kind == Step::kDeleteSection) {
        return SQLRemoveDSNFromIni(step.section.c_str()) != 0;
    }
    return SQLWritePrivateProfileString(step.section.c_str(), step.key.c_str(),
                                        step.kind == Step::kSet ? step.value.c_str() : nullptr, file.c_str()) != 0;
}

// The steps as the text needs them: what stands there twice is deleted twice, what is not there not at all.
std::vector<ConfigurationChange::Step> ConfigurationChange::stepsFor(const std::string& text) const {
    IniText edited(text);
    std::vector<Step> steps;
    for (const Step& step : steps_) {
        while (apply(step, edited)) {
            steps.push_back(step);
            if (step.kind == Step::kSet) {
                break;
            }
        }
    }
    return steps;
}

bool ConfigurationChange::fitsIntoLines() const {
    return std::all_of(steps_.begin(), steps_.end(), [](const Step& step) {
        const std::string_view breaks("\r\n\0", 3);
        return step.kind != Step::kSet ||
               (step.key.size() + 1 + step.value.size() <= kLongestLine && step.section.size() + 2 <= kLongestLine &&
                (step.section + step.key + step.value).find_first_of(breaks) == std::string::npos);
    });
}

// Whether the step is about this line of the section.
bool ConfigurationChange::isMeant(const Step& step, const std::string& section, const IniLine& line) {
    return sameName(section, step.section) &&
           (step.kind == Step::kDeleteSection || (line.kind == IniLineKind::kEntry && sameName(line.name, step.key)));
}

// The number of the first line, from 1, that the library can't write as it is; that is one too long, or else one that
// says something which is not in `after` and which no step is about. 0 when there is none.
int ConfigurationChange::findLostLine(const std::string& before, const std::string& after) const {
    std::multiset<std::string> left;
    for (const std::string_view text : splitLines(after)) {
        left.insert(normalized(parseIniLine(text)));
    }
    std::string section;
    const std::vector<std::string_view> lines = splitLines(before);
    const auto tooLong =
        std::find_if(lines.begin(), lines.end(), [](std::string_view line) { return line.size() > kLongestLine + 1; });
    if (tooLong != lines.end()) {
        return static_cast<int>(tooLong - lines.begin()) + 1;
    }
    for (std::size_t place = 0; place < lines.size(); ++place) {
        const IniLine line = parseIniLine(lines[place]);
        if (line.kind == IniLineKind::kSection) {
            section = line.name;
        }
        const bool counts =
            line.kind != IniLineKind::kNothing &&
            std::none_of(steps_.begin(), steps_.end(), [&](const Step& step) { return isMeant(step, section, line); });
        if (counts) {
            const auto found = left.find(normalized(line));
            if (found == left.end()) {
                return static_cast<int>(place) + 1;
            }
            left.erase(found);
        }
    }
    return 0;
}

// Makes the steps in `text`, and by the library in the copy. What it then says of its own text is what it is to say of
// ours. Returns what stands in the way.
std::optional<ChangeFailure> ConfigurationChange::make(std::span<const Step> steps, const PrivateFile& copy,
                                                       std::string& text) const {
    const std::string file = isDataSourceFile_ ? kDataSourceFile : copy.path();
    const std::string before = text;
    const auto systemFailure = [this] { return ChangeFailure{ChangeFailure::kSystem, path_, errno}; };
    if (!copy.write(before)) {
        return systemFailure();
    }
    IniText edited(before);
    for (const Step& step : steps) {
        apply(step, edited);
        if (!applyByLibrary(step, file)) {
            const int line = findUnreadableLine(before, file);
            return line == 0 ? ChangeFailure{ChangeFailure::kRefused, path_}
                             : ChangeFailure{ChangeFailure::kBadLine, path_, 0, line};
        }
    }
    std::string judged;
    text = edited.text();
    if (!copy.read(judged)) {
        return systemFailure();
    }
    if (isReadWhole(text) && asTheLibraryWrites(text) == judged) {
        return std::nullopt;
    }
    const auto readBack = [&copy, &file](std::string& written) {
        return copy.write(written) && rewriteByLibrary(file) && copy.read(written);
    };
    std::string ours = text;
    if (!readBack(ours)) {
        return systemFailure();
    }
    if (ours == judged) {
        return std::nullopt;
    }
    if (const int line = findLostLine(before, judged)) {
        return ChangeFailure{ChangeFailure::kBadLine, path_, 0, line};
    }
    std::string theirs = judged;
    if (!readBack(theirs)) {
        return systemFailure();
    }
    if (theirs != judged) {
        // It would not find there what it was told to write: a name that begins as a comment or a section does.
        return ChangeFailure{ChangeFailure::kRefused, path_};
    }
    // Only comments go, and the library knows best what it does with such a file.
    text = judged;
    return std::nullopt;
}

// What a plain text says: the lines that the steps are about, and all the rest.
struct ConfigurationChange::Division {
    std::string meant;
    std::string others;
};

bool ConfigurationChange::anyNames(std::span<const Step> steps, std::string_view section) {
    return std::any_of(steps.begin(), steps.end(),
                       [section](const Step& step) { return sameName(step.section, section); });
}

// The sections of a plain text before those that the steps name: they get what remains of one that is removed.
std::vector<std::string> ConfigurationChange::findPreceding(std::string_view plainText, std::span<const Step> steps) {
    std::vector<std::string> preceding;
    std::string_view before;
    for (const std::string_view section : splitSections(plainText)) {
        const std::string_view name = parseFirstLine(section).name;
        if (anyNames(steps, name)) {
            preceding.emplace_back(before);
        }
        before = name;
    }
    return preceding;
}

// Takes the sections apart that the steps can change: those that they name, and the preceding ones. Of the others blank
// lines at the end do not count.
ConfigurationChange::Division ConfigurationChange::divide(std::string_view plainText, std::span<const Step> steps,
                                                          const std::vector<std::string>& preceding) {
    Division division;
    for (const std::string_view section : splitSections(plainText)) {
        const IniLine header = parseFirstLine(section);
        const std::string name(header.name);
        const auto isThis = [&name](const std::string& other) { return sameName(other, name); };
        const bool isNamed = anyNames(steps, name);
        if (header.kind == IniLineKind::kSection && !isNamed &&
            std::none_of(preceding.begin(), preceding.end(), isThis)) {
            division.others.append(trimmedView(section)).append("\n");
            continue;
        }
        for (const std::string_view text : splitLines(section)) {
            const IniLine line = parseIniLine(text);
            if (line.kind == IniLineKind::kSection) {
                (isNamed ? division.meant : division.others) += text;
            } else if (line.kind == IniLineKind::kEntry) {
                const bool isMeantByAny = std::any_of(steps.begin(), steps.end(),
                                                      [&](const Step& step) { return isMeant(step, name, line); });
                if (isMeantByAny) {
                    division.meant += text;
                } else {
                    division.others.append(isNamed ? name : "").append("]").append(text);
                }
            }
        }
    }
    return division;
}

// Makes the steps in a plain text, and lets the library judge the lines that they are about, a few at a time: what it
// makes of those does not depend on the others, and it takes as long as it has lines to read. False when it has to be
// shown the whole.
bool ConfigurationChange::makeInParts(std::span<const Step> steps, const PrivateFile& copy, std::string& text) const {
    constexpr std::size_t kMostSteps = 32;
    if (!isPlain(text)) {
        return false;
    }
    IniText edited(text);
    while (!steps.empty()) {
        const std::span<const Step> some = steps.first(std::min(steps.size(), kMostSteps));
        const std::vector<std::string> preceding = findPreceding(text, some);
        const Division before = divide(text, some, preceding);
        std::string part = before.meant;
        if (make(some, copy, part) || !isPlain(part)) {
            return false;
        }
        for (const Step& step : some) {
            apply(step, edited);
        }
        text = edited.text();
        const Division after = divide(text, some, preceding);
        if (after.others != before.others || asTheLibraryWrites(after.meant) != asTheLibraryWrites(part)) {
            return false;
        }
        steps = steps.subspan(some.size());
    }
    return true;
}

std::optional<ChangeFailure> ConfigurationChange::findNewText(const FileText& old, std::string& text) const {
    const PrivateFile copy;
    if (!copy) {
        return ChangeFailure{ChangeFailure::kSystem, path_, errno};
    }
    const CopyForLibrary asUsers(copy.path());
    const std::string before = startsAnew_ ? std::string() : old.text;
    const std::vector<Step> steps = stepsFor(before);
    text = before;
    if (steps.empty() || makeInParts(steps, copy, text)) {
        return std::nullopt;
    }
    text = before;
    if (!make(steps, copy, text)) {
        return std::nullopt;
    }
    // With each write of its own the library cuts a long line once more, so each step begins with our text.
    text = before;
    for (const Step& step : steps) {
        if (std::optional<ChangeFailure> failure = make({&step, 1}, copy, text)) {
            return failure;
        }
    }
    return std::nullopt;
}

std::optional<ChangeFailure> ConfigurationChange::commit() const {
    constexpr int kMostTries = 10;
    if (!fitsIntoLines()) {
        return ChangeFailure{ChangeFailure::kLineTooLong, path_};
    }
    const std::string target = followLinks(path_);
    const DirectoryLock lock(target);
    for (int count = 0; count < kMostTries; ++count) {
        FileText old;
        if (!readFile(target, old)) {
            return ChangeFailure{ChangeFailure::kSystem, path_, errno};
        }
        std::string text;
        if (std::optional<ChangeFailure> failure = findNewText(old, text)) {
            return failure;
        }
        if (old.status && text == old.text) {
            return std::nullopt;
        }
        if (isDataSourceFile_ && !keepFirstText(old, lock)) {
            const int error = errno;
            return ChangeFailure{ChangeFailure::kSystem, error == EISDIR ? nameOfKept(target) : path_, error};
        }
        const ReplaceResult result = replaceFile(old, text, permission_, lock);
        switch (result.outcome) {
            case ReplaceOutcome::kDone:
                return std::nullopt;
            case ReplaceOutcome::kChangedMeanwhile:
                break;
            case ReplaceOutcome::kFailed:
                return ChangeFailure{ChangeFailure::kSystem, path_, result.error};
            default:
                return ChangeFailure{ChangeFailure::kLeftHalf, path_, result.error, 0, result.copy};
        }
    }
    return ChangeFailure{ChangeFailure::kBusy, path_};
}

}  // namespace installer
