#include "admin/file_dsn_writer.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "admin/dialogs.h"
#include "admin/globals.h"
#include "bos/file.h"
#include "bos/host.h"
#include "catalogs/message_numbers.h"
#include "installer/configuration.h"
#include "installer/configuration_reader.h"
#include "installer/file_dsn.h"
#include "kvlib/private_error_list.h"
#include "kvlib/text.h"

namespace {

// A longer key is not written; a value is as long as its line may be.
constexpr std::size_t kLongestKey = 127;
constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

// Below this length a connection string holds no attribute.
constexpr short kShortestList = 3;

bool containsText(const std::string& text, const char* part) {
    return strcasestr(text.c_str(), part) != nullptr;
}

// The parts of `text` between the separators; empty ones vanish.
std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0) {
            parts.emplace_back(text.substr(0, end));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

void append(KvString& string, const std::string& text) {
    if (string.concat(text.c_str()) != 0) {
        throw std::bad_alloc();
    }
}

// The installer library would look for a relative path in the system's folder of file data sources, and write there.
std::string absolutePath(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
    return failure ? path : absolute.lexically_normal().string();
}

// The attributes that the items of a connection string write: items with exactly one "=". No item is both the path and
// the driver, so both are written too, as files that the administrator made always had them, and the driver's key takes
// the spelling and the braces of the second writing.
std::vector<installer::Attribute> writtenAttributes(const std::string& connectionString) {
    std::vector<installer::Attribute> attributes;
    for (const std::string& item : split(connectionString, ';')) {
        if (containsText(item, "FILEDSN") && strncasecmp(item.c_str(), "Driver", 6) == 0) {
            continue;
        }
        const std::size_t equals = item.find('=');
        if (equals != std::string::npos && equals == item.rfind('=')) {
            // A key with a blank that is there already would be written a second time.
            attributes.push_back(
                {installer::trimmed(item.substr(0, equals)), installer::trimmed(item.substr(equals + 1))});
        }
    }
    return attributes;
}

// Makes the file, readable for its owner alone, before anything stands in it.
void createPrivateFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kOwnerOnly);
    if (descriptor >= 0) {
        std::ignore = fchmod(descriptor, kOwnerOnly);
        close(descriptor);
    }
}

}  // namespace

void getFileDSNDefaultDir(char* buffer) {
    // One byte is left for the slash.
    constexpr std::size_t kSize = kFileDsnNameSize - 1;
    installer::ConfigurationReader file(installer::kDataSourceFile);
    std::string directory = file.readValue("ODBC FILE DSN", "DefaultDSNDir", kSize);
    if (directory.empty()) {
        directory = file.readValue("ODBC", "InstallDir", kSize);
    }
    if (directory.empty()) {
        const char* home = bosGetEnv("HOME");
        directory = std::string(home != nullptr ? home : "").substr(0, kSize - 1);
    }
    if (directory.empty()) {
        directory = "./";
    } else if (directory.back() != '/') {
        directory.push_back('/');
    }
    strCopy(buffer, kFileDsnNameSize, directory.c_str());
}

bool setFullPath() {
    const PrivateErrorList errors;
    if (FileDSNName == nullptr) {
        return false;
    }
    std::string path = FileDSNName;
    if (!path.starts_with('/')) {
        char directory[kFileDsnNameSize];
        getFileDSNDefaultDir(directory);
        path = directory + path;
        if (!path.starts_with('/')) {
            path = absolutePath(path);
        }
    }
    path = installer::withFileDsnExtension(path);
    if (path.size() >= kFileDsnNameSize) {
        return false;
    }
    auto* name = static_cast<char*>(std::malloc(kFileDsnNameSize));
    if (name == nullptr) {
        throw std::bad_alloc();
    }
    strCopy(name, kFileDsnNameSize, path.c_str());
    std::free(FileDSNName);
    FileDSNName = name;
    return true;
}

