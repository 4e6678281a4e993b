#include "tests/support/window_test.h"

#include <sys/stat.h>

#include <filesystem>
#include <optional>

#include "admin/advanced_dialog.h"

using namespace std::string_literals;
using Rows = std::vector<std::string>;

namespace {

constexpr const char* kMissing = "(missing)";

class FileDsnWizardTest : public WindowTest {
protected:
    FileDsnWizardTest() {
        files.write(OdbcFiles::kDrivers,
                    "[Plain]\nDriver=/p.so\n[Talker]\nDriver=" VH_TEST_TALKING_DRIVER "\nSetup=" VH_TEST_SETUP
                    "\n[UserOnly]\nDriver=/u.so\nSetup=" VH_TEST_USER_SETUP "\n");
    }
    void openPage() {
        open();
        click(TbFileDSN);
    }
    static void openWizard() { clickFor(BtnFDAdd, DlgDriverPopup); }
    enum Driver { kPlain = 1, kTalker, kUserOnly };
    // Goes to the third screen; `typed` replaces the text of the advanced dialog, left by `button`, when it is given.
    static void goToSummary(Driver driver, const std::string& name, const char* typed = nullptr,
                            const char* button = "BtnAdvFDOK", bool verified = true) {
        openWizard();
        clickRow(LstDPName, driver);
        if (typed != nullptr) {
            clickFor(BtnAdvanced, AdvFDDialog);
            XmTextSetString(TxtFDAdv, std::string(typed).data());
            if (!verified) {
                click(child(AdvFDDialog, "*TglVerifyConnection"));
            }
            clickFor(child(AdvFDDialog, "*"s + button), DlgDriverPopup);
        }
        click(BtnFinish);
        type(name);
        key(XK_Return);
        EXPECT_EQ(CurScreenAt, 3);
    }
    // Leaves the wizard, or its last screen, by a key, answers what it reports, and checks that it is gone.
    static void finish(KeySym symbol = XK_Return, std::optional<Message::Number> report = {}) {
        key(symbol);
        if (report) {
            expectReport(*report);
        }
        EXPECT_TRUE(waitFor([] { return !isVisible(XtParent(DlgDriverPopup)); }));
    }
    // The files in the list, without their directory.
    static Rows listed() {
        Rows files = rows(child(FSelect, "*ItemsList"));
        for (std::string& file : files) {
            file.erase(0, file.rfind('/') + 1);
        }
        return files;
    }

