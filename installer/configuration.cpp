#include "installer/configuration.h"

#include <malloc.h>
#include <odbcinst.h>
#include <pwd.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>

// Where the library has its system's files: what the command "odbcinst -j" shows. Only the library's own programs have
// a declaration of it.
extern "C" char* odbcinst_system_file_path(char* buffer);

namespace installer {
namespace {

constexpr std::size_t kGrowthStep = 1024;

// A list that does not fit ends at the last whole name, so a length below the size proves nothing. It is complete for
// sure only when one more name of the greatest length, with its terminator and that of the list, would have fitted.
bool isComplete(std::size_t length, std::size_t size) {
    return length + kLongestName + 2 <= size;
}

std::vector<std::string> splitNames(std::string_view buffer) {
    std::vector<std::string> names;
    while (!buffer.empty() && buffer.front() != '\0') {
        const std::size_t end = std::min(buffer.find('\0'), buffer.size());
        names.emplace_back(buffer.substr(0, end));
        buffer.remove_prefix(std::min(end + 1, buffer.size()));
    }
    return names;
}

// The library answers from a cache that outlives other programs' edits and its own SQLWriteFileDSN, and only
// SQLWritePrivateProfileString empties it. This one deletes a section that is not there from a file that keeps nothing.
void forgetCachedValues() {
    SQLWritePrivateProfileString("ODBC", nullptr, nullptr, "/dev/null");
}

// Only an absolute path is taken as it stands; other names are the library's own files. It would make a file that is
// not there, and wait at a pipe.
bool isPathOfNoFile(const std::string& file) {
    std::error_code ignored;
    return file.starts_with('/') && !std::filesystem::is_regular_file(file, ignored);
}

std::string terminatedList(const std::vector<std::string>& items) {
    std::string list;
    for (const std::string& item : items) {
        list.append(item).push_back('\0');
    }
    list.push_back('\0');
    return list;
}

}  // namespace

void useUserConfiguration() noexcept {
    SQLSetConfigMode(ODBC_USER_DSN);
}

WritableConfiguration::WritableConfiguration() : modeBefore_(ODBC_BOTH_DSN) {
    SQLGetConfigMode(&modeBefore_);
    if (modeBefore_ == ODBC_BOTH_DSN) {
        useUserConfiguration();
    }
}

WritableConfiguration::~WritableConfiguration() {
    SQLSetConfigMode(modeBefore_);
}

void keepMemoryBetweenReads() noexcept {
    constexpr int kKeptBytes = 256 << 20;
    mallopt(M_TRIM_THRESHOLD, kKeptBytes);
}

std::string userDataSourcePath() {
    if (const char* path = std::getenv("ODBCINI"); path != nullptr && *path != '\0') {
        return path;
    }
    const passwd* entry = getpwuid(getuid());
    return std::string(entry != nullptr ? entry->pw_dir : "") + "/" + kDataSourceFile;
}

std::string dataSourcePath() {
    UWORD mode = ODBC_BOTH_DSN;
    SQLGetConfigMode(&mode);
    if (mode != ODBC_SYSTEM_DSN) {
        return userDataSourcePath();
    }
    char folder[PATH_MAX + 1] = "";
    return std::string(odbcinst_system_file_path(folder)) + "/odbc.ini";
}

bool isDataSourceFileReadable() {
    const std::string path = userDataSourcePath();
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT || errno == ENOTDIR;
    }
    return (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode)) && access(path.c_str(), R_OK) == 0;
}

