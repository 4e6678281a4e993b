#include "tests/support/window_test.h"

#include <Xm/TextF.h>

#include "motifutil/message_dialog.h"
#include "motifutil/modal_loop.h"
#include "motifutil/text_verifiers.h"
#include "tests/support/error_collector.h"

namespace {

class MessageDialogTest : public WindowTest {
protected:
    void SetUp() override { open(); }

    static Widget make(unsigned long type, std::string text) {
        char yes[] = "Yes", no[] = "No", title[] = "Title";
        return createMessageDialog(ShODBCAdmin, type, text.data(), yes, no, title);
    }
    static Widget show(unsigned long type, const char* text) {
        Widget box = make(type, text);
        for (const auto& [callback, what] :
             {std::pair{XmNokCallback, "ok"}, {XmNcancelCallback, "cancel"}, {XmNdestroyCallback, "gone"}}) {
            XtAddCallback(box, callback, note, const_cast<char*>(what));
        }
        XtManageChild(box);
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
        for (const KeySym symbol : {KeySym{XK_Return}, KeySym{XK_Escape}, KeySym{XK_F4}}) {
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
            make(kErrorDialog, "");
            EXPECT_EQ(noted(), "gone");
        }
    }
}

TEST_F(MessageDialogTest, AnUnknownTypeIsShownAsLackOfMemory) {
    EXPECT_EQ(make(3, "text"), nullptr);
    ErrorCollector errors;
    EXPECT_EQ(dialogText(), catalogText(Message::kOutOfMemory));
    // The box stands over the main window, whose shell has no parent to be unmanaged from.
    answer("OK");
    EXPECT_EQ(errors.numbers(), "0");  // an error of a database, not of the system
    EXPECT_EQ(errors.lastText(), catalogText(Message::kOutOfMemory));
    EXPECT_TRUE(isVisible(ShODBCAdmin));
}

// A driver's setup dialog: a shell, the loop, and a button that ends it.
struct SetupDialog {
    SetupDialog() {
        static char name[] = "setup";
        shell = XtVaCreatePopupShell(name, topLevelShellWidgetClass, ShODBCAdmin, nullptr);
        form = createForm(shell, "form");
        createPushButton(form, "Done", "Done", [](Widget, XtPointer, XtPointer) {
            ++Presses;
            dialog_main_loop(ShODBCAdmin);  // returns at once: a loop runs already
            exit_dialog_loop();
        });
        XtPopup(shell, XtGrabNone);
    }
    ~SetupDialog() { XtDestroyWidget(shell); }
    static inline int Presses;
    Widget shell, form;
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

class TextVerifiersTest : public WindowTest {
protected:
    TextVerifiersTest() {
        static char name[] = "odbcadmin";
        ShODBCAdmin = XtAppCreateShell(name, name, applicationShellWidgetClass, display, nullptr, 0);
        Widget form = createForm(ShODBCAdmin, "form");
        field_ = createTextField(form, "field");
        other_ = createTextField(form, "other");
        Attach(field_).topForm().leftForm().rightForm();
        Attach(other_).below(field_, 4).leftForm().rightForm();
        XtRealizeWidget(ShODBCAdmin);
        EXPECT_TRUE(waitFor([] { return person().hasFocus(XtWindow(ShODBCAdmin)); }));
    }
    static std::string textOf(Widget field) { return XtTextPtr(XmTextFieldGetString(field)).get(); }
    void select(int first, int last) { XmTextFieldSetSelection(field_, first, last, CurrentTime); }

    Widget field_, other_;
};

TEST_F(TextVerifiersTest, APasswordIsTypedAndEditedBehindAsterisks) {
    char* password = nullptr;
    XtAddCallback(field_, XmNmodifyVerifyCallback, checkPassword, &password);
    const auto expectPassword = [&](const char* step, const std::string& real, std::size_t shown) {
        EXPECT_EQ(password == nullptr ? "(null)" : password, real) << step;
        EXPECT_EQ(textOf(field_), std::string(shown, '*')) << step;
    };
    click(field_);
    type("abc");
    select(1, 2);
    type("X");
    expectPassword("middle replaced", "aXc", 3);
    key(XK_End);
    key(XK_BackSpace);
    expectPassword("end deleted", "aX", 2);
    key(XK_Home);
    key(XK_eacute);
    type("b");
    expectPassword("two bytes in front, and one behind them", "\u00e9baX", 4);
    XmTextFieldSetString(other_, const_cast<char*>("p\u20acq"));
    XmTextFieldSetSelection(other_, 0, 3, XtLastTimestampProcessed(display));
    XmTextFieldCopy(other_, XtLastTimestampProcessed(display));
    select(1, 3);
    key(XK_Insert, XK_Shift_L);
    expectPassword("pasted over the middle", "\u00e9p\u20acqX", 5);
    key(XK_Home);
    person().enter({{XK_Delete, 3}});
    settle();
    expectPassword("characters deleted whole", "qX", 2);
    select(0, 2);
    key(XK_BackSpace);
    expectPassword("all deleted", "", 0);
    type("Z1");
    expectPassword("typed again", "Z1", 2);
    XtFree(password);
}

TEST_F(TextVerifiersTest, OnlyALoneNewlineIsRefused) {
    XtAddCallback(field_, XmNmodifyVerifyCallback, discardNewLine, nullptr);
    for (const char* inserted : {"a", "\n\n", "\n"}) {
        XmTextFieldInsert(field_, 0, const_cast<char*>(inserted));
    }
    EXPECT_EQ(textOf(field_), "\n\na");
}

}  // namespace
