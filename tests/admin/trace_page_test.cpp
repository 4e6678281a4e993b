#include "tests/support/window_test.h"

#include <X11/keysym.h>
#include <Xm/FileSB.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include "admin/globals.h"
#include "admin/trace_page.h"
#include "bos/catalog.h"
#include "motifutil/catalog_text.h"
#include "motifutil/widgets.h"

namespace {

class TracePageTest : public WindowTest {
protected:
    void openWith(const std::string& section) {
        files.write(OdbcFiles::kUser, "[ODBC]\n" + section);
        open();
        click(BtnTrace);
    }
    static std::string text(Widget field) { return XtTextPtr(XmTextGetString(field)).get(); }
    static bool isOn() { return XmToggleButtonGetState(TgEnableTracing) != 0; }
    std::vector<std::string> saved() const {
        for (const auto& [name, lines] : files.userSections()) {
            if (name == "ODBC") {
                return lines;
            }
        }
        return {};
    }
};

TEST_F(TracePageTest, StoredSettingsAreShownAndWakeNothing) {
    struct Case {
        const char* section;
        bool on;
        const char* file;
        const char* library;
    };
    const Case kCases[] = {
        {"", false, "", ""},
        {"TRACE=\n", false, "", ""},
        {"TRACE=0\nTraceFile=/tmp/a b.log\n", false, "/tmp/a b.log", ""},
        {"TRACE=1\nTraceDll=/usr/lib/t.so\n", true, "", "/usr/lib/t.so"},
        {"trace=10\n", true, "", ""},
        {"TRACE=yes\n", false, "", ""},
    };
    for (const Case& test : kCases) {
        SCOPED_TRACE(test.section);
        openWith(test.section);
        EXPECT_EQ(isOn(), test.on);
        EXPECT_EQ(text(TxtTraceFile), test.file);
        EXPECT_EQ(text(TxtTraceLib), test.library);
        EXPECT_FALSE(XtIsSensitive(BtnApply));
        for (Widget control : {LblTraceFile, TxtTraceFile, BtnTFileBrowse, LblTraceLib, TxtTraceLib, BtnTLibBrowse}) {
            EXPECT_EQ(XtIsSensitive(control) != 0, test.on) << XtName(control);
        }
        freeGlobals();
        Rfile = invalidCatalog();
        XtDestroyWidget(ShODBCAdmin);
        settle();
    }
    ShODBCAdmin = nullptr;
}

TEST_F(TracePageTest, ApplySavesWhetherTracingIsOnOrOff) {
    openWith("InstallDir=/x\nTRACE=0\n");
    click(TgEnableTracing);
    EXPECT_TRUE(XtIsSensitive(BtnApply));
    click(TxtTraceFile);
    type("/tmp/t.log");
    click(BtnApply);
    EXPECT_FALSE(XtIsSensitive(BtnApply));
    EXPECT_EQ(saved(), (std::vector<std::string>{"InstallDir=/x", "TRACE=1", "TraceFile=/tmp/t.log", "TraceDll="}));
    click(TgEnableTracing);
    EXPECT_FALSE(XtIsSensitive(TxtTraceFile));
    click(BtnApply);
    EXPECT_EQ(saved(), (std::vector<std::string>{"InstallDir=/x", "TRACE=0", "TraceFile=/tmp/t.log", "TraceDll="}));
}

TEST_F(TracePageTest, AWriteThatFailsIsReported) {
    openWith("TRACE=0\n");
    click(TgEnableTracing);
    const ScopedEnvironment through{{"ODBCINI", files.path("odbcinst.ini/below-a-file")}};
    click(BtnApply);
    expectReport(Message::kTraceNotSaved);
}

TEST_F(TracePageTest, BrowsingFillsTheFieldOrLeavesIt) {
    const std::string log = files.write("one.log", "");
    openWith("TRACE=1\nTraceFile=/old\n");
    const auto box = [] { return XtNameToWidget(ShODBCAdmin, "*traceFileDialog"); };
    const struct {
        Widget button;
        const char* pattern;
        Message::Number title;
    } kBoxes[] = {{BtnTFileBrowse, "*.log", Message::kChooseTraceFileTitle},
                  {BtnTLibBrowse, "*.so", Message::kChooseTraceLibraryTitle}};
    for (const auto& row : kBoxes) {
        click(row.button);
        ASSERT_TRUE(waitFor([&box] { return box() != nullptr && isVisible(box()); }));
        XmString pattern = nullptr;
        XtVaGetValues(box(), XmNpattern, &pattern, nullptr);
        EXPECT_EQ(plainText(XmStringPtr(pattern).get()), row.pattern);
        EXPECT_EQ(person().windows(catalogText(row.title), true).size(), 1U);
        for (const auto& [part, label] : {std::pair{"Selection", Message::kFileSelection},
                                          {"Items", Message::kFileList},
                                          {"Dir", Message::kDirectoryList},
                                          {"FilterLabel", Message::kFilter},
                                          {"Apply", Message::kFilter}}) {
            EXPECT_EQ(labelOf(child(box(), part)), catalogText(label)) << part;
        }
        key(XK_Escape);
        ASSERT_TRUE(waitFor([&box] { return box() == nullptr; }));
    }
    EXPECT_EQ(text(TxtTraceFile) + text(TxtTraceLib), "/old");
    EXPECT_FALSE(XtIsSensitive(BtnApply));

    click(BtnTFileBrowse);
    ASSERT_TRUE(waitFor([&box] { return box() != nullptr && isVisible(box()); }));
    Widget name = child(box(), "Text");
    XmTextSetString(name, const_cast<char*>(log.c_str()));
    click(child(box(), "OK"));
    ASSERT_TRUE(waitFor([&box] { return box() == nullptr; }));
    EXPECT_EQ(text(TxtTraceFile), log);
    EXPECT_TRUE(XtIsSensitive(BtnApply));
}

}  // namespace
