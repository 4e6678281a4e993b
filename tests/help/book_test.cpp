// The help book as it is installed, in a real browser, under the addresses that the program makes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "help/help_locator.h"
#include "help/web_help.h"
#include "tests/support/recording_browser.h"

namespace {

const unsigned char* bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

// Collects the addresses that reach the person's browser.
class BookTest : public testing::Test {
protected:
    BookTest() {
        // A name that an address can't hold as it stands.
        outputOf("cmake --install '" VH_TEST_BUILD "' --prefix '" + stage_ + "'");
        writeScript(folder_, "browser", recordAddress(folder_.path("opened")));
    }
    void expectOpened(const std::string& name) {
        std::string address;
        ASSERT_TRUE(waitUntil([&] { return (address = folder_.read("opened")).ends_with("\n"); })) << name;
        unlink(folder_.path("opened").c_str());
        address.pop_back();
        addresses_ += "[\"" + name + "\", \"" + address + "\"],\n";
    }
    // What the reader found out, line by line.
    std::string read() const {
        const std::string begin = "<pre id=\"out\">";
        folder_.write("addresses.js", "const addresses = [\n" + addresses_ + "];\n");
        outputOf("cp '" VH_TEST_BOOK_READER "' '" + folder_.path("reader.htm") + "'");
        const std::string page = outputOf(
            "timeout 60 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-sync "
            "--disable-background-networking --disable-component-update --allow-file-access-from-files "
            "--user-data-dir='" +
            folder_.path("profile") + "' --virtual-time-budget=30000 --dump-dom 'file://" + folder_.path("reader.htm") +
            "' 2>/dev/null");
        return page.substr(std::min(page.size(), page.find(begin) + begin.size()));
    }

    TemporaryFolder folder_;
    std::string stage_ = folder_.path("100% help #1");
    ScopedEnvironment environment_{{"PATH", stage_ + "/libexec/browser:/usr/bin:/bin"},
                                   {"BROWSER", "/nowhere/browser:" + folder_.path("browser")},
                                   {"DISPLAY", ""},
                                   {"ODBCINST", stage_ + "/etc/odbcinst.ini"}};
    std::string addresses_;
};

TEST_F(BookTest, ShowsTopicsFindsWordsAndKeepsFavorites) {
    for (const char* topic : {"userdsn", "filedsn", "drivers", "about", "setup", "nonsense"}) {
        kvDisplayHelp(bytes("Administrator"), bytes(topic));
        expectOpened(topic);
    }
    // As the program makes it, without the help of the script between it and the browsers of today.
    addresses_ += "[\"four slashes\", \"File:///" + folder_.path("link") + "/wwhelp/wwhimpl/api.htm?topic=add\"],\n";
    ASSERT_EQ(symlink((stage_ + "/help").c_str(), folder_.path("link").c_str()), 0);
    unsigned char root[1044];
    unsigned char* url = root;
    ASSERT_EQ(kvFindHelpRoot(bytes("Administrator"), &url, sizeof root), 0);
    ASSERT_EQ(WWHelp_Startup(reinterpret_cast<char*>(root)), 0);
    WWHelp_DisplayHelpWithIndex("ODBC", "start");
    expectOpened("index");
    WWHelp_DisplayHelpWithSearch("XY", "add");
    expectOpened("other book");
    WWHelp_DisplayHelpWithNavigation("ODBC", "trace");
    expectOpened("navigation");
    WWHelp_Shutdown();

    const std::string end = " - Varnholt ODBC Administrator Help ";
    // How a line begins, and what is in it.
    const std::pair<std::string, std::string> kCases[] = {
        {"userdsn: User data sources" + end + "[] ", "Only you see them"},
        {"filedsn: File data sources" + end + "[] ", "Verifying deletes the old file."},
        {"drivers: Drivers" + end + "[] ", "A row without a version"},
        {"about: Versions" + end + "[] ", "the cursor library"},
        {"setup: The setup dialog" + end + "[] ", "Save the password"},
        {"nonsense: Contents" + end + "[] ", "There is no help topic nonsense."},
        {"four slashes: Add a data source, step by step" + end + "[pane-contents] ", "Press Add"},
        {"index: Getting started" + end + "[pane-index] ", "What would you like to do?"},
        {"other book: Contents" + end + "[pane-search] ", "There is no help topic add."},
        {"navigation: Tracing" + end + "[pane-contents] ", "unixODBC can't always follow."},
        {"pictures: all there", ""},
        {"search PASSW plain: ", "Passwords The setup dialog"},
        {"after search: File data sources" + end + "[pane-search]", "is saved only if you tick"},
        {"search driver xyzzy: Nothing was found.", ""},
        {"after index: Test a connection", ""},
        {"favorites: Test a connection", ""},
        {"no favorites: You have no favorites yet.", ""},
        {"end: reached", ""},
    };
    std::istringstream lines(read());
    for (const auto& [beginning, text] : kCases) {
        std::string line;
        std::getline(lines, line);
        EXPECT_TRUE(line.starts_with(beginning) && line.find(text) != std::string::npos) << beginning << line;
    }
}

}  // namespace
