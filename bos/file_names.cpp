#include "bos/file_names.h"

#include <strings.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "bos/errno_mapping.h"
#include "kvlib/console.h"
#include "kvlib/debug_mask.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

namespace {

// The variables that replace a configuration file's path, and when they do.
struct ConfigurationFile {
    const char* names[2];      // the second may be null
    const char* variables[2];  // the first one that is set counts; the second may be null
    bool anyCase;
    // For the ODBC files the variable wins over the home directory and the file must exist; for the library's own
    // files the home directory wins and the variable is the fallback. Both precedences are wanted.
    bool variableWins;
};

constexpr ConfigurationFile kConfigurationFiles[] = {
    {{"ODBC.INI", ".odbc.ini"}, {"ODBCINI", "ODBC_INI"}, true, true},
    {{"ODBCINST.INI", ".odbcinst.ini"}, {"ODBCINST", "ODBCINSTINI"}, true, true},
    {{".kvlib.ini", nullptr}, {"KVLIB_INI", nullptr}, false, false},
    {{".system.defaults", nullptr}, {"KV_SYSTEM_INI", nullptr}, false, false},
};
constexpr const ConfigurationFile& kOdbcInstIni = kConfigurationFiles[1];

bool isNameOf(const ConfigurationFile& file, const char* name) {
    const auto equals = file.anyCase ? strcasecmp : strcmp;
    for (const char* known : file.names) {
        if (known != nullptr && equals(name, known) == 0) {
            return true;
        }
    }
    return false;
}

const ConfigurationFile* recognise(const char* name) {
    for (const ConfigurationFile& file : kConfigurationFiles) {
        if (isNameOf(file, name)) {
            return &file;
        }
    }
    return nullptr;
}

const char* overridingValue(const ConfigurationFile& file) {
    for (const char* variable : file.variables) {
        const char* value = variable == nullptr ? nullptr : std::getenv(variable);
        if (value != nullptr) {
            return value;
        }
    }
    return nullptr;
}

bool exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

std::string join(std::string directory, std::string_view name) {
    if (directory.empty() || directory.back() != '/') {
        directory += '/';
    }
    return directory.append(name);
}

// Without "HOME" the names stay relative to the current directory.
std::string inHome(const std::string& name) {
    const char* home = std::getenv("HOME");
    return home == nullptr ? name : join(home, name);
}

int tooLong(const std::string& path) {
    bosMapError(ENAMETOOLONG, path.c_str());
    return 1;
}

// 0, or 1 with an empty path when `path` does not fit.
int storePath(char* buffer, const std::string& path) {
    return copyWhole(buffer, kPathSize, path) ? 0 : tooLong(path);
}

std::string currentDirectory() {
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) == nullptr ? "." : buffer;
}

std::string joined(const char* directory, const char* name) {
    if (directory == nullptr || *directory == '\0' || *name == '/') {
        return name;
    }
    return join(directory, name);
}

bool hasExtension(const std::string& path) {
    const std::size_t nameAt = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
    // A leading dot hides a file and begins no extension.
    return path.find('.', nameAt + 1) != std::string::npos;
}

std::string temporaryDirectory() {
    for (const char* variable : {"TMPDIR", "KV_TMPDIR"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && access(value, W_OK | X_OK) == 0) {
            return value;
        }
    }
    return "/tmp";
}

}  // namespace

ResolvedName resolveFileName(const std::string& name, bool recogniseNames, bool homeRelative) {
    const ConfigurationFile* file = recogniseNames ? recognise(name.c_str()) : nullptr;
    if (file == nullptr && !homeRelative) {
        return {name};
    }
    const bool trace = debugEnabled(DebugBit::kFile);
    if (trace) {
        printOnConsole("bosfopen: Replacing %s ", name.c_str());
    }
    ResolvedName resolved{inHome(name)};
    if (file != nullptr && (file->variableWins || !exists(resolved.path))) {
        if (const char* value = overridingValue(*file)) {
            resolved.path = value;
        }
    }
    if (trace) {
        printOnConsole("with %s\n", resolved.path.c_str());
    }
    if (file != nullptr && file->variableWins && !exists(resolved.path)) {
        resolved.systemError = errno;
    }
    return resolved;
}

bool isDriverFileName(std::string_view name) {
    const char* value = std::getenv(kOdbcInstIni.variables[0]);
    return isNameOf(kOdbcInstIni, std::string(name).c_str()) || (value != nullptr && name == value);
}

std::string temporaryName() {
    constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const std::string stem = join(temporaryDirectory(), "kv");
    for (;;) {
        // The clock stands in where the system gives no random numbers.
        auto number = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        [[maybe_unused]] const ssize_t got = getrandom(&number, sizeof number, GRND_NONBLOCK);
        std::string path = stem;
        for (int i = 0; i < 8; ++i, number /= kCharacters.size()) {
            path += kCharacters[number % kCharacters.size()];
        }
        if (!exists(path)) {
            return path;
        }
    }
}

int boshpath(char* name) {
    return orMemoryError(1, [&] {
        const char* home = std::getenv("HOME");
        const char* directory = home != nullptr ? home : std::getenv("KV");
        const std::string path = join(directory != nullptr ? directory : currentDirectory(), name);
        return path.size() >= kPathSize ? tooLong(path) : storePath(name, path);
    });
}

int bosfpath(char* path, const char* directory, const char* name) {
    return orMemoryError(1, [&] { return storePath(path, joined(directory, name)); });
}

int bospath(char* path, const char* directory, const char* name, const char* extension) {
    return orMemoryError(1, [&] {
        const bool trace = debugEnabled(DebugBit::kFile);
        if (trace) {
            printOnConsole("BOSPATH: dir:%s name:%s default_ext:%s\n", directory == nullptr ? "" : directory, name,
                           extension == nullptr ? "" : extension);
        }
        std::string result = joined(directory, name);
        if (trace) {
            printOnConsole("bospath: after bosfpath path:%s\n", result.c_str());
        }
        if (extension != nullptr && *extension != '\0' && !hasExtension(result)) {
            result.append(*extension == '.' ? "" : ".").append(extension);
        }
        return storePath(path, result);
    });
}

int bosParseName(const char* path, char* directory, char* name) {
    return orMemoryError(1, [&] {
        const std::string_view whole = path;
        const std::size_t slash = whole.rfind('/');
        const bool hasDirectory = slash != std::string_view::npos;
        const std::string directoryPart(hasDirectory ? whole.substr(0, slash == 0 ? 1 : slash) : "");
        const std::string namePart(hasDirectory ? whole.substr(slash + 1) : whole);
        const bool fits = directoryPart.size() < kPathSize && namePart.size() < kPathSize;
        if (directory != nullptr) {
            copyCut(directory, kPathSize, fits ? directoryPart : "");
        }
        if (name != nullptr) {
            copyCut(name, kPathSize, fits ? namePart : "");
        }
        return fits ? 0 : tooLong(path);
    });
}
