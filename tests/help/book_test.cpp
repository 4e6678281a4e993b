// The help book as it is installed, in a real browser, under the addresses that the program makes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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
    void openTopic(const char* topic) {
        kvDisplayHelp(bytes("Administrator"), bytes(topic));
        expectOpened(topic);
    }
    void openTab(const std::string& name, int (*display)(const char*, const char*), const char* topic) {
        ASSERT_EQ(WWHelp_Startup(root().c_str()), 0);
        EXPECT_EQ(display("ODBC", topic), 0);
        WWHelp_Shutdown();
        expectOpened(name);
    }
    static std::string root() {
        std::array<unsigned char, 1044> buffer{};
        unsigned char* url = buffer.data();
        EXPECT_EQ(kvFindHelpRoot(bytes("Administrator"), &url, buffer.size()), 0);
        return reinterpret_cast<char*>(buffer.data());
    }
    // What the reader found out, line by line.
    std::vector<std::string> read() const {
        folder_.write("addresses.js", "const addresses = [\n" + addresses_ + "];\n");
        outputOf("cp '" VH_TEST_BOOK_READER "' '" + folder_.path("reader.htm") + "'");
        std::istringstream page(outputOf(
            "timeout 60 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-sync "
            "--disable-background-networking --disable-component-update --allow-file-access-from-files "
            "--user-data-dir='" +
            folder_.path("profile") + "' --virtual-time-budget=30000 --dump-dom 'file://" + folder_.path("reader.htm") +
            "' 2>/dev/null"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(page, line);) {
            lines.push_back(line.substr(line.find("<pre id=\"out\">") == 0 ? 14 : 0));
        }
        return lines;
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
    const std::string end = " - Varnholt ODBC Administrator Help ";
    for (const char* topic : {"userdsn", "filedsn", "drivers", "trace", "about", "setup", "nonsense"}) {
        openTopic(topic);
    }
    // As the program makes it, without the help of the script between it and the browsers of today.
    addresses_ += "[\"four slashes\", \"File:///" + folder_.path("link") + "/wwhelp/wwhimpl/api.htm?topic=add\"],\n";
    ASSERT_EQ(symlink((stage_ + "/help").c_str(), folder_.path("link").c_str()), 0);
    openTab("index", WWHelp_DisplayHelpWithIndex, "start");
    openTab(
        "other book", [](const char*, const char* topic) { return WWHelp_DisplayHelpWithSearch("XY", topic); }, "add");
    openTab("navigation", WWHelp_DisplayHelpWithNavigation, "trace");

    // The beginning of a line, and a text in the same line.
    const std::pair<std::string, std::string> kCases[] = {
        {"userdsn: User data sources" + end + "[] ", "Only you see them"},
        {"filedsn: File data sources" + end + "[] ", "Verifying deletes the old file."},
        {"drivers: Drivers" + end + "[] ", "A row without version and company"},
        {"trace: Tracing" + end + "[] ", "unixODBC does not."},
        {"about: Versions" + end + "[] ", "the cursor library"},
        {"setup: The setup dialog" + end + "[] ", "Save the password"},
        {"nonsense: Contents" + end + "[] ", "There is no help topic nonsense."},
        {"four slashes: Add a data source, step by step" + end + "[pane-contents] ", "Press Add"},
        {"index: Getting started" + end + "[pane-index] ", "What would you like to do?"},
        {"other book: Contents" + end + "[pane-search] ", "There is no help topic add."},
        {"navigation: Tracing" + end + "[pane-contents] ", "unixODBC does not."},
        {"pictures: all there", ""},
        {"search PASSW plain: ", "Passwords The setup dialog"},
        {"after search: File data sources" + end + "[pane-search]", "is saved only if you tick"},
        {"search driver xyzzy: Nothing was found.", ""},
        {"after index: Test a connection", ""},
        {"favorites: Test a connection", ""},
        {"no favorites: You have no favorites yet.", ""},
        {"end: reached", ""},
    };
    const std::vector<std::string> lines = read();
    auto line =
        std::find_if(lines.begin(), lines.end(), [](const std::string& text) { return text.starts_with("userdsn"); });
    for (const auto& [beginning, text] : kCases) {
        ASSERT_NE(line, lines.end()) << beginning;
        EXPECT_EQ(line->substr(0, beginning.size()), beginning);
        EXPECT_NE(line->find(text), std::string::npos) << *line;
        ++line;
    }
}

}  // namespace
