#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "bos/file.h"
#include "bos/file_names.h"
#include "bos/host.h"
#include "bos/library.h"
#include "help/browser_platform.h"
#include "help/help_locator.h"
#include "help/url_routines.h"
#include "help/web_help.h"
#include "kvini/kv_ini.h"
#include "kvini/profile.h"
#include "kvlib/debug_mask.h"
#include "tests/support/child_process.h"
#include "tests/support/recording_browser.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/system_fault.h"
#include "tests/support/temporary_folder.h"

namespace {

using Routine = int (*)(const char*, std::size_t, char**, std::size_t*);

// What a routine makes of a text, or "(-1)".
std::string made(Routine routine, const std::string& text) {
    char* out = nullptr;
    std::size_t length = 0;
    if (routine(text.data(), text.size(), &out, &length) != 0) {
        return "(-1)";
    }
    std::string result(out, length);
    EXPECT_EQ(out[length], '\0');
    std::free(out);
    return result;
}

TEST(HelpUrl, IsEscapedAndUnescaped) {
    const std::tuple<Routine, const char*, const char*> rows[] = {
        {WWHelp_URL_EscapeForJavaScript, "\xc3\xa4 \"%&'?\\b", "\xc3\xa4 %22%25%26%27%3f%5cb"},
        {WWHelp_URL_EscapeForJavaScript, "", "(-1)"},
        {WWHelp_URL_Unescape, "a%3fb%26c% 4d", "a?b&c\4d"},  // a digit after a blank
        {WWHelp_URL_Unescape, "ab%4", "ab4"},                // cut off
        {WWHelp_URL_Unescape, "%", "(-1)"},
        {WWHelp_URL_BuildSmartURL, "u?",
         "javascript:x=unescape('u%3f');if(typeof(window.WWHFrame)!='undefined'){window.WWHFrame.WWHHelp."
         "fSetContextDocument(x);}else{y=eval('document.open();document.writeln(\\'<a "
         "href=\\\"'+x+'\\\">'+x+'</a>\\');document.close();');}"},
    };
    for (const auto& [routine, in, out] : rows) {
        EXPECT_EQ(made(routine, in), out) << in;
    }
}

// A PATH of folders "a" and "b" in which browsers are scripts that write down their arguments.
class BrowserTest : public testing::Test {
protected:
    TemporaryFolder folder_;
    ScopedEnvironment environment_{{"PATH", folder_.path("a") + "::" + folder_.path("b") + ":/bin:/usr/bin"},
                                   {"DISPLAY", ""},
                                   {"ODBCINST", folder_.path("odbcinst.ini")}};
};

TEST_F(BrowserTest, DirectoriesGoBeforeNames) {
    WWHelp_BrowserInfo info{};
    const auto expectFound = [&](const char* name, int remoteCapable, int probePassed) {
        ASSERT_EQ(WWHelp_Platform_SetDefaultBrowserInfo(&info), 0);
        EXPECT_EQ(info.browserPath, folder_.path(name));
        EXPECT_EQ(info.remoteCapable, remoteCapable);
        EXPECT_EQ(info.remoteProbePassed, probePassed);
    };
    writeScript(folder_, "b/netscape6", "exit 0");
    expectFound("b/netscape6", 1, 1);
    // What can't be run is found all the same, and its probe fails.
    folder_.write("a/iexplorer", "no program");
    expectFound("a/iexplorer", 0, 0);
    writeScript(folder_, "a/mozilla", "echo complaint >&2");
    expectFound("a/mozilla", 1, 0);
}

TEST_F(BrowserTest, TopicsOpenUnderTheAddressOfTheBook) {
    writeScript(folder_, "a/iexplorer", recordAddress(folder_.path("opened")));
    folder_.write("odbcinst.ini", "[Administrator]\nHelpRootDirectory=/opt/help\n");
    const auto text = [](const char* s) { return reinterpret_cast<unsigned char*>(const_cast<char*>(s)); };
    ASSERT_EQ(WWHelp_Startup("File:///h"), 0);
    EXPECT_EQ(WWHelp_Startup("File:///h"), -1);
    EXPECT_EQ(WWHelp_DisplayHelp("ODBC", nullptr), 0);
    const struct {
        int (*alone)();
        int (*withTopic)(const char*, const char*);
        std::string aloneQuery, topicQuery;
    } kViews[] = {
        {WWHelp_DisplayHelpNavigation, WWHelp_DisplayHelpWithNavigation, "", ""},
        {WWHelp_DisplayHelpContents, WWHelp_DisplayHelpWithContents, "?tab=contents", "&tab=contents"},
        {WWHelp_DisplayHelpIndex, WWHelp_DisplayHelpWithIndex, "?tab=index", "&tab=index"},
        {WWHelp_DisplayHelpSearch, WWHelp_DisplayHelpWithSearch, "?tab=search", "&tab=search"},
        {WWHelp_DisplayHelpFavorites, WWHelp_DisplayHelpWithFavorites, "?tab=favorites", "&tab=favorites"},
    };
    std::string expected;
    const auto expectOpened = [&](int result, const std::string& query) {
        EXPECT_EQ(result, 0);
        expected += "File:///h/wwhelp/wwhimpl/api.htm" + query + "\n";
        EXPECT_TRUE(waitUntil([&] { return folder_.read("opened") == expected; })) << folder_.read("opened");
    };
    for (const auto& view : kViews) {
        EXPECT_EQ(view.withTopic("", "t"), -1);
        expectOpened(view.alone(), view.aloneQuery);
        expectOpened(view.withTopic("C", "t"), "?context=C&topic=t" + view.topicQuery);
    }
    EXPECT_EQ(WWHelp_Shutdown(), 0);
    EXPECT_EQ(WWHelp_Shutdown(), -1);
    expectOpened(kvDisplayHelp2(text("h"), text("C"), text("t")), "?context=C&topic=t&single=true");

    unsigned char buffer[16];
    unsigned char* url = buffer;
    EXPECT_EQ(kvFindHelpRoot(text("Administrator"), &url, sizeof buffer), 0);
    EXPECT_STREQ(reinterpret_cast<char*>(buffer), "File:////opt/he");
    environment_.set("ODBCINST", folder_.path("nothing.ini"));
    testing::internal::CaptureStdout();
    std::fputs("not printed yet", stdout);
    EXPECT_EQ(private_WWHelp_Platform_Command(1, "true", static_cast<char*>(nullptr)), 0);
    runInChild([&] {
        kvDisplayHelp(text("Administrator"), text("userdsn"));
        return 0;
    });
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(printed.rfind("not printed yet") == 0 && printed.size() > 15) << printed;
    EXPECT_EQ(folder_.read("opened"), expected);
}

// Callers in C have nothing to catch an exception with.
TEST_F(BrowserTest, WithoutMemoryEveryCallEnds) {
    const std::string file = folder_.write("a.ini", "[S]\nEntry=a value beyond any short string\n");
    char name[kPathSize];
    int descriptor = 0;
    std::vector<std::string> found;
    std::string thrown;  // and told later, when standard output is free
    const std::function<long()> calls[] = {
        [&] { return kvGetPrivateProfileString("S", "Entry", "", name, sizeof name, file.c_str()); },
        [&] { return KvIni::getSectionWithValues("S", name, sizeof name, file.c_str()); },
        [&] { return bosFileOpen(name, OpenFlag::kTemporary, &descriptor) + bosFileClose(descriptor); },
        [&] { return bosParseName(file.c_str(), name, nullptr) + boshpath(name) + bosFindFiles("/etc/host*", found); },
        [&] { return bosLoadLibrary("a_library_beyond_any_short_string", 1) == nullptr ? 1 : 0; },
        [&] { return WWHelp_Startup(file.c_str()) + WWHelp_DisplayHelpContents() + WWHelp_Shutdown(); }};
    testing::internal::CaptureStdout();
    BOS_RUNTIME_DEBUG = ~std::uint64_t{0};
    for (const auto& call : calls) {
        bool happened = true;
        for (int step = 0; happened; ++step) {
            const SystemFault fault(Fault::kMemoryEnds, step);
            try {
                call();
            } catch (const std::exception&) {
                thrown += std::to_string(&call - calls) + " at " + std::to_string(step) + "\n";
            }
            happened = fault.happened();
        }
    }
    BOS_RUNTIME_DEBUG = 0;
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(thrown, "");
}

}  // namespace
