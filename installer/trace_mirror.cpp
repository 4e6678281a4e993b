#include "installer/trace_mirror.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "installer/configuration.h"

namespace installer {

namespace {

constexpr std::string_view kSection = "ODBC";
constexpr std::string_view kStateKey = "Trace";
constexpr std::string_view kFileKey = "TraceFile";

// Keys of ours, which the driver manager does not know: what was there before we came, and what is before the names of
// the person's own settings while ours stand in their place.
constexpr std::string_view kMark = "VarnholtTracing";
constexpr std::string_view kKept = "VarnholtKept";

// The values of the mark. The second word says that a line had no end, which it got.
constexpr std::string_view kWasSection = "section";
constexpr std::string_view kWasText = "text";
constexpr std::string_view kWasNothing = "nothing";
constexpr std::string_view kOpen = " open";

using Lines = std::vector<std::string>;

Lines linesOf(std::string_view text) {
    const std::vector<std::string_view> lines = splitLines(text);
    return {lines.begin(), lines.end()};
}

std::string textOf(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line;
    }
    return text;
}

bool isHeader(const std::string& line) {
    return parseIniLine(line).kind == IniLineKind::kSection;
}

bool isEntry(const std::string& line, std::string_view key) {
    const IniLine parsed = parseIniLine(line);
    return parsed.kind == IniLineKind::kEntry && sameName(parsed.name, key);
}

// The lines of the first section [ODBC], the only one that counts, behind its header.
struct Section {
    Lines::iterator begin, end;
};
std::optional<Section> findSection(Lines& lines) {
    const auto header = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return isHeader(line) && sameName(parseIniLine(line).name, kSection);
    });
    if (header == lines.end()) {
        return std::nullopt;
    }
    return Section{header + 1, std::find_if(header + 1, lines.end(), isHeader)};
}

std::string valueIn(const Section& section, std::string_view key) {
    const auto line =
        std::find_if(section.begin, section.end, [key](const std::string& other) { return isEntry(other, key); });
    return line == section.end ? std::string() : std::string(parseIniLine(*line).value);
}

std::string personsFile() {
    // The driver manager asks HOME, and not who the user is.
    const char* home = std::getenv("HOME");
    return home == nullptr ? std::string() : std::string(home) + "/.odbcinst.ini";
}

std::string systemsFile() {
    const char* folder = std::getenv("ODBCSYSINI");
    return (folder == nullptr ? std::string("/etc") : std::string(folder)) + "/odbcinst.ini";
}

Lines linesOfFile(const std::string& path) {
    FileText file;
    return !path.empty() && readFile(followLinks(path), file) ? linesOf(file.text) : Lines();
}

}  // namespace

bool isTraceOn(std::string_view value) {
    return !value.empty() &&
           (value.front() == '1' || value.front() == 'Y' || value.front() == 'y' || sameName(value, "On"));
}

int traceWritingError(const std::string& path) {
    const bool isThere = access(path.c_str(), F_OK) == 0;
    const std::string folder = std::filesystem::path(path).parent_path();
    const bool isWritable = isThere ? !std::filesystem::is_directory(path) && access(path.c_str(), W_OK) == 0
                                    : access(folder.c_str(), W_OK | X_OK) == 0;
    if (isWritable) {
        return 0;
    }
    return isThere && std::filesystem::is_directory(path) ? EISDIR : errno;
}

TraceState traceState() {
    for (const std::string& path : {systemsFile(), personsFile()}) {
        Lines lines = linesOfFile(path);
        if (const std::optional<Section> section = findSection(lines)) {
            const std::string file = valueIn(*section, kFileKey);
            return {isTraceOn(valueIn(*section, kStateKey)), file.empty() ? kDefaultTraceFile : file, path};
        }
    }
    return {};
}

std::optional<TraceObstacle> findTraceObstacle(const std::string& traceFile) {
    const std::string system = systemsFile();
    Lines lines = linesOfFile(system);
    if (findSection(lines)) {
        return TraceObstacle{TraceObstacle::kSystemDecides, system};
    }
    if (traceFile.empty()) {
        return TraceObstacle{TraceObstacle::kNoPath};
    }
    if (traceFile.front() != '/') {
        return TraceObstacle{TraceObstacle::kRelativePath, traceFile};
    }
    if (traceFile.size() > kLongestTracePath) {
        return TraceObstacle{TraceObstacle::kPathTooLong, traceFile};
    }
    if (const int error = traceWritingError(traceFile)) {
        return TraceObstacle{TraceObstacle::kNotWritable, traceFile, error};
    }
    return std::nullopt;
}

