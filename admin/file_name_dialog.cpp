#include "admin/file_name_dialog.h"

#include <Xm/FileSB.h>
#include <Xm/TextF.h>

#include <string>

#include "admin/dialogs.h"
#include "admin/driver_chooser.h"
#include "admin/file_dsn_file.h"
#include "admin/file_dsn_wizard.h"
#include "admin/flow.h"
#include "admin/globals.h"
#include "installer/file_dsn.h"
#include "motifutil/catalog_text.h"
#include "motifutil/file_dialog.h"
#include "motifutil/widgets.h"

namespace {

void createFileNameDialog(int mode) {
    const std::string pattern = "*.dsn";
    char directory[kFileDsnNameSize];
    getFileDSNDefaultDir(directory);
    const XmStringPtr mask = compoundString(directory + pattern);
    const XmStringPtr start = compoundString(directory);
    const XmStringPtr files = compoundString(pattern);
    const XmStringPtr nothing = compoundString(catalogText(Message::kNoFileDsns));
    ArgumentList arguments;
    arguments.set(XmNdirMask, mask.get())
        .set(XmNdirSpec, start.get())
        .set(XmNpattern, files.get())
        .set(XmNnoMatchString, nothing.get());
    Fdialog = createFileDialog(mode == kChooseFileName ? DlgDriverPopup : ShODBCAdmin, "fdialog",
                               catalogText(Message::kChooseFileTitle), arguments);
    XtAddCallback(Fdialog, XmNokCallback, dsnFileSelected, reinterpret_cast<XtPointer>(XtArgVal{mode}));
    XtAddCallback(Fdialog, XmNcancelCallback, fdialog_canceled, nullptr);
}

}  // namespace

void showFileDialogBox(int mode) {
    guarded([mode] {
        if (Fdialog == nullptr) {
            createFileNameDialog(mode);
        }
        XtManageChild(Fdialog);
    });
}

void BrowseFileDSN(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    showFileDialogBox(kBrowseForName);
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
            XmTextFieldSetString(Text7, name.data());
            // The file's own name is what the person wants to see of a long path.
            XmTextFieldSetInsertionPosition(Text7, XmTextFieldGetLastPosition(Text7));
        }
    });
}

void fdialog_canceled(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (Fdialog != nullptr) {
        XtUnmanageChild(Fdialog);
    }
}
