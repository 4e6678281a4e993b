#include "doctor/report.h"

#include <langinfo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "doctor/utf8.h"
#include "kvlib/catalog.h"
#include "motifutil/catalog_text.h"

namespace doctor {

namespace {

nl_catd Catalog = invalidCatalog();

// With a mark in the place of what is no UTF-8 or would move a terminal's cursor.
std::string clean(const std::string& text) {
    std::string result;
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t begin = place;
        const std::int32_t letter = nextLetter(text, place);
        const bool isShown = letter >= 0x20 && (letter < 0x7F || letter > 0x9F);
        result += isShown ? text.substr(begin, place - begin) : std::string("\xEF\xBF\xBD");
    }
    return result;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char letter : clean(text)) {
        if (letter == '"' || letter == '\\') {
            result += '\\';
        }
        result += letter;
    }
    return result + "\"";
}

struct Words {
    std::string what;
    std::string why;
    std::string cure;
};

Words wordsOf(const Finding& finding) {
    std::array<char, 512> text{};
    LoadStringFromOpenFile(Catalog, finding.kind.text, text.data(), text.size());
    std::string whole = text.data();
    std::array<std::string, 3> lines;
    for (std::string& line : lines) {
        const std::size_t end = std::min(whole.find('\n'), whole.size());
        line = whole.substr(0, end);
        whole.erase(0, end + 1);
        // In each line, since what is put in may hold line ends.
        std::vector<std::string> subjects = finding.subjects;
        subjects.resize(5);
        line = withSubjects(line, {subjects[0], subjects[1], subjects[2], subjects[3], subjects[4]});
    }
    return {lines[0], lines[1], lines[2]};
}

std::string placeOf(const Finding& finding) {
    return finding.line == 0 ? finding.file : finding.file + ":" + std::to_string(finding.line);
}

// A file that is read, and what says so.
struct ReadFile {
    const char* role;
    DoctorMessage::Number text;
    std::string path;
    std::string source;  // A variable, or empty for the default.
};

std::vector<ReadFile> readFiles(const Account& account) {
    const auto firstSet = [&account](std::initializer_list<const char*> names) {
        std::string set;
        for (const char* name : names) {
            if (variable(account, name) != nullptr) {
                set += (set.empty() ? "" : ", ") + std::string(name);
            }
        }
        return set;
    };
    return {{"user", DoctorMessage::kRoleUser, userFile(account), firstSet({"ODBCINI"})},
            {"system", DoctorMessage::kRoleSystem, systemFile(account), firstSet({"ODBCSYSINI"})},
            {"drivers", DoctorMessage::kRoleDrivers, driverFile(account), firstSet({"ODBCSYSINI", "ODBCINSTINI"})},
            {"user-drivers", DoctorMessage::kRoleUserDrivers, userDriverFile(account), firstSet({"HOME"})}};
}

// Seconds with one digit behind the point, or what a locale has for one.
std::string shortSeconds(double seconds, const char* point) {
    const long tenths = std::lround(seconds * 10);
    return std::to_string(tenths / 10) + point + std::to_string(tenths % 10);
}

std::string connectionForPeople(const ConnectionFacts& facts, const std::string& name) {
    const std::string seconds = shortSeconds(facts.seconds, nl_langinfo(RADIXCHAR));
    std::string report = facts.connected
                             ? clean(doctorText(DoctorMessage::kConnects, {name, seconds, facts.server})) + "\n"
                             : clean(doctorText(DoctorMessage::kDoesNotConnect, {name, seconds})) + "\n";
    for (const std::string& record : facts.diagnostics) {
        report += "  " + clean(record) + "\n";
    }
    return report;
}

std::string connectionForScripts(const ConnectionFacts& facts) {
    std::string report = std::string("{\"connected\": ") + (facts.connected ? "true" : "false") +
                         ", \"seconds\": " + shortSeconds(facts.seconds, ".") +
                         ", \"server\": " + quoted(facts.server) + ", \"diagnostics\": [";
    const char* separator = "";
    for (const std::string& record : facts.diagnostics) {
        report += separator + quoted(record);
        separator = ", ";
    }
    return report + "]}";
}

