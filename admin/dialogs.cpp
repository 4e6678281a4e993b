#include "admin/dialogs.h"

#include <cstdlib>

#include "admin/flow.h"
#include "admin/globals.h"
#include "motifutil/catalog_text.h"
#include "motifutil/message_dialog.h"

namespace {

// Makes a box with the one button OK, keeps it in `Mdialog`, and leaves it to the caller to show.
Widget createReport(unsigned long kind, Message::Number text) {
    Mdialog =
        createMessageDialogAdmin(static_cast<short>(kind), catalogText(text).c_str(), catalogText(Message::kOk).c_str(),
                                 "", catalogText(Message::kDialogTitle).c_str());
    return Mdialog;
}

// A box that is raised while the window is being built waits for it: the window would come up over it.
void show(Widget box) {
    if (box != nullptr && XtIsRealized(ShODBCAdmin)) {
        XtManageChild(box);
    }
}

void showReport(unsigned long kind, Message::Number text) {
    show(createReport(kind, text));
}

}  // namespace

Widget createMessageDialogAdmin(short kind, const char* message, const char* okLabel, const char* cancelLabel,
                                const char* title) {
    return createMessageDialog(ShODBCAdmin, static_cast<unsigned short>(kind), message, okLabel, cancelLabel, title);
}

void showWaitingReport() {
    show(Mdialog);
}

void showInformation(Message::Number text) {
    showReport(kInformationDialog, text);
}

void showError(Message::Number text) {
    showReport(kErrorDialog, text);
}

void askQuestion(const std::string& question, XtCallbackProc accepted, XtPointer clientData, XtCallbackProc discarded) {
    Mdialog =
        createMessageDialogAdmin(kQuestionDialog, question.c_str(), catalogText(Message::kAnswerYes).c_str(),
                                 catalogText(Message::kAnswerNo).c_str(), catalogText(Message::kDialogTitle).c_str());
    if (Mdialog == nullptr) {
        if (discarded != nullptr) {
            discarded(nullptr, clientData, nullptr);
        }
        return;
    }
    XtAddCallback(Mdialog, XmNokCallback, accepted, clientData);
    if (discarded != nullptr) {
        XtAddCallback(Mdialog, XmNdestroyCallback, discarded, clientData);
    }
    XtManageChild(Mdialog);
}

void showOutOfMemoryErrorAdmin() {
    freeGlobals();
    if (ShODBCAdmin != nullptr) {
        showOutOfMemoryError(ShODBCAdmin);
    }
}

void showODBCINSTError() {
    showReport(kErrorDialog, Message::kDriverFileUnreadable);
}

void showODBCINIError() {
    if (createReport(kErrorDialog, Message::kDataSourceFileUnreadable) != nullptr) {
        XtAddCallback(Mdialog, XmNokCallback, btnCancel_activate, nullptr);
        show(Mdialog);
    }
}

void btnOK_activate(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    // The program ends at once, so a report of a failed write is not seen.
    Save_Trace();
    freeGlobals();
    std::exit(EXIT_SUCCESS);
}

void btnCancel_activate(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    freeGlobals();
    std::exit(EXIT_SUCCESS);
}

void btnApply_activate(Widget widget, XtPointer /*clientData*/, XtPointer /*callData*/) {
    Save_Trace();
    XtSetSensitive(widget, False);
}
