#include "tests/support/window_test.h"

#include "admin/dialogs.h"
#include "kvlib/catalog.h"
#include "motifutil/message_dialog.h"
#include "motifutil/modal_loop.h"
#include "tests/support/error_collector.h"

namespace {

class MessageDialogTest : public WindowTest {
protected:
    void SetUp() override { open(); }

    static Widget show(unsigned long type, const char* text) {
        Widget box = createMessageDialog(ShODBCAdmin, type, text, "Yes", "No", "Title");
        if (box != nullptr) {
            for (const auto& [callback, what] :
                 {std::pair{XmNokCallback, "ok"}, {XmNcancelCallback, "cancel"}, {XmNdestroyCallback, "gone"}}) {
                XtAddCallback(box, callback, note, const_cast<char*>(what));
            }
            XtManageChild(box);
        }
        return box;
    }
    static void note(Widget /*widget*/, XtPointer what, XtPointer /*callData*/) {
        Noted += Noted.empty() ? "" : " ";
        Noted += static_cast<const char*>(what);
    }
    static std::string noted() { return std::exchange(Noted, ""); }

    static inline std::string Noted;
};

TEST_F(MessageDialogTest, KeysAndTheWindowManagerAnswer) {
    for (const unsigned long type : {kQuestionDialog, kInformationDialog, kErrorDialog}) {
        for (const KeySym symbol : {XK_Return, XK_Escape, XK_F4}) {
            SCOPED_TRACE(std::to_string(type) + " " + XKeysymToString(symbol));
            Widget box = show(type, "Well?");
            EXPECT_EQ(dialogText(), "Well?");
            EXPECT_EQ(person().windows("Title", true).size(), 1U);
            EXPECT_EQ(XtIsManaged(child(box, "Cancel")), type == kQuestionDialog);
            EXPECT_FALSE(XtIsManaged(child(box, "Help")));
            key(symbol, symbol == XK_F4 ? XK_Alt_L : NoSymbol);
            EXPECT_TRUE(waitFor([] { return person().windows("Title", true).empty(); }));
            EXPECT_EQ(noted(), type == kQuestionDialog && symbol != XK_Return ? "cancel" : "ok");
            // The next one replaces it.
            createMessageDialog(ShODBCAdmin, kErrorDialog, "", "", "", "");
            EXPECT_EQ(noted(), "gone");
        }
    }
}

TEST_F(MessageDialogTest, ThereIsOneAtATime) {
    Mdialog = show(kQuestionDialog, "first");
    EXPECT_EQ(dialogText(), "first");
    Mdialog = show(kErrorDialog, "second");
    EXPECT_EQ(noted(), "gone");
    EXPECT_EQ(dialogText(), "second");
    EXPECT_EQ(person().windows("Title", true).size(), 1U);
    XtDestroyWidget(Mdialog);
    EXPECT_EQ(dialog, nullptr);
    EXPECT_EQ(Mdialog, nullptr);
    // The window works again, since nothing modal is left.
    show(kInformationDialog, "third");
    answer("OK");
    EXPECT_EQ(noted(), "gone ok");
}

TEST_F(MessageDialogTest, AnUnknownTypeIsShownAsLackOfMemory) {
    EXPECT_EQ(show(3, "text"), nullptr);
    ErrorCollector errors;
    EXPECT_EQ(dialogText(), catalogText(Message::kOutOfMemory));
    // The box stands over the main window, whose shell has no parent to be unmanaged from.
    answer("OK");
    EXPECT_EQ(errors.numbers(), "0");  // an error of a database, not of the system
    EXPECT_EQ(errors.lastText(), catalogText(Message::kOutOfMemory));
    EXPECT_TRUE(isVisible(ShODBCAdmin));
}

TEST_F(MessageDialogTest, GlobalsCanBeFreedTwiceAndReportsThenShowNumbers) {
    Mdialog = show(kErrorDialog, "text");
    freeGlobals();
    freeGlobals();
    EXPECT_EQ(dialog, nullptr);
    EXPECT_EQ(Rfile, invalidCatalog());
    showInformation(Message::kConfigureSelectOne);
    EXPECT_EQ(dialogText(), "9020");
    answer("OK");
    showOutOfMemoryErrorAdmin();
    EXPECT_EQ(dialogText(), "7312");
}

// A driver's setup dialog: a shell, the loop, and buttons that end it.
struct SetupDialog {
    SetupDialog() {
        static char name[] = "setup";
        shell = XtVaCreatePopupShell(name, topLevelShellWidgetClass, ShODBCAdmin, XmNtitle, "Setup", nullptr);
        form = createForm(shell, "form");
        Attach(createPushButton(form, "Done", "Done", pressed)).topForm(20).leftForm(20).rightForm(20).bottomForm(20);
        XtPopup(shell, XtGrabNone);
    }
    ~SetupDialog() { XtDestroyWidget(shell); }
    static void pressed(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
        ++Presses;
        dialog_main_loop(ShODBCAdmin);  // returns at once: a loop runs already
        exit_dialog_loop();
    }
    static inline int Presses;
    Widget shell;
    Widget form;
};

TEST_F(MessageDialogTest, TheModalLoopHoldsItsCallerUntilTheDialogIsDone) {
    SetupDialog::Presses = 0;
    for (int round = 1; round <= 2; ++round) {
        exit_dialog_loop();  // no loop runs: the next one still waits
        EXPECT_EQ(current_shell, nullptr);
        SetupDialog setup;
        Widget button = child(setup.form, "Done");
        EXPECT_TRUE(waitFor([&setup] { return person().hasFocus(XtWindow(setup.shell)); }));
        person().click(placeOf(button));
        dialog_main_loop(setup.shell);
        EXPECT_EQ(SetupDialog::Presses, round);
        EXPECT_EQ(current_shell, nullptr);
        EXPECT_NE(loop_done, 0);
    }
    // Lack of memory ends it as well: the box's OK hides the dialog and leaves the reason on the error list.
    ErrorCollector errors;
    SetupDialog setup;
    showOutOfMemoryError(setup.form);
    EXPECT_EQ(dialogText(), catalogText(Message::kOutOfMemory));
    person().key(XK_Return);
    dialog_main_loop(setup.shell);
    EXPECT_FALSE(XtIsManaged(setup.form));
    XtManageChild(setup.form);
    outOfMemoryError(setup.form);
    EXPECT_FALSE(XtIsManaged(setup.form));
    EXPECT_EQ(errors.numbers(), "0 7312");
}

}  // namespace