std::string withTracing(std::string_view text, const std::string& traceFile, bool isNew) {
    bool wasNew = false;
    Lines lines = linesOf(withoutTracing(text, wasNew));
    std::optional<Section> section = findSection(lines);
    std::string mark(section ? kWasSection : isNew || wasNew ? kWasNothing : kWasText);
    const bool isWindows = !lines.empty() && lines.front().ends_with("\r\n");
    const std::string end = isWindows ? "\r\n" : "\n";
    const auto before = section ? section->begin : lines.end();
    if (before != lines.begin() && !(before - 1)->ends_with('\n')) {
        *(before - 1) += end;
        mark += kOpen;
    }
    Lines added;
    if (section) {
        for (auto line = section->begin; line != section->end; ++line) {
            if (isEntry(*line, kStateKey) || isEntry(*line, kFileKey)) {
                line->insert(line->find_first_not_of(" \t"), kKept);
            }
        }
    } else {
        added.push_back("[" + std::string(kSection) + "]" + end);
    }
    for (const std::string& line :
         {std::string(kStateKey) + "=1", std::string(kFileKey) + "=" + traceFile, std::string(kMark) + "=" + mark}) {
        added.push_back(line + end);
    }
    lines.insert(before, added.begin(), added.end());
    return textOf(lines);
}

std::string withoutTracing(std::string_view text, bool& isNew) {
    Lines lines = linesOf(text);
    const std::optional<Section> section = findSection(lines);
    const std::string mark = section ? valueIn(*section, kMark) : "";
    isNew = mark.starts_with(kWasNothing);
    if (mark.empty()) {
        return std::string(text);
    }
    // Ours are the first of their names.
    Lines kept;
    std::vector<std::string_view> ours{kStateKey, kFileKey, kMark};
    for (auto line = section->begin; line != section->end; ++line) {
        const auto own =
            std::find_if(ours.begin(), ours.end(), [&](std::string_view key) { return isEntry(*line, key); });
        if (own != ours.end()) {
            ours.erase(own);
            continue;
        }
        const std::size_t place = line->find_first_not_of(" \t");
        if (place != std::string::npos && line->compare(place, kKept.size(), kKept) == 0) {
            line->erase(place, kKept.size());
        }
        kept.push_back(*line);
    }
    const bool wasThere = mark.starts_with(kWasSection);
    const bool goes = !wasThere && kept.empty();
    Lines result(lines.begin(), goes ? section->begin - 1 : section->begin);
    result.insert(result.end(), kept.begin(), kept.end());
    result.insert(result.end(), section->end, lines.end());
    const bool isLast = section->end == lines.end() && kept.empty();
    if (mark.ends_with(kOpen) && isLast && !result.empty()) {
        std::string& last = result.back();
        last.erase(last.find_last_not_of("\r\n") + 1);
    }
    return textOf(result);
}

std::optional<ChangeFailure> mirrorTracing(const std::optional<std::string>& traceFile) {
    const std::string path = followLinks(personsFile());
    const auto failed = [&path](int error) { return ChangeFailure{ChangeFailure::kSystem, path, error}; };
    if (path.empty()) {
        return failed(ENOENT);
    }
    constexpr int kTries = 10;
    for (int i = 0; i < kTries; ++i) {
        const DirectoryLock lock(path);
        FileText old;
        if (!readFile(path, old)) {
            return failed(errno);
        }
        bool isNew = false;
        const std::string text =
            traceFile ? withTracing(old.text, *traceFile, !old.status) : withoutTracing(old.text, isNew);
        if (text == old.text) {
            return std::nullopt;
        }
        if (text.empty() && isNew) {
            return unlink(path.c_str()) == 0 ? std::nullopt : std::optional(failed(errno));
        }
        const ReplaceResult result = replaceFile(old, text, Permission::kKept, lock);
        switch (result.outcome) {
            case ReplaceOutcome::kDone:
                return std::nullopt;
            case ReplaceOutcome::kFailed:
                return failed(result.error);
            case ReplaceOutcome::kLeftHalf:
                return ChangeFailure{ChangeFailure::kLeftHalf, path, result.error, 0, result.copy};
            case ReplaceOutcome::kChangedMeanwhile:
                break;
        }
    }
    return ChangeFailure{ChangeFailure::kBusy, path};
}

}  // namespace installer
