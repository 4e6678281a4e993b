#include "admin/wizard_finish.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "admin/dialogs.h"
#include "admin/driver_chooser.h"
#include "admin/driver_setup.h"
#include "admin/file_aside.h"
#include "admin/file_dsn_page.h"
#include "admin/file_dsn_writer.h"
#include "admin/file_name_dialog.h"
#include "admin/file_name_screen.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/test_connect.h"
#include "admin/user_dsn_page.h"
#include "bos/file.h"
#include "installer/configuration.h"
#include "installer/drivers.h"
#include "installer/file_dsn.h"
#include "motifutil/catalog_text.h"
#include "motifutil/widgets.h"

namespace {

// The setup library of a driver, as its section in the driver file says now; empty, after a report, when it has none.
std::string setupLibraryOf(const std::string& driver) {
    std::string setup = installer::setupLibrary(driver);
    if (setup.empty()) {
        reportWithoutSetup(Message::kDriverHasNoSetup, driver);
    }
    return setup;
}

void tellOfCutAttributes(std::string_view connectionString) {
    const std::string names = cutAttributes(connectionString);
    if (!names.empty()) {
        showError(Message::kAttributesCut, names);
    }
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
        if (attributes != nullptr && !isFreePath(path.c_str())) {
            tellOfCutAttributes(TempStr.view());
        }
    }
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
            finishFileDataSource(installer::copyOfAttributeList(static_cast<const char*>(attributes)).c_str());
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
    if (std::strchr(FileDSNName, ';') != nullptr) {
        // The directory's name has one.
        showError(Message::kFileNameHasSemicolon);
        return;
    }
    std::string connectionString(TempStr.view());
    if (IsVerificationNeeded && TestConnect::isTooLong(connectionString.c_str())) {
        showError(Message::kConnectionStringTooLong);
        return;
    }
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
               Message::kTestResultTitle, installer::copyOfAttributeList(list), finish);
    std::ignore = deleteFileDSN(FileDSNName);
    refreshFileDsnPage();
}

bool checkPerm(const char* name) {
    if (name == nullptr) {
        return false;
    }
    if (!setFullPath()) {
        showError(Message::kFileNameTooLong);
        return false;
    }
    if (isFreePath(FileDSNName)) {
        if (bosftest(FileDSNName) != 0) {
            return true;
        }
        showError(Message::kDirectoryNotWritable);
        return false;
    }
    // Whoever agrees loses the old file, so there must be somebody who can make the new one.
    if (setupLibraryOf(CurrentDriver != nullptr ? CurrentDriver : "").empty()) {
        return false;
    }
    askQuestion(catalogText(Message::kOverwriteQuestion), FileDSNName, overwriteFileDSN, openSaveAsControl,
                Answer::kNo);
    return false;
}

void writeDsnToFile(const char* connectionString) {
    if (!checkPerm(FileDSNName)) {
        return;
    }
    if (writeFileDsn(FileDSNName, CurrentDriver, connectionString)) {
        tellOfCutAttributes(connectionString);
        return;
    }
    if (!IsVerificationNeeded) {
        // Half a data source is of no use. The one of a test goes after it.
        std::ignore = deleteFileDSN(FileDSNName);
    }
    showError(Message::kFileIncomplete);
}

void overwriteFileDSN(Widget /*widget*/, XtPointer path, XtPointer /*callData*/) {
    guarded([path] {
        replaceText(FileDSNName, static_cast<const char*>(path));
        {
            const FileAside old(FileDSNName);
            if (!old) {
                // The button reads as the answer did that led here.
                showError(Message::kOverwriteFailed, Message::kAnswerYes, Message::kDialogTitle);
                return;
            }
            finish(nullptr, nullptr);
        }
        refreshFileDsnPage();
    });
}

void openSaveAsControl(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    showFileDialogBox(kChooseFileName);
}

void showFileDialogBox(int mode) {
    showFileNameDialog(mode, dsnFileSelected);
}

void dsnFileSelected(Widget dialogBox, XtPointer mode, XtPointer /*callData*/) {
    guarded([dialogBox, mode] {
        XmString selected = nullptr;
        XtVaGetValues(dialogBox, XmNdirSpec, &selected, nullptr);
        const XmStringPtr owned(selected);
        std::string name = plainText(selected);
        if (name.ends_with('/')) {
            return;
        }
        name = installer::withFileDsnExtension(name);
        // First, since the driver's own dialog may come up in finish().
        XtUnmanageChild(dialogBox);
        if (reinterpret_cast<XtArgVal>(mode) == kChooseFileName) {
            replaceText(FileDSNName, name.c_str());
            finish(nullptr, nullptr);
        } else {
            showPath(Text7, name);
        }
    });
}