std::size_t count(const Findings& findings, Severity severity) {
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), [severity](const Finding& finding) {
        return finding.kind.severity == severity;
    }));
}

}  // namespace

Texts::Texts() {
    Catalog = OpenStrings("odbcdoctor", nullptr);
}

Texts::~Texts() {
    CloseStrings(Catalog);
    Catalog = invalidCatalog();
}

std::string doctorText(DoctorMessage::Number number, std::initializer_list<std::string> subjects) {
    std::array<char, 512> text{};
    LoadStringFromOpenFile(Catalog, number, text.data(), text.size());
    return withSubjects(text.data(), subjects);
}

std::string reportForPeople(const Account& account, const Findings& findings, const std::string& name,
                            bool hasColours) {
    const auto coloured = [hasColours](const char* colour, const std::string& text) {
        return hasColours ? "\033[" + std::string(colour) + "m" + text + "\033[0m" : text;
    };
    std::string report = doctorText(DoctorMessage::kFilesRead, {account.userName}) + "\n";
    for (const ReadFile& file : readFiles(account)) {
        std::string line = doctorText(file.text) + " " + file.path;
        line += file.source.empty() ? "" : " (" + file.source + ")";
        line += findFile(account, file.path) == nullptr ? ", " + doctorText(DoctorMessage::kNotThere) : "";
        report += "  " + clean(line) + "\n";
    }
    if (account.connection) {
        report += "\n" + connectionForPeople(*account.connection, name);
    }
    for (const Finding& finding : findings) {
        const bool isError = finding.kind.severity == Severity::kError;
        const Words words = wordsOf(finding);
        report += "\n" + coloured(isError ? "1;31" : "1;33",
                                  doctorText(isError ? DoctorMessage::kError : DoctorMessage::kWarning));
        report += (finding.file.empty() ? "" : " " + clean(placeOf(finding))) + "\n  " +
                  coloured("1", clean(words.what)) + "\n  " + clean(words.why) + "\n  " + coloured("32", "=>") + " " +
                  clean(words.cure) + "\n";
    }
    report += "\n";
    report += findings.empty() ? doctorText(DoctorMessage::kSound)
                               : doctorText(DoctorMessage::kSum, {std::to_string(count(findings, Severity::kError)),
                                                                  std::to_string(count(findings, Severity::kWarning))});
    return report + "\n";
}

std::string reportForScripts(const Account& account, const Findings& findings) {
    std::string report = "{\"user\": " + quoted(account.userName) + ",\n \"files\": [";
    const char* separator = "\n";
    for (const ReadFile& file : readFiles(account)) {
        report += separator + std::string("  {\"role\": ") + quoted(file.role) + ", \"path\": " + quoted(file.path) +
                  ", \"variables\": " + quoted(file.source) +
                  ", \"exists\": " + (findFile(account, file.path) != nullptr ? "true" : "false") + "}";
        separator = ",\n";
    }
    report += "],\n";
    if (account.connection) {
        report += " \"connection\": " + connectionForScripts(*account.connection) + ",\n";
    }
    report += " \"findings\": [";
    separator = "\n";
    for (const Finding& finding : findings) {
        const Words words = wordsOf(finding);
        report += separator + std::string("  {\"severity\": ") +
                  (finding.kind.severity == Severity::kError ? "\"error\"" : "\"warning\"") +
                  ", \"code\": " + quoted(finding.kind.name) + ", \"about\": " + quoted(finding.about) +
                  ", \"file\": " + quoted(finding.file) + ", \"line\": " + std::to_string(finding.line) +
                  ",\n   \"what\": " + quoted(words.what) + ",\n   \"why\": " + quoted(words.why) +
                  ",\n   \"cure\": " + quoted(words.cure) + "}";
        separator = ",\n";
    }
    return report + "],\n \"errors\": " + std::to_string(count(findings, Severity::kError)) +
           ", \"warnings\": " + std::to_string(count(findings, Severity::kWarning)) + "}\n";
}

int exitStatus(const Findings& findings) {
    return findings.empty() ? 0 : count(findings, Severity::kError) > 0 ? 2 : 1;
}

}  // namespace doctor
