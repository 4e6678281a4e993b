#include "admin/driver_setup.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

#include "admin/dialogs.h"
#include "admin/globals.h"
#include "bos/host.h"
#include "bos/library.h"
#include "installer/configuration.h"
#include "installer/drivers.h"
#include "kvlib/private_error_list.h"

ConfigDsnFunction ConfigureDSN = nullptr;
ConfigFileDsnFunction ConfigFileDSN = nullptr;

namespace {

template <typename Function>
Function findFunction(void* library, const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}

// What went wrong, or nothing.
std::optional<Message::Number> callSetup(void* library, short request, const char* driverName, const char* attributes,
                                         short dsnKind, const char* fileName) {
    ConfigureDSN = findFunction<ConfigDsnFunction>(library, "ConfigDSN");
    ConfigFileDSN = findFunction<ConfigFileDsnFunction>(library, "ConfigFileDSN");
    const bool isFile = dsnKind == kFileDataSource;
    if (isFile && ConfigFileDSN == nullptr) {
        return Message::kNoConfigFileDsn;
    }
    if (!isFile && ConfigureDSN == nullptr) {
        return Message::kNoConfigDsn;
    }
    const auto code = static_cast<unsigned short>(request);
    try {
        const int succeeded = isFile ? ConfigFileDSN(ShODBCAdmin, code, driverName, attributes, fileName)
                                     : ConfigureDSN(ShODBCAdmin, code, driverName, attributes);
        return succeeded != 0 ? std::nullopt : std::optional(Message::kSetupFailed);
    } catch (...) {
        // Foreign code may throw anything. It ends here, while the library that knows how to destroy it is still there.
        return Message::kSetupFailed;
    }
}

std::string quotedForShell(const std::string& text) {
    std::string quoted = "'";
    for (const char byte : text) {
        quoted += byte == '\'' ? "'\\''" : std::string(1, byte);
    }
    return quoted + "'";
}

// What to type to give the driver our setup library: as root, unless the person may write the driver file.
std::string registerCommand(const std::string& driverName) {
    std::string command;
    if (access(installer::driverFilePath().c_str(), W_OK) != 0) {
        command = "sudo ";
        for (const char* variable : {"ODBCSYSINI", "ODBCINSTINI"}) {
            if (const char* value = std::getenv(variable)) {
                command += std::string(variable) + "=" + quotedForShell(value) + " ";
            }
        }
    }
    const std::filesystem::path tree = std::filesystem::path(programDirectory()).parent_path();
    return command + (tree / "bin/odbcadmin-register").string() + " " + quotedForShell(driverName);
}

}  // namespace

void reportWithoutSetup(Message::Number report, const std::string& driverName) {
    showErrorAndMore(report, catalogText(Message::kSetupAdvice, {registerCommand(driverName)}));
}

void callDynamic(const char* setupLibrary, short request, const char* driverName, const char* attributes, short dsnKind,
                 const char* fileName) {
    // Nobody shows what is collected: the dialog names the class of the failure.
    const PrivateErrorList errors;
    const std::unique_ptr<void, LibraryCloser> library(bosLoadLibrary(setupLibrary, 0));
    const std::optional<Message::Number> failure =
        library ? callSetup(library.get(), request, driverName, attributes, dsnKind, fileName)
                : Message::kSetupLibraryNotLoaded;
    if (failure == Message::kSetupLibraryNotLoaded || failure == Message::kNoConfigDsn) {
        reportWithoutSetup(*failure, driverName);
    } else if (failure) {
        showError(*failure);
    }
    // The driver may have changed the mode.
    installer::useUserConfiguration();
}