    const std::string path_ = files.path("a.dsn");
};

TEST_F(FileDsnWizardTest, TheScreensFollowOneAnother) {
    openPage();
    openWizard();
    const auto expectScreen = [](short number, Message::Number next, bool canGoBack, Widget focus) {
        EXPECT_EQ(CurScreenAt, number);
        short screen = 0;
        for (Widget form : {FormScr1, FormScr2, FormScr3}) {
            const bool isShown = ++screen == number;
            EXPECT_EQ(placeOf(form).width, isShown ? 440 : 5);
            EXPECT_EQ(placeOf(form).height, isShown ? 300 : 5);
        }
        EXPECT_EQ(textOf(BtnFinish), catalogText(next));
        EXPECT_EQ(XtIsSensitive(BtnNavigate) != 0, canGoBack);
        EXPECT_EQ(XmGetFocusWidget(FormScr1), focus);
    };
    expectScreen(1, Message::kNext, false, LstDPName);
    key(XK_Return);  // No driver needs to be chosen yet.
    expectScreen(2, Message::kNext, true, Text7);
    click(BtnFinish);
    expectReport(Message::kFileNameMissing);
    type("a;b");
    click(BtnFinish);
    expectReport(Message::kFileNameHasSemicolon);
    ASSERT_TRUE(waitUntilUp(DlgDriverPopup));
    clickFor(child(FormScr2, "BtnBrowse"), Fdialog);
    XmTextSetString(child(Fdialog, "Text"), files.path("x").data());
    clickFor(child(Fdialog, "OK"), DlgDriverPopup);
    EXPECT_EQ(textOf(Text7), files.path("x.dsn"));
    XmTextSetString(Text7, std::string("nobody").data());
    XmProcessTraversal(Text7, XmTRAVERSE_CURRENT);
    key(XK_Return);
    expectScreen(3, Message::kFinish, true, BtnFinish);
    EXPECT_EQ(textOf(TxtDSNInfo), "File data source: nobody\nDrivers:");
    click(BtnNavigate);
    expectScreen(2, Message::kNext, true, Text7);
    click(BtnNavigate);
    expectScreen(1, Message::kNext, false, LstDPName);
    clickRow(LstDPName, kPlain, 2);
    expectScreen(2, Message::kNext, true, Text7);
    key(XK_Return);
    EXPECT_EQ(textOf(TxtDSNInfo), "File data source: nobody\nDrivers:Plain");
    finish(XK_Return, Message::kDriverHasNoSetup);

    goToSummary(kUserOnly, "nobody");
    finish(XK_Return, Message::kNoConfigFileDsn);
    openWizard();
    expectScreen(1, Message::kNext, false, LstDPName);
    finish(XK_Escape);
    EXPECT_EQ(calls(), "");
}

TEST_F(FileDsnWizardTest, EachWayToFinish) {
    openPage();
    enum Outcome { kCalled, kTested, kWritten };
    struct Case {
        const char *about, *typed, *button;
        std::string shown;  // of the attributes in the summary
        Outcome outcome;
        std::string result = {};  // of the connection test
    };
    const char* const ok = "BtnAdvFDOK";
    for (const Case& test : {Case{"nothing typed", nullptr, ok, "", kCalled},
                             Case{"cancelled", "Driver={Talker}\nUID=u", "BtnAdvFDCancel", "", kCalled},
                             Case{"it connects", "Driver={Talker}\nConnect=1", ok, "Connect=1", kTested,
                                  catalogText(Message::kTestSucceeded)},
                             Case{"it fails", "Driver={Talker}\nUID=u", ok, "UID=u", kTested, "(record)"},
                             Case{"its prompt is left", "Driver={Talker}\nLeave=1", ok, "Leave=1", kTested},
                             Case{"not verified", "Driver={Talker}\nUID=u", ok, "UID=u", kWritten}}) {
        SCOPED_TRACE(test.about);
        goToSummary(kTalker, "a", test.typed, test.button, test.outcome != kWritten);
        const std::string attributes = test.shown.empty() ? "" : "\nConnection attributes:\n" + test.shown;
        EXPECT_EQ(textOf(TxtDSNInfo), "File data source: a\nDrivers:Talker" + attributes);
        key(XK_Return);
        if (test.outcome == kTested) {
            const std::string text = dialogText();
            EXPECT_TRUE(test.result == "(record)" ? text.starts_with("1 ") && text.find("UID=u") != std::string::npos
                                                  : text == test.result)
                << text;
            EXPECT_EQ(calls(), "");
            EXPECT_EQ(files.read("a.dsn"), kMissing);
            answer("OK");
        }
        EXPECT_FALSE(isVisible(XtParent(DlgDriverPopup)));
        const std::string given = "FILEDSN=" + path_ + "\0DRIVER=Talker\0"s + test.shown + "\0\0"s;
        EXPECT_EQ(calls(),
                  test.outcome == kWritten ? "" : call(1, "Talker", test.outcome == kTested ? given : "null", path_));
        EXPECT_EQ(files.read("a.dsn"),
                  test.outcome == kWritten ? "[ODBC]\nDRIVER={Talker}\nFILEDSN=" + path_ + "\nUID=u\n\n" : kMissing);
    }
    EXPECT_EQ(listed(), Rows{"a.dsn"});
}

TEST_F(FileDsnWizardTest, WhatIsThereIsOverwrittenOnlyWhenThePersonSaysSo) {
    const std::string before = "[ODBC]\nDriver=Other\n";
    mkdir(files.path("folder.dsn").c_str(), 0777);
    const std::string question = catalogText(Message::kOverwriteQuestion);
    // Finishes with a file that is there, and answers the question.
    const auto finishOver = [&](const char* typed, bool verified, const std::string& asked, const char* button) {
        files.write("a.dsn", before);
        refreshFileDsnPage();
        EXPECT_EQ(listed(), Rows{"a.dsn"});
        goToSummary(kTalker, "a", typed, "BtnAdvFDOK", verified);
        key(XK_Return);
        EXPECT_EQ(dialogText(), asked);
        // With verification the file that was there is gone before the person answers.
        EXPECT_EQ(files.read("a.dsn"), asked == question ? before : kMissing);
        answer(button);
    };
    openPage();
    goToSummary(kTalker, "folder");
    key(XK_Return);
    EXPECT_EQ(answer("OK"), question);
    expectReport(Message::kOverwriteFailed);
    finish(XK_Escape);

    // Attributes that were typed are not used when a file is overwritten. It comes back when the driver makes none.
    finishOver("Driver={Talker}\nUID=u", false, question, "OK");
    EXPECT_EQ(calls(), call(1, "Talker", "null", path_));
    EXPECT_EQ(files.read("a.dsn"), before);
    EXPECT_EQ(listed(), Rows{"a.dsn"});
    {
        const ScopedEnvironment writing{{"VH_TEST_RESULT", "write"}};
        finishOver(nullptr, false, question, "OK");
        expectReport(Message::kSetupFailed);
    }
    EXPECT_NE(calls(), "");
    EXPECT_EQ(files.read("a.dsn"), "new");
    EXPECT_EQ(outputOf("ls -A '" + files.path("") + "' | grep -c aside"), "0\n");
    // Without a driver that could make the new one nobody is asked.
    goToSummary(kPlain, "a");
    key(XK_Return);
    expectReport(Message::kDriverHasNoSetup);
    finish(XK_Escape);
    finishOver("Driver={Talker}\nConnect=1", true, catalogText(Message::kTestSucceeded), "OK");
    EXPECT_NE(calls(), "");

    // No leads to the choice of another name, in a dialog over the wizard.
    finishOver(nullptr, true, question, "Cancel");
    ASSERT_TRUE(waitUntilUp(Fdialog));
    const auto choose = [this](const std::string& chosen) {
        XmTextSetString(child(Fdialog, "Text"), (files.path("") + chosen).data());
        click(child(Fdialog, "OK"));
    };
    choose("");
    EXPECT_TRUE(isVisible(XtParent(Fdialog)));
    choose("b.txt");
    EXPECT_EQ(calls(), call(1, "Talker", "null", files.path("b.txt.dsn")));
    EXPECT_FALSE(isVisible(XtParent(Fdialog)));
    EXPECT_EQ(files.read("a.dsn"), before);
}

TEST_F(FileDsnWizardTest, ThePageConfiguresRemovesAndSetsItsDirectory) {
    const std::string longest(990, 'l');
    const std::string other = files.write("b.dsn", "[ODBC]\nUID=u\n");
    const std::string odd =
        files.write("a\tb.dsn", "[Other]\nA=1\n[ODBC]\nDRIVER={Talker}\nUID=u\nEmpty=\nLong=" + longest + "\n");
    files.write(OdbcFiles::kUser, "[ODBC FILE DSN]\nDefaultDSNDir=" + files.path("") + "\n");
    openPage();
    Widget list = child(FSelect, "*ItemsList");
    ASSERT_EQ(listed(), (Rows{"a\tb.dsn", "b.dsn"}));
    XmListDeselectAllItems(list);
    click(BtnFDConfigure);
    expectReport(Message::kFileConfigureSelectOne);
    click(BtnFDRemove);
    expectReport(Message::kRemoveSelectOne);

    clickRow(list, 1, 2);
    EXPECT_EQ(calls(),
              call(2, "Talker", "DSN=" + odd + "\0DRIVER={Talker}\0UID=u\0Empty=\0Long="s + longest + "\0\0"s, odd));
    EXPECT_EQ(DsnType, kFileDataSource);

    for (Widget reached : {list, child(FSelect, "Text")}) {
        XmProcessTraversal(reached, XmTRAVERSE_CURRENT);
        key(XK_Return);
        EXPECT_EQ(calls().substr(0, 2), "2 ") << XtName(reached);
    }
    clickRow(list, 2);
    click(BtnFDConfigure);
    expectReport(Message::kFileNamesNoDriver);
    // Return leads to what was typed, wherever it is, and from the lists share their room in the same way.
    Widget directories = child(FSelect, "*DirList");
    const std::string deep = std::string(60, 'd');
    std::filesystem::create_directory(files.path(deep));
    files.write(deep + "/c.dsn", "");
    for (const auto& [field, typed, expected] : {std::tuple{"FilterText", files.path(deep), Rows{"c.dsn"}},
                                                 {"Text", "..", Rows{"a\tb.dsn", "b.dsn"}},
                                                 {"Text", files.path(deep) + "/c.dsn", Rows{"c.dsn"}},
                                                 {"FilterText", files.path(""), Rows{"a\tb.dsn", "b.dsn"}}}) {
        XmProcessTraversal(child(FSelect, field), XmTRAVERSE_CURRENT);
        key(XK_slash, XK_Control_L);
        type(typed);
        key(XK_Return);
        EXPECT_EQ(listed(), expected) << typed;
        const int ratio = 100 * placeOf(XtParent(directories)).width / placeOf(XtParent(list)).width;
        EXPECT_NEAR(ratio, 66, 1) << typed;
    }
    clickRow(list, 2);
    files.write("b.dsn", "[ODBC]\nDriver=Nobody\n");
    click(BtnFDConfigure);
    EXPECT_NE(answer("OK").find("\"Nobody\""), std::string::npos);
    remove(other.c_str());
    mkfifo(other.c_str(), 0600);  // to be opened by nobody
    click(BtnFDConfigure);
    expectReport(Message::kFileDsnUnreadable);
    remove(other.c_str());
    EXPECT_EQ(listed(), Rows{"a\tb.dsn"});

    click(BtnSetDirectory);
    EXPECT_EQ(answer("OK"), catalogText(Message::kSetDirectoryQuestion, {files.path("")}));
    EXPECT_EQ(files.summary(), "ODBC FILE DSN{DefaultDSNDir=" + files.path("") + "}");

    clickRow(list, 1);
    click(BtnFDRemove);
    EXPECT_EQ(answer("Cancel"), "Remove the data source \"" + odd.substr(1) + "\"    and all its settings?");
    EXPECT_NE(files.read("a\tb.dsn"), kMissing);
    click(BtnFDRemove);
    answer("OK");
    EXPECT_EQ(files.read("a\tb.dsn"), kMissing);
    EXPECT_EQ(listed(), Rows{catalogText(Message::kNoFileDsns)});
    clickRow(list, 1);
    click(BtnFDRemove);
    expectReport(Message::kRemoveSelectOne);

    // The directory that is shown goes.
    mkdir(files.path("sub").c_str(), 0777);
    files.write("sub/c.dsn", "");
    showFileDsnDirectory(files.path("sub/"));
    clickRow(list, 1);
    std::filesystem::remove_all(files.path("sub"));
    click(BtnFDConfigure);
    expectReport(Message::kFileDsnUnreadable);
    EXPECT_EQ(listed(), Rows{catalogText(Message::kNoFileDsns)});
}

}  // namespace
