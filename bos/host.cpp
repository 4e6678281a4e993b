#include "bos/host.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>

#include "bos/errno_mapping.h"
#include "kvlib/console.h"
#include "kvlib/debug_mask.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

namespace {

// 1 with `systemError` recorded, which may concern `name` (null for nothing).
int failed(int systemError, const char* name) {
    bosMapError(systemError, name);
    return 1;
}

int storeWhole(char* buffer, std::uint32_t size, std::string_view text) {
    return copyWhole(buffer, size, text) ? 0 : failed(EOVERFLOW, nullptr);
}

// The lines that a shell command prints, without their line ends.
std::vector<std::string> outputLines(const std::string& command) {
    std::vector<std::string> lines;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), [](FILE* f) { return pclose(f); });
    if (!pipe) {
        return lines;
    }
    std::string line;
    for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get())) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        lines.push_back(line);
        line.clear();
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

bool isPlainPattern(std::string_view pattern) {
    for (const char c : pattern) {
        if (static_cast<unsigned char>(c) < ' ' || std::strchr("$`\\'\";&|<>()", c) != nullptr) {
            return false;
        }
    }
    return !pattern.empty();
}

}  // namespace

const char* bosGetEnv(const char* name) {
    return std::getenv(name);
}

int bosGetEnv(const char16_t* name, char16_t* buffer, std::uint32_t size) {
    return orMemoryError(1, [&] {
        if (size != 0) {
            *buffer = u'\0';
        }
        const std::string narrow = fromUtf16(name, kCPLocale);
        const char* value = std::getenv(narrow.c_str());
        if (value == nullptr) {
            return failed(ENODATA, narrow.c_str());
        }
        const std::u16string wide = toUtf16(value, kCPLocale);
        if (wide.size() >= size) {
            return failed(EOVERFLOW, narrow.c_str());
        }
        wide.copy(buffer, wide.size());
        buffer[wide.size()] = u'\0';
        return 0;
    });
}

int bosGetMachineName(char* buffer, std::uint32_t size) {
    char name[HOST_NAME_MAX + 1] = "";
    if (gethostname(name, sizeof name) != 0) {
        copyCut(buffer, size, "");
        return failed(errno, nullptr);
    }
    name[HOST_NAME_MAX] = '\0';
    return storeWhole(buffer, size, name);
}

int bosGetHostUser(char* buffer, std::uint32_t size) {
    return orMemoryError(1, [&] {
        std::vector<char> space(16384);
        passwd entry = {};
        passwd* found = nullptr;
        const uid_t user = getuid();
        const bool isKnown = getpwuid_r(user, &entry, space.data(), space.size(), &found) == 0 && found != nullptr;
        return storeWhole(buffer, size, isKnown ? found->pw_name : std::to_string(user));
    });
}

int bosGetCommand(pid_t pid, char* buffer, std::uint32_t size) {
    return orMemoryError(1, [&] {
        const std::vector<std::string> lines =
            outputLines("/bin/ps -p " + std::to_string(pid) + " -ocomm= 2>/dev/null");
        const std::string name = lines.empty() ? "" : lines.front();
        copyCut(buffer, size, name);
        return name.empty() ? failed(ESRCH, nullptr) : 0;
    });
}

std::string programDirectory() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
}

int bosFindFiles(const char* pattern, std::vector<std::string>& result) {
    return orMemoryError(1, [&] {
        const bool trace = debugEnabled(DebugBit::kFile);
        if (trace) {
            printOnConsole("bosFindFiles: Search for %s\n", pattern);
        }
        result.clear();
        const bool isPlain = isPlainPattern(pattern);
        if (isPlain) {
            result = outputLines(std::string("/bin/sh 2>>/dev/null <<EOT\n/bin/ls ") + pattern + "\nEOT");
        }
        if (trace) {
            for (const std::string& name : result) {
                printOnConsole("bosFindFiles: returns fileName=%s\n", name.c_str());
            }
        }
        return result.empty() ? failed(isPlain ? ENOENT : EINVAL, pattern) : 0;
    });
}
