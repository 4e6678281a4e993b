#include "bos/library.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "catalogs/message_numbers.h"
#include "kvlib/catalog.h"
#include "kvlib/console.h"
#include "kvlib/debug_mask.h"
#include "kvlib/error.h"
#include "kvlib/error_report.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

namespace {

constexpr std::string_view kLibrarySuffix = ".so";

bool isWritable(const struct stat& status) {
    if (status.st_uid == getuid()) {
        return (status.st_mode & S_IWUSR) != 0;
    }
    // The owner's id and not the file's group is compared with the caller's group on purpose: all tools of the
    // product judge by this rule, and they must agree on which files are read-only.
    return (status.st_mode & (status.st_uid == getgid() ? S_IWGRP : S_IWOTH)) != 0;
}

bool isRegularFile(const char* name) {
    return (bosfattr(name) & FileKind::kRegular) != 0;
}

std::string searchList(std::uint32_t flags) {
    std::string list;
    const auto addVariable = [&list](const char* variable) {
        if (const char* value = std::getenv(variable)) {
            list.append(value).append(":");
        }
    };
    if ((flags & LocateFlag::kCurrentDirectory) != 0) {
        list += ".:";
    }
    if ((flags & LocateFlag::kHome) != 0) {
        addVariable("HOME");
    }
    if ((flags & LocateFlag::kProduct) != 0) {
        addVariable("KV");
        addVariable("KVLIB");
    }
    if ((flags & LocateFlag::kLibraries) != 0) {
        addVariable("LD_LIBRARY_PATH");
        addVariable("LD_RUN_PATH");
        list += "/usr/local/lib:";
    }
    if ((flags & LocateFlag::kPath) != 0) {
        addVariable("PATH");
    }
    return list;
}

bool isHit(const std::string& candidate) {
    if (debugEnabled(DebugBit::kLocate)) {
        printOnConsole("LocateFile: %s\n", candidate.c_str());
    }
    return candidate.size() < kPathSize && isRegularFile(candidate.c_str());
}

// The first hit along the colon-separated `list`, or "".
std::string searchAlong(std::string_view list, const std::string& name, bool parentsToo) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        std::string directory(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
        if (directory.empty()) {
            continue;
        }
        if (directory.back() != '/') {
            directory += '/';
        }
        for (const char* step : {"", "../"}) {
            std::string candidate = directory;
            candidate.append(step).append(name);
            if (isHit(candidate)) {
                return candidate;
            }
            if (!parentsToo) {
                break;
            }
        }
    }
    return {};
}

// The first hit, or "".
std::string locate(const char* name, std::uint32_t flags) {
    if (isRegularFile(name)) {
        return std::strlen(name) < kPathSize ? name : "";
    }
    return searchAlong(searchList(flags), name, (flags & LocateFlag::kLibraries) != 0);
}

std::string libraryFileName(std::string_view name, bool addVersion) {
    const std::size_t end = name.find_last_not_of(' ');
    std::string file(name.substr(0, end == std::string_view::npos ? 0 : end + 1));
    if (addVersion) {
        char suffix[3] = "";
        bosdllname(suffix);
        file += suffix;
    }
    // Anywhere in the name: "libx.so.2" is complete.
    if (file.find(kLibrarySuffix) == std::string::npos) {
        file += kLibrarySuffix;
    }
    return file;
}

void reportLoaderError(const std::string& path) {
    const char* reason = dlerror();
    const std::string detail = reason == nullptr ? "" : reason;
    KvError* error = addError(LibraryMessage::kLibraryNotLoadable);
    error->appendText((": " + path + ": " + detail).c_str());
    if (debugEnabled(DebugBit::kLibrary)) {
        printOnConsole("Unable to open Shared Library:%s\n", path.c_str());
        printOnConsole("Loader Error: %s\n", detail.c_str());
    }
}

// The path of the library, or "".
std::string searchLibrary(std::string_view name, bool addVersion) {
    const std::string file = libraryFileName(name, addVersion);
    const bool trace = debugEnabled(DebugBit::kLibrary);
    if (trace) {
        printOnConsole("LoadLibrary: Searching for %s.\n", file.c_str());
    }
    std::string path = locate(file.c_str(), LocateFlag::kProduct | LocateFlag::kLibraries);
    if (trace && path.empty()) {
        printOnConsole("Unable to open Shared Library: %s\n", file.c_str());
    } else if (trace) {
        printOnConsole("LoadLibrary: Found library %s.\n", path.c_str());
    }
    return path;
}

void* loadLibrary(std::string_view name, bool addVersion) {
    const std::string path = searchLibrary(name, addVersion);
    if (path.empty()) {
        return nullptr;
    }
    // Without a slash the loader would search its own directories and not take the file found.
    void* handle = dlopen(path.find('/') == std::string::npos ? ("./" + path).c_str() : path.c_str(), RTLD_NOW);
    if (handle == nullptr) {
        reportLoaderError(path);
    }
    return handle;
}

}  // namespace

std::uint32_t bosfattr(const char* name) {
    if (std::strcmp(name, "..") == 0) {
        return FileKind::kDirectory;
    }
    struct stat status = {};
    if (stat(name, &status) != 0) {
        return errno == ENOENT ? FileKind::kMissing : FileKind::kUnreadable;
    }
    if (S_ISDIR(status.st_mode)) {
        return FileKind::kDirectory;
    }
    if (!S_ISREG(status.st_mode)) {
        return FileKind::kOther;
    }
    return isWritable(status) ? FileKind::kRegular : FileKind::kRegular | FileKind::kReadOnly;
}

std::uint32_t bosLocateFile(char* result, const char* name, std::uint32_t flags) {
    const std::string found = orMemoryError(std::string(), [&] { return locate(name, flags); });
    if (result != nullptr) {
        strCopy(result, found.c_str(), found.size());
    }
    return found.empty() ? 1 : 0;
}

std::string locateLibrary(const char* name) {
    return searchLibrary(name, false);
}

void* bosLoadLibrary(const char* name, int addVersion) {
    return orMemoryError<void*>(nullptr, [&] { return loadLibrary(name, addVersion != 0); });
}

void* bosLoadLibrary(const char16_t* name, int addVersion) {
    return orMemoryError<void*>(nullptr, [&] { return loadLibrary(fromUtf16(name, kCPLocale), addVersion != 0); });
}
