#include "tests/support/window_test.h"

#include <filesystem>
#include <tuple>

#include <Xm/ToggleB.h>

using namespace std::string_literals;

namespace {

class TracePageTest : public WindowTest {
protected:
    void openPage(const std::string& section) {
        openWith("[ODBC]\n" + section);
        click(BtnTrace);
    }
    static void expectOn(bool on) {
        EXPECT_EQ(XmToggleButtonGetState(TgEnableTracing) != 0, on);
        for (Widget control : {LblTraceFile, TxtTraceFile, BtnTFileBrowse, LblTraceLib, TxtTraceLib, BtnTLibBrowse}) {
            EXPECT_EQ(XtIsSensitive(control) != 0, on) << XtName(control);
        }
    }
    static Widget box() { return XtNameToWidget(ShODBCAdmin, "*traceFileDialog"); }
};

TEST_F(TracePageTest, StoredSettingsAreShownAndWakeNothing) {
    openPage("TRACE=1\nTraceFile=/at/first\n");
    EXPECT_FALSE(XtIsSensitive(BtnApply));
    expectOn(true);
    for (const auto& [section, on, file, library] : {std::tuple{"TRACE=\n", false, "", ""},
                                                     {"TRACE=0\nTraceFile=/tmp/a b.log\n", false, "/tmp/a b.log", ""},
                                                     {"TRACE=1\nTraceDll=/usr/lib/t.so\n", true, "", "/usr/lib/t.so"},
                                                     {"trace=10\n", true, "", ""},
                                                     {"TRACE=yes\n", false, "", ""}}) {
        SCOPED_TRACE(section);
        files.write(OdbcFiles::kUser, std::string("[ODBC]\n") + section);
        Load_Trace();
        expectOn(on);
        EXPECT_EQ(textOf(TxtTraceFile), file);
        EXPECT_EQ(textOf(TxtTraceLib), library);
    }
}

TEST_F(TracePageTest, PathsAreStoredExactlyOrNotAtAll) {
    const std::string latin = "/tmp/\xe4 \xff.log";
    const std::string before = "[ODBC]\nTRACE=1\nTraceFile=" + latin + "\n";
    openPage(before.substr(7));
    click(TgEnableTracing);
    click(BtnApply);
    EXPECT_EQ(files.section("ODBC"), "TRACE=0|TraceFile=" + latin + "|TraceDll=");
    const std::string stored = files.read(OdbcFiles::kUser);
    for (const auto& [path, reason] : {std::pair{"/tmp/a.log\n[Section]"s, Message::kTraceTextHasLineBreak},
                                       {"/" + std::string(990, 'p'), Message::kTraceTextTooLong}}) {
        XmTextSetString(TxtTraceLib, const_cast<char*>(path.c_str()));
        XmToggleButtonSetState(TgEnableTracing, True, True);
        click(BtnApply);
        expectReport(reason);
        EXPECT_EQ(files.read(OdbcFiles::kUser), stored);
    }
    XmTextSetString(TxtTraceLib, const_cast<char*>(""));
    XmToggleButtonSetState(TgEnableTracing, True, True);
    const ScopedEnvironment through{{"ODBCINI", files.path("odbcinst.ini/below-a-file")}};
    click(BtnApply);
    expectReport(Message::kTraceNotSaved);
    EXPECT_FALSE(XtIsSensitive(BtnApply));
    click(TgEnableTracing);
    expectOn(false);
    EXPECT_TRUE(XtIsSensitive(BtnApply));
}

TEST_F(TracePageTest, BrowsingFillsTheFieldOrLeavesIt) {
    const std::string log = std::filesystem::current_path() / "one.log";
    openPage("TRACE=1\nTraceFile=/old\n");
    for (const auto& [button, shown, title] : {std::tuple{BtnTFileBrowse, "*.log", Message::kChooseTraceFileTitle},
                                               {BtnTLibBrowse, "*.so", Message::kChooseTraceLibraryTitle}}) {
        click(button);
        ASSERT_TRUE(waitFor([] { return isUp(box()); }));
        EXPECT_EQ(stringOf(box(), XmNpattern), shown);
        EXPECT_EQ(person().windows(catalogText(title), true).size(), 1U);
        EXPECT_EQ(textOf(child(box(), "Selection")), catalogText(Message::kFileSelection));
        key(XK_Escape);
        ASSERT_TRUE(waitFor([] { return box() == nullptr; }));
    }
    EXPECT_EQ(textOf(TxtTraceFile) + textOf(TxtTraceLib), "/old");
    EXPECT_FALSE(XtIsSensitive(BtnApply));

    for (const char* typed : {log.c_str(), "one.log"}) {
        XmTextSetString(TxtTraceFile, const_cast<char*>(""));
        click(BtnTFileBrowse);
        ASSERT_TRUE(waitFor([] { return isUp(box()); }));
        XmTextSetString(child(box(), "Text"), const_cast<char*>(typed));
        click(child(box(), "OK"));
        ASSERT_TRUE(waitFor([] { return box() == nullptr; }));
        EXPECT_EQ(textOf(TxtTraceFile), log);
    }
    EXPECT_TRUE(XtIsSensitive(BtnApply));
}

}  // namespace
