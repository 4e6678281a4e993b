#include "admin/file_name_dialog.h"

#include <Xm/FileSB.h>

#include <string>

#include "admin/dialogs.h"
#include "admin/driver_chooser.h"
#include "admin/file_dsn_writer.h"
#include "admin/globals.h"
#include "motifutil/catalog_text.h"
#include "motifutil/file_dialog.h"
#include "motifutil/widgets.h"

namespace {

void createFileNameDialog(int mode, XtCallbackProc chosen) {
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
        // What is typed may be a whole path, which Motif would put behind the directory.
        .set(XmNpathMode, XmPATH_MODE_FULL)
        .set(XmNnoMatchString, nothing.get());
    Fdialog = createFileDialog(mode == kChooseFileName ? DlgDriverPopup : ShODBCAdmin, "fdialog",
                               catalogText(Message::kChooseFileTitle), arguments);
    XtAddCallback(Fdialog, XmNokCallback, chosen, reinterpret_cast<XtPointer>(XtArgVal{mode}));
    XtAddCallback(Fdialog, XmNcancelCallback, fdialog_canceled, nullptr);
}

}  // namespace

void showFileNameDialog(int mode, XtCallbackProc chosen) {
    guarded([=] {
        if (Fdialog == nullptr) {
            createFileNameDialog(mode, chosen);
        }
        XtManageChild(Fdialog);
    });
}

void fdialog_canceled(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (Fdialog != nullptr) {
        XtUnmanageChild(Fdialog);
    }
}
