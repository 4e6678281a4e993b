#include "bos/host.h"

#include <pwd.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "kvlib/debug_mask.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

namespace {

// The lines that a shell command prints, without their line ends.
std::vector<std::string> outputLines(const std::string& command) {
    std::vector<std::string> lines;
    std::fflush(stdout);
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
        const char* value = std::getenv(fromUtf16(name, kCPLocale).c_str());
        if (value == nullptr) {
            return 1;
        }
        const std::u16string wide = toUtf16(value, kCPLocale);
        if (wide.size() >= size) {
            return 1;
        }
        wide.copy(buffer, wide.size());
        buffer[wide.size()] = u'\0';
        return 0;
    });
}

int bosGetMachineName(char* buffer, std::uint32_t size) {
    char name[HOST_NAME_MAX + 1] = "";
    const int result = gethostname(name, sizeof name);
    name[HOST_NAME_MAX] = '\0';
    return copyWhole(buffer, size, result == 0 ? name : "") && result == 0 ? 0 : 1;
}

int bosGetHostUser(char* buffer, std::uint32_t size) {
    return orMemoryError(1, [&] {
        std::vector<char> space(16384);
        passwd entry = {};
        passwd* found = nullptr;
        const uid_t user = getuid();
        const bool isKnown = getpwuid_r(user, &entry, space.data(), space.size(), &found) == 0 && found != nullptr;
        return copyWhole(buffer, size, isKnown ? found->pw_name : std::to_string(user)) ? 0 : 1;
    });
}

int bosGetCommand(pid_t pid, char* buffer, std::uint32_t size) {
    return orMemoryError(1, [&] {
        const std::vector<std::string> lines =
            outputLines("/bin/ps -p " + std::to_string(pid) + " -ocomm= 2>/dev/null");
        const std::string name = lines.empty() ? "" : lines.front();
        copyCut(buffer, size, name);
        return name.empty() ? 1 : 0;
    });
}

int bosFindFiles(const char* pattern, std::vector<std::string>& result) {
    return orMemoryError(1, [&] {
        const bool trace = debugEnabled(DebugBit::kFile);
        if (trace) {
            std::printf("bosFindFiles: Search for %s\n", pattern);
        }
        result.clear();
        if (isPlainPattern(pattern)) {
            result = outputLines(std::string("/bin/sh 2>>/dev/null <<EOT\n/bin/ls ") + pattern + "\nEOT");
        }
        if (trace) {
            for (const std::string& name : result) {
                std::printf("bosFindFiles: returns fileName=%s\n", name.c_str());
            }
        }
        return result.empty() ? 1 : 0;
    });
}
