#include "admin/add_data_source.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "admin/dialogs.h"
#include "admin/driver_chooser.h"
#include "admin/driver_setup.h"
#include "admin/file_dsn_file.h"
#include "admin/file_dsn_page.h"
#include "admin/flow.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/test_connect.h"
#include "admin/user_dsn_page.h"
#include "installer/configuration.h"
#include "motifutil/catalog_text.h"

namespace {

// The setup library of a driver, as its section in the driver file says now; empty, after a report, when it has none.
std::string setupLibraryOf(const std::string& driver) {
    installer::forgetCachedValues();
    std::string setup = installer::readValue(driver, "Setup", installer::kDriverFile);
    if (setup.empty()) {
        showError(Message::kDriverHasNoSetup);
    }
    return setup;
}

void finishUserDataSource() {
    const std::optional<int> row = selectedRow(LstDPName);
    if (!row) {
        showInformation(Message::kChooserSelectOne);
        return;
    }
    const std::string driver = rowText(LstDPName, *row);
    XtUnmanageChild(DlgDriverPopup);
    const std::string setup = setupLibraryOf(driver);
    if (!setup.empty()) {
        callDynamic(setup.c_str(), kAddDataSource, driver.c_str(), nullptr, kUserDataSource, nullptr);
        populateUserDSN(LstUName, LstUDesc);
    }
}

void finishFileDataSource(const char* attributes) {
    if (!checkPerm(FileDSNName)) {
        return;
    }
    XtUnmanageChild(DlgDriverPopup);
    char directory[kFileDsnNameSize];
    getFileDSNDefaultDir(directory);
    // What the globals hold may change while the driver's dialog is open.
    const std::string driver = CurrentDriver != nullptr ? CurrentDriver : "";
    const std::string path = FileDSNName;
    const std::string setup = setupLibraryOf(driver);
    if (!setup.empty()) {
        callDynamic(setup.c_str(), kAddDataSource, driver.c_str(), attributes, kFileDataSource, path.c_str());
        showFileDsnDirectory(directory);
    } else {
        // A file that was to be overwritten is gone.
        refreshFileDsnPage();
    }
}

// The list with all its terminators.
std::string copyOf(const char* list) {
    const char* end = list;
    while (*end != '\0') {
        end += std::strlen(end) + 1;
    }
    return {list, end + 1};
}

}  // namespace

void finish(Widget /*widget*/, XtPointer attributes, XtPointer /*callData*/) {
    guarded([attributes] {
        if (DsnType != kFileDataSource) {
            finishUserDataSource();
        } else if (attributes == nullptr) {
            finishFileDataSource(nullptr);
        } else {
            // The box that owns the list may go before the driver is done with it.
            finishFileDataSource(copyOf(static_cast<const char*>(attributes)).c_str());
        }
    });
}

void finishWithAttributes() {
    if (CurrentDriver == nullptr) {
        // A file without a driver is of no use, and nobody could make another in the place of one that is there.
        XtUnmanageChild(DlgDriverPopup);
        showError(Message::kDriverHasNoSetup);
        return;
    }
    if (!createArray(CurrentDriver, DsnInfo)) {
        return;
    }
    std::string connectionString(TempStr.view());
    writeDsnToFile(connectionString.c_str());
    if (!IsVerificationNeeded) {
        XtUnmanageChild(DlgDriverPopup);
        refreshFileDsnPage();
        return;
    }
    TestConnect test(ShODBCAdmin, connectionString.data());
    const bool works = test.testConnect() != 0;
    if (!works) {
        XtUnmanageChild(DlgDriverPopup);
    }
    char* list = nullptr;
    getAdvancedArgumentString(&list);
    const std::unique_ptr<char, decltype(&std::free)> owned(list, &std::free);
    showResult(works ? catalogText(Message::kTestSucceeded) : test.getErrorMsgFromTestConnect(),
               Message::kTestResultTitle, list != nullptr ? copyOf(list) : std::string(), finish);
    deleteFileDSN(FileDSNName);
    refreshFileDsnPage();
}