NameList listKeys(const std::string& section, const std::string& file, Growth growth, std::size_t expected) {
    // A null section would list the file's sections, and an empty one has no keys.
    if (section.empty() || isPathOfNoFile(file)) {
        return {};
    }
    forgetCachedValues();
    std::size_t size = kGrowthStep;
    while (true) {
        do {
            size = growth == Growth::kByDoubling ? size * 2 : size + kGrowthStep;
        } while (!isComplete(expected, size));
        std::string buffer(size, '\0');
        const int length = SQLGetPrivateProfileString(section.c_str(), nullptr, "", buffer.data(),
                                                      static_cast<int>(size), file.c_str());
        if (length < 1) {
            return {.length = length, .isCut = false, .names = {}};
        }
        if (isComplete(static_cast<std::size_t>(length), size) || size > std::numeric_limits<int>::max() / 2) {
            return {.length = length,
                    .isCut = false,
                    .names = splitNames(std::string_view(buffer).substr(0, static_cast<std::size_t>(length)))};
        }
    }
}

std::string readValue(const std::string& section, const std::string& key, const std::string& file, std::size_t size) {
    if (section.empty() || key.empty() || isPathOfNoFile(file)) {
        return {};
    }
    forgetCachedValues();
    std::string buffer(size, '\0');
    const int length = SQLGetPrivateProfileString(section.c_str(), key.c_str(), "", buffer.data(),
                                                  static_cast<int>(size), file.c_str());
    return length < 1 ? std::string() : buffer.substr(0, buffer.find('\0'));
}

NameList listDrivers() {
    constexpr std::size_t kLargest = std::numeric_limits<WORD>::max();
    forgetCachedValues();
    std::size_t size = kGrowthStep;
    while (true) {
        size = std::min(size + kGrowthStep, kLargest);
        std::string buffer(size, '\0');
        WORD length = 0;
        if (!SQLGetInstalledDrivers(buffer.data(), static_cast<WORD>(size), &length)) {
            return {};
        }
        if (isComplete(length, size) || size == kLargest) {
            NameList drivers{.length = length,
                             .isCut = !isComplete(length, size),
                             .names = splitNames(std::string_view(buffer).substr(0, length))};
            // A list that fills the buffer was cut, within its last name as likely as not.
            if (length == size && !drivers.names.empty()) {
                drivers.names.pop_back();
            }
            return drivers;
        }
    }
}

std::string attributeList(const std::vector<Attribute>& attributes) {
    std::vector<std::string> items;
    items.reserve(attributes.size());
    for (const Attribute& attribute : attributes) {
        items.push_back(attribute.key + "=" + attribute.value);
    }
    return terminatedList(items);
}

std::vector<std::string> attributeItems(const char* list) {
    std::vector<std::string> items;
    while (list != nullptr && *list != '\0') {
        items.emplace_back(list);
        list += items.back().size() + 1;
    }
    return items;
}

std::string copyOfAttributeList(const char* list) {
    return list != nullptr ? terminatedList(attributeItems(list)) : std::string();
}

std::string oneLine(std::string_view text) {
    std::string line;
    for (const char byte : text) {
        const bool isBlank = std::string_view(" \t\r\n\v\f").find(byte) != std::string_view::npos;
        if (!isBlank || (!line.empty() && line.back() != ' ')) {
            line += isBlank ? ' ' : byte;
        }
    }
    return trimmed(line);
}

std::string trimmed(std::string_view text) {
    return std::string(trimmedView(text));
}

std::string_view trimmedView(std::string_view text) {
    // Each line of a file comes here, and find_first_not_of() would call a function for each byte.
    const auto isBlank = [](char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); };
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool isPasswordKey(std::string_view key) {
    constexpr std::array<std::string_view, 5> kMarks{"password", "passwd", "pwd", "passphrase", "secret"};
    const std::string lower = foldedName(key);
    return std::any_of(kMarks.begin(), kMarks.end(),
                       [&lower](std::string_view mark) { return lower.find(mark) != std::string::npos; });
}

bool isValidDataSourceName(const std::string& name) {
    return SQLValidDSN(name.c_str()) != 0;
}

void postError(unsigned int code, const std::string& text) {
    SQLPostInstallerError(code, text.c_str());
}

bool sameName(std::string_view a, std::string_view b) noexcept {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

std::string foldedName(std::string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return folded;
}

}  // namespace installer
