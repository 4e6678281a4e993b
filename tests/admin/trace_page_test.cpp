#include "tests/support/window_test.h"

#include <cstring>
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

TEST_F(TracePageTest, ProgramsTraceAsThePageSaysOrItSaysWhyNot) {
    const std::string log = files.path("t.log");
    files.write("books.db", "");
    files.write(OdbcFiles::kDrivers, "[SQLite]\nDriver=" VH_TEST_SQLITE_DRIVER "\n");
    const auto traced = [&] {
        remove(log.c_str());
        outputOf("echo 'select 1' | isql -b -k 'DRIVER=SQLite;Database=" + files.path("books.db") + "'");
        return files.read("t.log").find("SQLDriverConnect") != std::string::npos;
    };
    const auto apply = [](const std::string& file) {
        XmToggleButtonSetState(TgEnableTracing, True, True);
        XmTextSetString(TxtTraceFile, const_cast<char*>(file.c_str()));
        click(BtnApply);
    };
    openPage("TRACE=0\n");
    apply(log);
    EXPECT_TRUE(traced());
    click(TgEnableTracing);
    click(BtnApply);
    EXPECT_FALSE(traced());
    EXPECT_EQ(files.read(".odbcinst.ini"), "(missing)");
    const std::string mine = "# mine\n[X]\nTrace=1";
    files.write(".odbcinst.ini", mine);
    for (const auto& [file, reason] : {std::pair{""s, Message::kTraceNoPath},
                                       {"t.log", Message::kTraceRelativePath},
                                       {"/" + std::string(62, 't'), Message::kTracePathTooLong},
                                       {"/none/t.log", Message::kTraceNotWritable}}) {
        apply(file);
        EXPECT_EQ(answer("OK"), catalogText(reason, {file, std::strerror(ENOENT)}));
        EXPECT_EQ(files.read(".odbcinst.ini"), mine) << file;
        EXPECT_EQ(files.section("ODBC"), "TRACE=1|TraceFile=" + file + "|TraceDll=");
    }
    EXPECT_NE(textOf(LblTraceState), " ");
    files.write(OdbcFiles::kDrivers, "[ODBC]\nPooling=No\n");
    apply(log);
    EXPECT_NE(answer("OK").find(files.path(OdbcFiles::kDrivers)), std::string::npos);
    EXPECT_EQ(files.read(".odbcinst.ini"), mine);
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
