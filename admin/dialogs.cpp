#include "admin/dialogs.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "admin/globals.h"
#include "motifutil/catalog_text.h"
#include "motifutil/change_report.h"
#include "motifutil/message_dialog.h"

namespace {

// The report of an end that waits for the window to be there; null when none does.
Widget WaitingEnd = nullptr;

void forgetWaitingEnd(Widget /*box*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    WaitingEnd = nullptr;
}

// Makes a box with one button, keeps it in `Mdialog`, and leaves it to the caller to show. Null when it can't be made,
// or may not: there is one box at a time, and nothing takes the place of the one that ends the program.
Widget createReport(unsigned long kind, std::string text, Message::Number okLabel = Message::kOk,
                    Message::Number title = Message::kDialogTitle) {
    if (WaitingEnd != nullptr) {
        return nullptr;
    }
    Mdialog = createMessageDialogAdmin(static_cast<short>(kind), text.data(), catalogText(okLabel).data(),
                                       std::string().data(), catalogText(title).data());
    return Mdialog;
}

// A box that is raised while the window is being built waits for it: the window would come up over it.
void show(Widget box) {
    if (box != nullptr && XtIsRealized(ShODBCAdmin)) {
        XtManageChild(box);
    }
}

void showReport(unsigned long kind, Message::Number text) {
    show(createReport(kind, catalogText(text)));
}

void freeSubject(Widget /*box*/, XtPointer subject, XtPointer /*callData*/) {
    std::free(subject);
}

// Shows the box in `Mdialog` with its own copy of `subject`.
void showWithSubject(const std::string& subject, XtCallbackProc accepted, XtCallbackProc declined) {
    if (Mdialog == nullptr) {
        return;
    }
    char* copy = nullptr;
    if (!subject.empty()) {
        copy = static_cast<char*>(std::malloc(subject.size() + 1));
        if (copy == nullptr) {
            throw std::bad_alloc();
        }
        std::memcpy(copy, subject.c_str(), subject.size() + 1);
        XtAddCallback(Mdialog, XmNdestroyCallback, freeSubject, copy);
    }
    XtAddCallback(Mdialog, XmNokCallback, accepted, copy);
    if (declined != nullptr) {
        XtAddCallback(Mdialog, XmNcancelCallback, declined, copy);
    }
    XtManageChild(Mdialog);
}

}  // namespace

Widget createMessageDialogAdmin(short kind, char* message, char* okLabel, char* cancelLabel, char* title) {
    return createMessageDialog(ShODBCAdmin, static_cast<unsigned short>(kind), message, okLabel, cancelLabel, title);
}

void showWaitingReport() {
    WaitingEnd = nullptr;
    show(Mdialog);
}

void showInformation(Message::Number text) {
    showReport(kInformationDialog, text);
}

void showInformation(const std::string& text) {
    show(createReport(kInformationDialog, text));
}

void showError(Message::Number text) {
    showReport(kErrorDialog, text);
}

void showError(Message::Number text, Message::Number okLabel, Message::Number title) {
    show(createReport(kErrorDialog, catalogText(text), okLabel, title));
}

void showError(Message::Number text, std::string_view subject) {
    show(createReport(kErrorDialog, catalogText(text, {std::string(subject)})));
}

void showErrorAndMore(Message::Number text, const std::string& more) {
    show(createReport(kErrorDialog, catalogText(text) + "\n\n" + more));
}

void showError(Message::Number text, const installer::ChangeFailure& failure) {
    showErrorAndMore(text, changeReport(failure));
}

void askQuestion(std::string question, const std::string& subject, XtCallbackProc accepted, XtCallbackProc declined,
                 Answer usual) {
    Mdialog =
        createMessageDialogAdmin(kQuestionDialog, question.data(), catalogText(Message::kAnswerYes).data(),
                                 catalogText(Message::kAnswerNo).data(), catalogText(Message::kDialogTitle).data());
    if (Mdialog != nullptr && usual == Answer::kNo) {
        answerNoByReturn(Mdialog);
    }
    showWithSubject(subject, accepted, declined);
}

void showResult(std::string text, Message::Number title, const std::string& subject, XtCallbackProc acknowledged) {
    createReport(kInformationDialog, std::move(text), Message::kOk, title);
    showWithSubject(subject, acknowledged, nullptr);
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
    if (createReport(kErrorDialog, catalogText(Message::kDataSourceFileUnreadable)) != nullptr) {
        XtAddCallback(Mdialog, XmNokCallback, endProgram, nullptr);
        if (!XtIsRealized(ShODBCAdmin)) {
            WaitingEnd = Mdialog;
            XtAddCallback(Mdialog, XmNdestroyCallback, forgetWaitingEnd, nullptr);
        }
        show(Mdialog);
    }
}
