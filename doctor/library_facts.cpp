#include "doctor/library_facts.h"

#include <dlfcn.h>
#include <elf.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>

#include "doctor/elf_file.h"
#include "doctor/names.h"

namespace doctor {

namespace {

bool isThere(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

// What ldconfig wrote of the libraries in the loader's directories: names and paths (glibc's dl-cache.h).
std::multimap<std::string, std::string> readLoaderCache() {
    constexpr std::string_view kMagic = "glibc-ld.so.cache1.1";
    constexpr std::size_t kHeaderSize = 48;
    struct Entry {
        std::int32_t flags;
        std::uint32_t name;
        std::uint32_t path;
        std::uint32_t system;
        std::uint64_t capabilities;
    };
    std::ifstream stream("/etc/ld.so.cache", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    std::multimap<std::string, std::string> cache;
    const std::size_t begin = text.find(kMagic);
    std::uint32_t count = 0;
    if (begin == std::string::npos || text.size() < begin + kHeaderSize) {
        return cache;
    }
    std::memcpy(&count, text.data() + begin + kMagic.size(), sizeof count);
    for (std::size_t number = 0; number < count; ++number) {
        const std::size_t place = begin + kHeaderSize + number * sizeof(Entry);
        Entry entry{};
        if (place + sizeof entry > text.size()) {
            break;
        }
        std::memcpy(&entry, text.data() + place, sizeof entry);
        if (begin + std::max(entry.name, entry.path) < text.size()) {
            cache.emplace(text.c_str() + begin + entry.name, text.c_str() + begin + entry.path);
        }
    }
    return cache;
}

Folders split(const std::string& path, const std::string& origin) {
    Folders folders;
    std::size_t begin = 0;
    while (begin < path.size()) {
        const std::size_t end = std::min(path.find_first_of(":;", begin), path.size());
        std::string folder = path.substr(begin, end - begin);
        for (const char* mark : {"$ORIGIN", "${ORIGIN}"}) {
            if (const std::size_t place = folder.find(mark); place != std::string::npos) {
                folder.replace(place, std::strlen(mark), origin);
            }
        }
        folders.push_back(folder);
        begin = end + 1;
    }
    return folders;
}

Folders loaderFolders() {
    const char* path = std::getenv("LD_LIBRARY_PATH");
    return split(path != nullptr ? path : "", ".");
}

// Follows what a library needs, and what that needs, as the loader does.
class Walk {
public:
    Walk(LibraryFacts& facts, const Folders& otherFolders) : facts_(facts), otherFolders_(otherFolders) {}

    void visit(const std::string& path, const ElfFile& file, Folders inherited) {
        const std::string origin = folderOf(path);
        Folders folders = file.runpath.empty() ? inherited : Folders();
        if (file.runpath.empty()) {
            const Folders own = split(file.rpath, origin);
            folders.insert(folders.begin(), own.begin(), own.end());
            inherited = folders;
        }
        for (const Folders& more : {loaderFolders(), split(file.runpath, origin)}) {
            folders.insert(folders.end(), more.begin(), more.end());
        }
        for (const std::string& name : file.needed) {
            need(name, path, folders, inherited);
        }
        for (const NeededVersion& version : file.neededVersions) {
            const auto found = known_.find(version.library);
            if (found != known_.end() && !found->second.path.empty() && !found->second.file.versions.empty() &&
                !found->second.file.versions.contains(version.version)) {
                facts_.absentVersions.push_back({version.version, found->second.path, path});
            }
        }
    }

    // What the library has from others that are drivers themselves.
    void addDrivers() const {
        for (const auto& [name, known] : known_) {
            if (isDriver(known.file.functions) && !isManagerName(known.path)) {
                facts_.functions.insert(known.file.functions.begin(), known.file.functions.end());
                facts_.driverFiles.push_back(known.path);
            }
        }
    }

private:
    struct Known {
        std::string path;
        ElfFile file;
    };

    void need(const std::string& name, const std::string& neededBy, const Folders& folders, const Folders& inherited) {
        if (known_.contains(name)) {
            return;
        }
        std::string path = name.find('/') != std::string::npos ? (isThere(name) ? name : "") : findIn(folders, name);
        path = path.empty() && name.find('/') == std::string::npos ? findByLoader(name) : path;
        Known& known = known_[name];
        if (path.empty()) {
            Folders others = otherFolders_;
            others.push_back(folderOf(neededBy));
            facts_.absent.push_back({name, neededBy, findIn(others, name)});
            return;
        }
        known = {path, readElf(path)};
        visit(path, ElfFile(known.file), inherited);
    }

    LibraryFacts& facts_;
    const Folders& otherFolders_;
    std::map<std::string, Known> known_;
};

}  // namespace

bool isDriver(const std::set<std::string>& functions) {
    return functions.contains("SQLConnect") || functions.contains("SQLDriverConnect") ||
           functions.contains("SQLConnectW") || functions.contains("SQLDriverConnectW");
}

std::string findIn(const Folders& folders, const std::string& name) {
    for (const std::string& folder : folders) {
        std::string path = folder;
        path.append("/").append(name);
        if (isThere(path) && readElf(path).kind == ElfFile::kLibrary) {
            return path;
        }
    }
    return {};
}

std::string ownMachine() {
    return readElf("/proc/self/exe").machine;
}

std::string findByLoader(const std::string& name) {
    static const std::multimap<std::string, std::string> cache = readLoaderCache();
    static std::map<std::string, std::string> answers;
    if (const auto known = answers.find(name); known != answers.end()) {
        return known->second;
    }
    std::string& answer = answers[name];
    answer = findIn(loaderFolders(), name);
    const auto [begin, end] = cache.equal_range(name);
    for (auto entry = begin; entry != end && answer.empty(); ++entry) {
        answer = readElf(entry->second).kind == ElfFile::kLibrary ? entry->second : "";
    }
    return answer = answer.empty() ? findIn({"/lib", "/usr/lib", "/lib64", "/usr/lib64"}, name) : answer;
}

LibraryFacts examineLibrary(const std::string& name, const std::string& moduleFolder, const Folders& otherFolders) {
    LibraryFacts facts;
    facts.path = name;
    if (name.find('/') == std::string::npos) {
        facts.path = isThere(moduleFolder + "/" + name) ? moduleFolder + "/" + name : findByLoader(name);
    }
    if (facts.path.empty()) {
        return facts;
    }
    const ElfFile file = readElf(facts.path);
    facts.functions = file.functions;
    facts.machine = file.machine;
    facts.error = file.error;
    switch (file.kind) {
        case ElfFile::kUnreadable:
            facts.kind =
                file.error == ENOENT || file.error == ENOTDIR ? LibraryKind::kMissing : LibraryKind::kUnreadable;
            break;
        case ElfFile::kOther:
            facts.kind = LibraryKind::kNoLibrary;
            break;
        case ElfFile::kOtherMachine:
            facts.kind = LibraryKind::kOtherMachine;
            break;
        case ElfFile::kLibrary:
            facts.kind = LibraryKind::kLibrary;
            facts.driverFiles = {facts.path};
            Walk walk(facts, otherFolders);
            walk.visit(facts.path, file, {});
            walk.addDrivers();
    }
    return facts;
}

}  // namespace doctor
