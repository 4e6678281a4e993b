#include "help/browser_platform.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "kvlib/out_of_memory.h"

namespace {

constexpr const char* kNames[] = {"netscape6", "netscape", "mozilla", "iexplorer"};
constexpr const char* kKnownPlaces[] = {
    "/opt/netscape/netscape",
    "/usr/local/bin/netscape",
    "/usr/local/netscape/netscape",
    "/usr/bin/netscape",
    "/usr/dt/bin/netscape",
    "/opt/mozilla/mozilla",
    "/usr/local/bin/mozilla",
    "/usr/local/mozilla/mozilla",
    "/usr/bin/mozilla",
    "/usr/dt/bin/mozilla",
    "/usr/local/microsoft/bin/iexplorer",
};

std::string findAlongPath() {
    const char* value = std::getenv("PATH");
    std::string_view rest = value == nullptr ? "" : value;
    while (!rest.empty()) {
        const std::string directory(rest.substr(0, rest.find(':')));
        rest.remove_prefix(std::min(directory.size() + 1, rest.size()));
        if (directory.empty()) {
            continue;
        }
        for (const char* name : kNames) {
            std::string candidate = directory + "/" + name;
            if (candidate.size() < sizeof(WWHelp_BrowserInfo::browserPath) &&
                private_WWHelp_Platform_FileIsExecutable(candidate.c_str()) == 0) {
                return candidate;
            }
        }
    }
    return {};
}

std::string findBrowser() {
    std::string path = findAlongPath();
    for (const char* place : kKnownPlaces) {
        if (path.empty() && private_WWHelp_Platform_FileIsExecutable(place) == 0) {
            path = place;
        }
    }
    return path;
}

bool isRemoteCapable(const std::string& path) {
    for (const char* name : {"netscape6", "netscape", "mozilla"}) {
        if (path == name || path.find(std::string("/") + name) != std::string::npos) {
            return true;
        }
    }
    return false;
}

int writeSignature(WWHelp_BrowserInfo* info) {
    const int length = std::snprintf(info->processSignature, sizeof info->processSignature, "pid%d@", getpid());
    const auto used = static_cast<std::size_t>(length);
    info->processSignature[sizeof info->processSignature - 1] = '\0';
    return gethostname(info->processSignature + used, sizeof info->processSignature - 1 - used);
}

// Not by the streams, which would print once more what the parent process has not printed yet.
bool redirect(int target, const char* file, int mode) {
    const int descriptor = open(file, O_WRONLY | mode);
    if (descriptor < 0 || descriptor == target) {
        return descriptor == target;
    }
    const bool done = dup2(descriptor, target) == target;
    close(descriptor);
    return done;
}

// Never returns: the process becomes the program, or ends.
[[noreturn]] void becomeProgram(const char* file, char** arguments, const char* errorFile) {
    if (redirect(STDOUT_FILENO, "/dev/null", O_APPEND) && redirect(STDERR_FILENO, errorFile, O_TRUNC)) {
        execvp(file, arguments);
    }
    _exit(255);
}

// 0 when the program ended well and left the file of its complaints empty. The file is removed.
int judge(pid_t child, const char* errorFile) {
    int status = 0;
    if (waitpid(child, &status, 0) != child) {
        return -1;
    }
    struct stat errors = {};
    const bool silent = stat(errorFile, &errors) == 0 && errors.st_size == 0;
    unlink(errorFile);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 && silent ? 0 : -1;
}

int runProgram(bool wait, const char* file, std::vector<char*>& arguments) {
    char errorFile[] = "/tmp/wwhapiXXXXXX";
    const int descriptor = mkstemp(errorFile);
    if (descriptor < 0) {
        return -1;
    }
    close(descriptor);
    const pid_t child = fork();
    if (child < 0) {
        unlink(errorFile);
        return -1;
    }
    if (child == 0) {
        becomeProgram(file, arguments.data(), errorFile);
    }
    return wait ? judge(child, errorFile) : 0;
}

int runWithArguments(bool wait, const char* file, std::va_list rest) {
    return orFailure(-1, [&] {
        std::vector<char*> arguments{const_cast<char*>(file)};
        do {
            // clang-tidy 14 knows va_start() only in the first of several files.
            arguments.push_back(va_arg(rest, char*));  // NOLINT(clang-analyzer-valist.Uninitialized)
        } while (arguments.back() != nullptr);
        return runProgram(wait, file, arguments);
    });
}

}  // namespace

int WWHelp_Platform_Startup() {
    return 0;
}

int WWHelp_Platform_Shutdown() {
    return 0;
}

int WWHelp_Platform_SetDefaultBrowserInfo(WWHelp_BrowserInfo* info) {
    return orFailure(-1, [&] {
        *info = {};
        const std::string path = findBrowser();
        if (path.empty()) {
            return -1;
        }
        std::strcpy(info->browserPath, path.c_str());
        info->remoteCapable = isRemoteCapable(path) ? 1 : 0;
        if (info->remoteCapable != 0) {
            const int failure = writeSignature(info);
            if (failure != 0) {
                return failure;
            }
        }
        info->remoteProbePassed =
            private_WWHelp_Platform_Command(1, info->browserPath, "-remote", static_cast<char*>(nullptr)) == 0 ? 1 : 0;
        return 0;
    });
}

int WWHelp_Platform_LaunchWithURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length) {
    return orFailure(-1, [&] {
        const std::string address(url, length);
        return private_WWHelp_Platform_Command(0, info->browserPath, address.c_str(), static_cast<char*>(nullptr));
    });
}

int private_WWHelp_Platform_FileIsExecutable(const char* path) {
    struct stat status = {};
    return stat(path, &status);
}

int private_WWHelp_Platform_Command(int wait, const char* file, ...) {
    std::va_list rest;
    va_start(rest, file);
    const int result = runWithArguments(wait != 0, file, rest);
    va_end(rest);
    return result;
}