bool isFreePath(const char* path) {
    const PrivateErrorList errors;
    std::error_code ignored;
    return bosFileDateSize(path, nullptr, nullptr) != 0 &&
           KvErrorKeeper::getLastErrorNumber() == LibraryMessage::kFileNotFound &&
           !std::filesystem::is_symlink(std::filesystem::symlink_status(path, ignored));
}

bool createArray(const char* driver, const char* attributeText) {
    if (!setFullPath()) {
        showError(Message::kFileNameTooLong);
        return false;
    }
    TempStr.unInitialize();
    append(TempStr, "FILEDSN=");
    append(TempStr, FileDSNName);
    append(TempStr, ";DRIVER={");
    append(TempStr, driver != nullptr ? driver : "");
    append(TempStr, "};");
    const std::string text = attributeText != nullptr ? attributeText : "";
    // A first line, be it empty, that names the driver again belongs to a text that was not cut from its own first
    // line, and none of it is used then, whatever the other lines say.
    if (containsText(text.substr(0, text.find('\n')), "Driver")) {
        return true;
    }
    for (const std::string& line : split(text, '\n')) {
        if (line.find('=') != std::string::npos) {
            append(TempStr, line);
            append(TempStr, ";");
        }
    }
    return true;
}

void getAdvancedArgumentString(char** list) {
    *list = nullptr;
    // The length has 16 bits: of a longer string only that much is taken, and nothing when it reads as negative.
    const auto length = static_cast<short>(TempStr.length());
    if (length < kShortestList) {
        return;
    }
    std::string items;
    for (const char byte : TempStr.view().substr(0, static_cast<std::size_t>(length))) {
        if (byte != '{' && byte != '}') {
            items.push_back(byte == ';' ? '\0' : byte);
        }
    }
    // The list is given with the terminator of its empty last string.
    *list = static_cast<char*>(std::malloc(items.size() + 2));
    if (*list == nullptr) {
        throw std::bad_alloc();
    }
    std::memcpy(*list, items.data(), items.size());
    (*list)[items.size()] = '\0';
    (*list)[items.size() + 1] = '\0';
}

bool writeFileDsn(const std::string& path, const char* driver, const char* connectionString) {
    std::vector<installer::Attribute> attributes = writtenAttributes(connectionString);
    attributes.insert(attributes.begin(), {"Driver", driver != nullptr ? driver : ""});
    if (std::any_of(attributes.begin(), attributes.end(), [](const auto& attribute) {
            return installer::isPasswordKey(attribute.key) && !attribute.value.empty();
        })) {
        createPrivateFile(path);
    }
    bool isComplete = true;
    std::vector<installer::Attribute> written;
    for (const auto& [key, value] : attributes) {
        isComplete = key.size() <= kLongestKey && installer::writeFileDsnValue(path, key, value) && isComplete;
        std::erase_if(written, [&key = key](const auto& old) { return installer::sameName(old.key, key); });
        written.push_back({key, value});
    }
    installer::ConfigurationReader file(path);
    return isComplete && std::all_of(written.begin(), written.end(), [&file](const auto& attribute) {
               return file.readValue(installer::kFileDsnSection, attribute.key) == attribute.value;
           });
}

std::string cutAttributes(std::string_view connectionString) {
    std::string names;
    for (const std::string& item : split(connectionString, ';')) {
        const std::string key = installer::trimmed(item.substr(0, item.find('=')));
        const std::size_t brace = item.find('{', std::min(item.find('='), item.size()));
        if (brace != std::string::npos && item.find('}', brace) == std::string::npos &&
            !installer::sameName(key, "FILEDSN") && !installer::sameName(key, "DRIVER")) {
            names += (names.empty() ? "" : ", ") + key;
        }
    }
    return names;
}

bool deleteFileDSN(const char* path) {
    const PrivateErrorList errors;
    return bosFileDelete(path) == 0;
}
