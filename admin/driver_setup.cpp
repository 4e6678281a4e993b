#include "admin/driver_setup.h"

#include <dlfcn.h>

#include <memory>
#include <optional>

#include "admin/dialogs.h"
#include "admin/globals.h"
#include "bos/library.h"
#include "installer/configuration.h"
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

}  // namespace

void callDynamic(const char* setupLibrary, short request, const char* driverName, const char* attributes, short dsnKind,
                 const char* fileName) {
    // Nobody shows what is collected: the dialog names the class of the failure.
    const PrivateErrorList errors;
    const std::unique_ptr<void, LibraryCloser> library(bosLoadLibrary(setupLibrary, 0));
    const std::optional<Message::Number> failure =
        library ? callSetup(library.get(), request, driverName, attributes, dsnKind, fileName)
                : Message::kSetupLibraryNotLoaded;
    if (failure) {
        showError(*failure);
    }
    // The driver may have changed the mode.
    installer::useUserConfiguration();
}
