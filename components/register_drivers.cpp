// odbcadmin-register: gives drivers our setup library, by an entry Setup in the driver file, and registers the drivers
// that come with it. Takes all of that out again.
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "bos/host.h"
#include "components/component.h"
#include "installer/configuration.h"
#include "installer/configuration_change.h"
#include "installer/drivers.h"
#include "kvini/install_dir.h"
#include "kvlib/catalog.h"
#include "motifutil/catalog_text.h"
#include "motifutil/change_report.h"
#include "motifutil/component_inquiry.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFailed = 1;
constexpr int kBadUse = 2;

using Drivers = std::vector<std::string>;

void say(std::FILE* stream, const std::string& text) {
    std::fprintf(stream, "%s\n", text.c_str());
}

// The tree that this program stands in.
fs::path tree() {
    return fs::path(programDirectory()).parent_path();
}

// Those of the drivers whose setup library is missing, can't be loaded, or has no dialog.
Drivers withoutSetup(const Drivers& drivers) {
    std::vector<std::string> libraries;
    std::transform(drivers.begin(), drivers.end(), std::back_inserter(libraries), installer::setupLibrary);
    const std::vector<ComponentAnswer> answers = askComponents(libraries, Complaints::kNowhere);
    Drivers result;
    for (std::size_t place = 0; place < drivers.size(); ++place) {
        if (!answers[place].isSetupLibrary) {
            result.push_back(drivers[place]);
        }
    }
    return result;
}

// A driver of the product as its template describes it.
struct OwnDriver {
    std::string name;
    std::vector<installer::Attribute> entries;
};

std::vector<OwnDriver> ownDrivers() {
    std::vector<OwnDriver> drivers;
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(tree() / "share/drivers", ignored)) {
        installer::FileText file;
        if (!installer::readFile(entry.path(), file)) {
            continue;
        }
        for (const std::string_view text : installer::splitLines(file.text)) {
            const installer::IniLine line = installer::parseIniLine(text);
            if (line.kind == installer::IniLineKind::kSection) {
                drivers.push_back({std::string(line.name), {}});
            } else if (line.kind == installer::IniLineKind::kEntry && !drivers.empty()) {
                // The tree may have been moved since the templates were written.
                const fs::path value(line.value);
                const bool isLibrary = value.extension() == ".so";
                drivers.back().entries.push_back(
                    {std::string(line.name), isLibrary ? tree() / "lib" / value.filename() : value});
            }
        }
    }
    return drivers;
}

bool contains(const Drivers& drivers, const std::string& name) {
    return std::any_of(drivers.begin(), drivers.end(),
                       [&name](const std::string& driver) { return installer::sameName(driver, name); });
}

// What is to be written for the driver, and what is to be said when that is done.
class Registration {
public:
    Registration() : file_(installer::driverFilePath()), change_(file_) {}

    void addSetup(const std::string& driver) {
        say(stdout, catalogText(Message::kRegisterLacking, {driver}));
        const std::string library = tree() / "lib/vhsetup23.so";
        change_.write(driver, "Setup", library.c_str());
        done_.push_back(catalogText(Message::kRegisterDone, {driver, file_, "Setup=" + library}));
    }
    void addDriver(const OwnDriver& driver) {
        for (const installer::Attribute& entry : driver.entries) {
            change_.write(driver.name, entry.key, entry.value.c_str());
        }
        // What the installer library writes, and its command "odbcinst -u -d" looks for.
        change_.write(driver.name, "UsageCount", "1");
        done_.push_back(catalogText(Message::kRegisterNew, {driver.name, file_}));
    }
    void removeDriver(const std::string& driver) {
        change_.removeSection(driver);
        done_.push_back(catalogText(Message::kRegisterRemoved, {driver, file_}));
    }
    void removeSetup(const std::string& driver, const std::string& library) {
        change_.write(driver, "Setup", nullptr);
        done_.push_back(catalogText(Message::kRegisterSetupRemoved, {driver, file_, "Setup=" + library}));
    }
    int carryOut() const {
        if (const std::optional<installer::ChangeFailure> failure = change_.commit()) {
            say(stderr, changeReport(*failure));
            return kFailed;
        }
        for (const std::string& text : done_) {
            say(stdout, text);
        }
        return 0;
    }
    bool isEmpty() const { return done_.empty(); }
    const std::string& file() const { return file_; }

private:
    std::string file_;
    installer::ConfigurationChange change_;
    std::vector<std::string> done_;
};

int registerDrivers(const Drivers& wanted) {
    const Drivers registered = installer::listDrivers().names;
    const Drivers lacking = withoutSetup(registered);
    Registration registration;
    int status = 0;
    const std::vector<OwnDriver> own = ownDrivers();
    for (const std::string& driver : wanted.empty() ? lacking : wanted) {
        const auto isOwn = std::find_if(own.begin(), own.end(), [&driver](const OwnDriver& candidate) {
            return installer::sameName(candidate.name, driver);
        });
        if (contains(lacking, driver)) {
            registration.addSetup(driver);
        } else if (contains(registered, driver)) {
            say(stdout, catalogText(Message::kRegisterHasSetup, {driver, installer::setupLibrary(driver)}));
        } else if (isOwn != own.end()) {
            registration.addDriver(*isOwn);
        } else {
            say(stderr, catalogText(Message::kRegisterUnknown, {driver, registration.file()}));
            status = kFailed;
        }
    }
    if (wanted.empty() && lacking.empty()) {
        say(stdout, catalogText(Message::kRegisterNothing, {registration.file()}));
    }
    return status != 0 || registration.isEmpty() ? status : registration.carryOut();
}

// Takes out what names libraries of this tree, whoever wrote it.
int removeOwn() {
    const std::string folder = tree() / "lib/";
    Registration registration;
    for (const std::string& driver : installer::listDrivers().names) {
        const std::string setup = installer::readValue(driver, "Setup", installer::kDriverFile);
        if (installer::readValue(driver, "Driver", installer::kDriverFile).starts_with(folder)) {
            registration.removeDriver(driver);
        } else if (setup.starts_with(folder)) {
            registration.removeSetup(driver, setup);
        }
    }
    return registration.carryOut();
}

}  // namespace

int main(int argc, char** argv) {
    bosSetInstallDir(nullptr);
    Rfile = OpenStrings(nullptr, "odbc.m");
    std::setlocale(LC_ALL, "");
    Drivers arguments;
    std::copy_if(argv + 1, argv + argc, std::back_inserter(arguments),
                 [&arguments](const char* argument) { return !contains(arguments, argument); });
    if (contains(arguments, "--user")) {
        say(stderr, catalogText(Message::kRegisterForUser, {installer::driverFilePath()}));
        return kBadUse;
    }
    if (contains(arguments, "--version")) {
        say(stdout, std::string("odbcadmin-register ") + kProductVersion);
        return 0;
    }
    const bool isRemoval = arguments == Drivers{"--remove"};
    if (!isRemoval && std::any_of(arguments.begin(), arguments.end(),
                                  [](const std::string& argument) { return argument.starts_with('-'); })) {
        const bool isAsked = contains(arguments, "--help");
        say(isAsked ? stdout : stderr, catalogText(Message::kRegisterUsage));
        return isAsked ? 0 : kBadUse;
    }
    // To the library such a file looks like one without drivers.
    if (const std::optional<installer::ChangeFailure> failure =
            installer::findReadFailure(installer::driverFilePath())) {
        say(stderr, changeReport(*failure));
        return kFailed;
    }
    return isRemoval ? removeOwn() : registerDrivers(arguments);
}
