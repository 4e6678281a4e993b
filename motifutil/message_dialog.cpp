#include "motifutil/message_dialog.h"

#include <Xm/MessageB.h>

#include <array>
#include <string>
#include <utility>

#include "catalogs/message_numbers.h"
#include "kvlib/error_report.h"
#include "kvlib/library_errors.h"
#include "motifutil/catalog_text.h"
#include "motifutil/compound_string.h"
#include "motifutil/icons.h"
#include "motifutil/message_icons.h"
#include "motifutil/mnemonics.h"
#include "motifutil/modal_loop.h"
#include "motifutil/shells.h"
#include "motifutil/widgets.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"

Widget dialog = nullptr;
Widget Mdialog = nullptr;

namespace {

// The share of the screen's width that a line may have, in percent.
constexpr int kWidestLine = 75;

// Keeps the box on the screen.
void wrapMessage(Widget box, const char* message) {
    XmRenderTable fonts = nullptr;
    XtVaGetValues(XtNameToWidget(box, "Message"), XmNrenderTable, &fonts, nullptr);
    const std::string text = wrapped(message, fonts, WidthOfScreen(XtScreen(box)) * kWidestLine / 100);
    if (text != message) {
        XtVaSetValues(box, XmNmessageString, compoundString(text).get(), nullptr);
    }
}

void forgetDestroyed(Widget widget, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (dialog == widget) {
        dialog = nullptr;
    }
    if (Mdialog == widget) {
        Mdialog = nullptr;
    }
}

// Closing the box by the window manager answers it: with Cancel where there is one, else with OK.
void answerClosed(Widget /*shell*/, XtPointer box, XtPointer /*callData*/) {
    const auto messageBox = static_cast<Widget>(box);
    Widget cancel = XtNameToWidget(messageBox, "Cancel");
    pressButton(XtIsManaged(cancel) ? cancel : XtNameToWidget(messageBox, "OK"));
}

// What makes a kind of box what it is.
struct Kind {
    Widget (*create)(Widget parent, char* name, ArgList arguments, Cardinal count);
    unsigned char motifType;  // Which decides about its sound.
    const char* const* icon;  // Shown in the place of Motif's.
};

// By their numbers.
constexpr std::array<Kind, 3> kKinds{{{XmCreateQuestionDialog, XmDIALOG_QUESTION, kQuestionIcon},
                                      {XmCreateMessageDialog, XmDIALOG_INFORMATION, kInformationIcon},
                                      {XmCreateErrorDialog, XmDIALOG_ERROR, kErrorIcon}}};

// The main shell can be what a report stood over; it has no parent, and Xt ends the process when it is unmanaged.
void hideConfiguration(Widget configuration) {
    if (configuration != nullptr && XtParent(configuration) != nullptr) {
        XtUnmanageChild(configuration);
    }
}

Widget createSetupError(Widget parent, Message::Number message) {
    return createMessageDialog(parent, kErrorDialog, catalogText(message).data(),
                               catalogText(Message::kSetupErrorOk).data(), std::string().data(),
                               catalogText(Message::kSetupErrorTitle).data());
}

}  // namespace

Widget createMessageDialog(Widget parent, unsigned long type, char* message, char* okLabel, char* cancelLabel,
                           char* title) {
    if (dialog != nullptr) {
        XtDestroyWidget(dialog);
        dialog = nullptr;
    }
    if (type >= kKinds.size()) {
        showOutOfMemoryError(parent);
        return nullptr;
    }
    const Kind& kind = kKinds[type];
    {
        const XmStringPtr messageString = compoundString(message);
        const XmStringPtr okString = compoundString(okLabel);
        const XmStringPtr cancelString = compoundString(cancelLabel);
        ArgumentList arguments;
        arguments.set(XmNmessageString, messageString.get())
            .set(XmNokLabelString, okString.get())
            .set(XmNcancelLabelString, cancelString.get())
            .set(XmNtitle, title)
            .set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL)
            .set(XmNdialogType, kind.motifType);
        static char name[] = "dialog";
        dialog = kind.create(parent, name, arguments.data(), arguments.size());
    }
    if (dialog == nullptr) {
        // The error box is what reports that a box can't be made.
        if (type != kErrorDialog) {
            showOutOfMemoryError(parent);
        }
        return nullptr;
    }
    wrapMessage(dialog, message);
    setIcon(dialog, XmNsymbolPixmap, createIconPixmap(dialog, kind.icon));
    XtUnmanageChild(XtNameToWidget(dialog, "Help"));
    if (type != kQuestionDialog) {
        XtUnmanageChild(XtNameToWidget(dialog, "Cancel"));
        // Escape leaves a box that only informs. Motif takes no other button than "Cancel" as a message box's cancel
        // button.
        overrideTranslations(dialog, "<Key>osfCancel: BulletinBoardReturn()");
    }
    XtAddCallback(dialog, XmNdestroyCallback, forgetDestroyed, nullptr);
    prepareShell(XtParent(dialog), answerClosed, dialog);
    for (const auto& [button, label] : {std::pair{"OK", okLabel}, {"Cancel", cancelLabel}}) {
        for (const Message::Number known :
             {Message::kOk, Message::kSetupErrorOk, Message::kCancel, Message::kAnswerYes, Message::kAnswerNo}) {
            if (catalogText(known) == label) {
                setMnemonic(XtNameToWidget(dialog, button), mnemonicFor(known));
            }
        }
    }
    serveKeys(XtParent(dialog));
    setHelpTopic(dialog, "troubleshooting");
    return dialog;
}

void answerNoByReturn(Widget question) {
    XtVaSetValues(question, XmNdefaultButtonType, XmDIALOG_CANCEL_BUTTON, nullptr);
}

void showPermissionError(Widget parent, int flag) {
    Widget box = createSetupError(parent, flag != 0 ? Message::kPermissionDeniedWrite : Message::kPermissionDeniedRead);
    if (box != nullptr) {
        XtManageChild(box);
    }
}

void showOutOfMemoryError(Widget parent) {
    Widget box = createSetupError(parent, Message::kOutOfMemory);
    if (box != nullptr) {
        XtAddCallback(box, XmNokCallback, exitDriverConfig, parent);
        XtManageChild(box);
    }
}

void exitDriverConfig(Widget /*widget*/, XtPointer clientData, XtPointer /*callData*/) {
    hideConfiguration(static_cast<Widget>(clientData));
    addDatabaseError(0, Message::kOutOfMemory, catalogText(Message::kOutOfMemory).c_str(), 0, kCPLocale);
    exit_dialog_loop();
}

void outOfMemoryError(Widget widget) {
    hideConfiguration(widget);
    addError(LibraryMessage::kConfigurationAbandoned);
    exit_dialog_loop();
}
