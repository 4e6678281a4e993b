#include "tests/support/window_test.h"

#include <Xm/TextF.h>

#include "motifutil/text_verifiers.h"

namespace {

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

    Widget field_;
    Widget other_;
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
    expectPassword("two bytes in front", "\u00e9aX", 3);
    type("b");
    expectPassword("behind them", "\u00e9baX", 4);
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
    using Case = std::pair<const char*, const char*>;
    XtAddCallback(field_, XmNmodifyVerifyCallback, discardNewLine, nullptr);
    for (const auto& [inserted, left] : {Case{"a", "a"}, {"\n", ""}, {"a\n", "a\n"}, {"\n\n", "\n\n"}, {"", ""}}) {
        XmTextFieldSetString(field_, const_cast<char*>(""));
        XmTextFieldInsert(field_, 0, const_cast<char*>(inserted));
        EXPECT_EQ(textOf(field_), left) << inserted;
    }
}

}  // namespace
