#include "doctor/snapshot.h"

#include <dlfcn.h>
#include <glob.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "bos/library.h"
#include "doctor/driver_list.h"
#include "doctor/ini_view.h"
#include "doctor/key_findings.h"
#include "doctor/library_keys.h"
#include "doctor/names.h"
#include "installer/configuration.h"
#include "installer/driver_process.h"
#include "installer/file_replacement.h"
#include "installer/trace_mirror.h"

namespace doctor {

namespace {

constexpr std::chrono::seconds kPatience(2);

std::vector<std::string> matches(const std::string& pattern) {
    glob_t found{};
    std::vector<std::string> paths;
    if (glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found) == 0) {
        paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    globfree(&found);
    std::sort(paths.begin(), paths.end());
    return paths;
}

// What is no regular file is not opened: a pipe would wait for ever.
ConfigFile readConfigFile(const std::string& path) {
    struct stat status {};
    ConfigFile file{path};
    if (stat(path.c_str(), &status) != 0) {
        file.error = errno == ENOTDIR ? ENOENT : errno;
    } else {
        file.isRegular = S_ISREG(status.st_mode);
        file.owner = status.st_uid;
        file.mode = status.st_mode & 07777U;
        installer::FileText text;
        if (file.isRegular && !installer::readFile(installer::followLinks(path), text)) {
            file.error = errno;
        }
        file.text = text.text;
    }
    return file;
}

void addUser(Account& account) {
    account.user = geteuid();
    account.userName = std::to_string(account.user);
    setpwent();
    while (const passwd* entry = getpwent()) {
        const std::string home = entry->pw_dir;
        if (entry->pw_uid == account.user && account.home.empty()) {
            account.home = home;
            account.userName = entry->pw_name;
        } else if (access((home + "/.odbc.ini").c_str(), F_OK) == 0) {
            const std::string path = home + "/.odbc.ini";
            account.otherFiles[path] = readConfigFile(path).text;
        }
    }
    endpwent();
    account.otherFiles.erase(account.home + "/.odbc.ini");
    for (const char* name : {"HOME", "ODBCINI", "ODBCSYSINI", "ODBCINSTINI", "ODBC_INI"}) {
        if (const char* value = std::getenv(name)) {
            account.variables[name] = value;
        }
    }
}

void addFiles(Account& account) {
    std::vector<std::string> paths{userFile(account), systemFile(account), driverFile(account),
                                   userDriverFile(account)};
    std::set<std::string> homes{account.home};
    for (const char* name : {"ODBCSYSINI", "ODBCINI"}) {
        if (const std::string* value = variable(account, name); value != nullptr && !value->empty()) {
            paths.push_back(*value);
        }
    }
    if (const std::string* home = variable(account, "HOME")) {
        homes.insert(*home);
    }
    for (const std::string& home : homes) {
        for (const char* name :
             {"/.odbc.ini", "/.odbcinst.ini", "/odbc.ini", "/odbcinst.ini", "/.odbc", "/.ODBC.ini"}) {
            paths.push_back(home + name);
        }
    }
    for (const char* folder : {"/etc", "/etc/unixODBC", "/etc/odbc"}) {
        paths.push_back(folder + std::string("/odbc.ini"));
        paths.push_back(folder + std::string("/odbcinst.ini"));
    }
    for (const std::string& path : paths) {
        if (!account.files.contains(path)) {
            account.files.emplace(path, readConfigFile(path));
        }
    }
}

// Where libraries lie that somebody built or unpacked; the loader searches only some of it.
Folders librariesOfOthers() {
    Folders folders;
    for (const char* pattern : {"/usr/local/lib", "/usr/local/lib64", "/opt/*/lib", "/opt/*/lib64", "/opt/*/*/lib",
                                "/opt/*/*/lib64", "/usr/local/*/lib"}) {
        const std::vector<std::string> found = matches(pattern);
        folders.insert(folders.end(), found.begin(), found.end());
    }
    return folders;
}

// The directories of configuration files that are written into a driver manager.
std::vector<std::string> foldersIn(const std::string& library) {
    std::ifstream stream(library, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    std::set<std::string> folders;
    for (std::size_t place = text.find("/etc"); place != std::string::npos; place = text.find("/etc", place + 1)) {
        const std::size_t begin = text.rfind('\0', place) + 1;
        const std::string word = text.c_str() + begin;
        const bool isPath =
            word.front() == '/' && std::all_of(word.begin(), word.end(), [](unsigned char letter) {
                return std::isalnum(letter) != 0 ||
                       std::string_view("/_-+.").find(static_cast<char>(letter)) != std::string_view::npos;
            });
        if (isPath && (word.ends_with("/etc") || word.ends_with("/etc/unixODBC"))) {
            folders.insert(word);
        }
    }
    return {folders.begin(), folders.end()};
}

void addManagers(Account& account, const Folders& otherFolders) {
    std::vector<std::string> paths;
    for (const char* name : {"libodbc.so.2", "libodbc.so.1", "libiodbc.so.2"}) {
        paths.push_back(findByLoader(name));
    }
    std::vector<std::string> patterns;
    for (const std::string& folder : otherFolders) {
        patterns.push_back(folder + "/libodbc.so.[0-9]*");
        patterns.push_back(folder + "/libiodbc.so.[0-9]*");
    }
    // The system's own, where a variable of the loader hides it.
    patterns.emplace_back("/usr/lib/*-linux-gnu/libodbc.so.[0-9]*");
    for (const std::string& prefix : {account.home + "/.local", std::string("/usr/local"), std::string("/usr")}) {
        patterns.push_back(prefix + "/lib/python3*/*-packages/*.libs/lib*odbc*.so*");
    }
    for (const std::string& place : {account.home + "/*conda*", std::string("/opt/*conda*")}) {
        patterns.push_back(place + "/lib/libodbc.so.[0-9]*");
        patterns.push_back(place + "/envs/*/lib/libodbc.so.[0-9]*");
    }
    for (const std::string& pattern : patterns) {
        const std::vector<std::string> found = matches(pattern);
        paths.insert(paths.end(), found.begin(), found.end());
    }
    std::set<std::string> known;
    for (const std::string& path : paths) {
        std::array<char, PATH_MAX> whole{};
        if (path.empty() || realpath(path.c_str(), whole.data()) == nullptr || !known.insert(whole.data()).second) {
            continue;
        }
        if (examineLibrary(path, "", {}).functions.contains("SQLDataSources")) {
            account.managers.push_back({path, {}});
        }
    }
    if (account.managers.size() > 1) {
        for (DriverManager& manager : account.managers) {
            manager.folders = foldersIn(manager.path);
        }
    }
}

// What the loader says, in another process: a library may do anything when it is loaded.
void load(LibraryFacts& facts) {
    DriverProcess process([path = facts.path] {
        // Functions that are nowhere matter to the loader only when it is to find all at once.
        if (dlopen(path.c_str(), RTLD_NOW) != nullptr) {
            return std::string();
        }
        const std::string words = dlerror();
        return dlopen(path.c_str(), RTLD_LAZY) == nullptr ? std::string("L") + dlerror() : "N" + words;
    });
    const std::optional<DriverProcess::End> end = process.waitForEnd(kPatience);
    if (!end) {
        facts.loaderWords = "no end within 2 seconds";
    } else if (!end->answer) {
        const std::string said = installer::oneLine(end->printed);
        facts.loaderWords = said.empty() ? end->reason : said;
    } else if (!end->answer->empty()) {
        (end->answer->front() == 'L' ? facts.loaderWords : facts.missingSymbol) = end->answer->substr(1);
    }
}

// The package that has a file of this name, given with its path or with "*/", as the machine's list has it.
std::string installedPackageOf(const std::string& file) {
    DriverProcess process([&file]() -> std::string {
        execlp("dpkg-query", "dpkg-query", "-S", file.c_str(), nullptr);
        return {};
    });
    const std::optional<DriverProcess::End> end = process.waitForEnd(kPatience);
    // "package: /path", or "package:amd64: /path", one for each line.
    const std::string line = end ? end->printed.substr(0, end->printed.find('\n')) : "";
    const std::size_t mark = line.find(": /");
    return line.ends_with(baseName(file)) && mark != std::string::npos ? line.substr(0, line.find(':')) : "";
}

void addPackages(LibraryFacts& facts) {
    if (facts.kind == LibraryKind::kMissing && facts.path.starts_with('/')) {
        facts.package = installedPackageOf(facts.path);
    }
    for (LibraryFacts::Absent& absent : facts.absent) {
        absent.package = absent.elsewhere.empty() ? installedPackageOf("*/" + absent.name) : "";
    }
}

// What the driver knows of the keys that data sources have for it.
void addKeys(const Account& account, const std::string& library, LibraryFacts& facts) {
    const std::set<std::string> keys = keysForLibrary(account, library);
    if (keys.empty()) {
        return;
    }
    std::set<std::string> missing = keys;
    for (const std::string& key : usualKeys()) {
        missing.insert(installer::foldedName(key));
    }
    for (const std::string& path : facts.driverFiles) {
        installer::FileText text;
        if (installer::readFile(installer::followLinks(path), text)) {
            missing = keysNotIn(text.text, missing);
        }
    }
    std::set_intersection(keys.begin(), keys.end(), missing.begin(), missing.end(),
                          std::inserter(facts.foreignKeys, facts.foreignKeys.end()));
    // One that knows none of all these has its texts somewhere else.
    const bool knowsNone = std::all_of(usualKeys().begin(), usualKeys().end(), [&missing](const std::string& key) {
        return missing.contains(installer::foldedName(key));
    });
    if (knowsNone && facts.foreignKeys.size() == keys.size()) {
        facts.foreignKeys.clear();
    }
    if (facts.foreignKeys.empty()) {
        return;
    }
    for (const Registered& driver : registeredDrivers(account)) {
        const IniEntry* entry = libraryEntry(driver.section, "Driver");
        if (entry != nullptr && entry->value == library && libraryEntry(driver.section, "Setup") != nullptr) {
            facts.knownKeys = describedKeys(driver.section.name);
            break;
        }
    }
    facts.isDescribed = !facts.knownKeys.empty();
    for (const std::string& key : facts.knownKeys) {
        facts.foreignKeys.erase(installer::foldedName(key));
    }
    std::copy_if(usualKeys().begin(), usualKeys().end(), std::back_inserter(facts.knownKeys),
                 [&missing](const std::string& key) { return !missing.contains(installer::foldedName(key)); });
}

void addLibraries(Account& account, const Folders& otherFolders) {
    const NamedLibraries named = namedLibraries(account);
    Folders folders = otherFolders;
    for (const DriverManager& manager : account.managers) {
        folders.push_back(folderOf(manager.path));
    }
    // The directory of drivers is written into the manager; distributions have it beside that.
    std::string modules;
    for (const DriverManager& manager : account.managers) {
        const std::string folder = folderOf(manager.path) + "/odbc";
        modules = modules.empty() && access(folder.c_str(), F_OK) == 0 ? folder : modules;
    }
    for (const std::string& name : named.drivers) {
        LibraryFacts facts = examineLibrary(name, modules, folders);
        if (facts.kind == LibraryKind::kLibrary && facts.absent.empty() && facts.absentVersions.empty()) {
            load(facts);
            addKeys(account, name, facts);
        }
        if (facts.kind == LibraryKind::kMissing) {
            Folders all = folders;
            all.insert(all.begin(), {modules, "/usr/lib/odbc"});
            const std::string base = baseName(name);
            facts.elsewhere = findIn(all, base.ends_with(".so") ? base : base + ".so");
        }
        addPackages(facts);
        account.libraries.emplace(name, facts);
    }
    for (const std::string& name : named.setups) {
        // Ours stand in for some that no package has.
        const std::string path = locateLibrary(name.c_str());
        account.setups.emplace(name, examineLibrary(path.empty() ? name : path, modules, folders));
    }
}

void addTraceFiles(Account& account) {
    for (const auto& [path, file] : account.files) {
        const IniView view = viewOf(file.text);
        const IniSection* section = view.find("ODBC");
        if (section == nullptr || section->find("Trace") == nullptr) {
            continue;
        }
        const IniEntry* entry = section->find("TraceFile");
        const std::string trace = entry != nullptr ? entry->value : installer::kDefaultTraceFile;
        std::error_code none;
        const std::uintmax_t size = std::filesystem::file_size(trace, none);
        if (!none) {
            account.sizes[trace] = size;
        }
        if (const int error = installer::traceWritingError(trace)) {
            account.writeErrors[trace] = error;
        }
    }
}

}  // namespace

Account takeSnapshot() {
    Account account;
    addUser(account);
    addFiles(account);
    const Folders otherFolders = librariesOfOthers();
    addManagers(account, otherFolders);
    addLibraries(account, otherFolders);
    addTraceFiles(account);
    return account;
}

}  // namespace doctor
