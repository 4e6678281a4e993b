// The remote control of a browser, with a client of this test's own as the browser.
#include "tests/support/x_display.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include <thread>

#include "help/browser_platform.h"
#include "help/browser_remote.h"
#include "help/web_help.h"
#include "tests/support/recording_browser.h"

namespace {

constexpr const char* kStranger = "pid1@elsewhere";

// A browser's window on a connection of its own, and what the browser does.
class FakeBrowser {
public:
    FakeBrowser() {
        window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 50, 50, 0, 0, 0);
        set("_MOZILLA_VERSION", "1.7");
        XSelectInput(display_, window_, PropertyChangeMask);
        XMapWindow(display_, window_);
        XSync(display_, False);
    }
    ~FakeBrowser() { XCloseDisplay(display_); }
    FakeBrowser(const FakeBrowser&) = delete;
    FakeBrowser& operator=(const FakeBrowser&) = delete;

    void set(const char* name, const std::string& text) {
        XChangeProperty(display_, window_, atom(name), XA_STRING, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
        XFlush(display_);
    }
    void remove(const char* name) { XDeleteProperty(display_, window_, atom(name)); }
    void close() {
        XDestroyWindow(display_, window_);
        XSync(display_, False);
    }
    // Waits for a command, remembers it with the lock that is held meanwhile, and answers.
    void answer(const std::vector<std::string>& responses) {
        XEvent event;
        do {
            XNextEvent(display_, &event);
        } while (event.xproperty.atom != atom("_MOZILLA_COMMAND"));
        command = get("_MOZILLA_COMMAND");
        lock = get("_MOZILLA_LOCK");
        for (const std::string& response : responses) {
            set("_MOZILLA_RESPONSE", response);
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        }
    }
    std::string get(const char* name) {
        XTextProperty text{};
        XGetTextProperty(display_, window_, &text, atom(name));
        std::string result = text.value == nullptr ? "(none)" : reinterpret_cast<char*>(text.value);
        XFree(text.value);
        return result;
    }
    std::string command, lock;

private:
    Atom atom(const char* name) { return XInternAtom(display_, name, False); }
    Display* display_ = XOpenDisplay(nullptr);
    Window window_ = None;
};

TEST(BrowserRemote, ARunningBrowserIsAskedAndOtherwiseOneIsStarted) {
    struct Case {
        const char* about;
        bool isLocked;
        std::function<void(FakeBrowser&)> browser;
        bool shows;
        std::string lockAfter = "(none)";  // "" where no window is left
    };
    const auto nap = [] { std::this_thread::sleep_for(std::chrono::milliseconds(150)); };
    const Case kCases[] = {
        {"nearly success", false, [](auto& b) { b.answer({"20"}); }, false},
        {"closed while asked", false, [](auto& b) { b.answer({}), b.close(); }, false, ""},
        // The answer that the other one gets is none for us.
        {"somebody else's turn", true,
         [&](auto& b) {
             nap(), b.set("_MOZILLA_RESPONSE", "500"), b.remove("_MOZILLA_LOCK"), b.answer({"100 wait", "1", "200"});
         },
         true},
        {"closed while waiting", true, [&](auto& b) { nap(), b.close(); }, false, ""},
        {"lock taken over", false,
         [](auto& b) { b.answer({}), b.set("_MOZILLA_LOCK", kStranger), b.set("_MOZILLA_RESPONSE", "200"); }, true,
         kStranger},
    };
    const XServer server;
    const TemporaryFolder folder;
    writeScript(folder, "mozilla", recordAddress(folder.path("started")));
    const ScopedEnvironment path{{"PATH", folder.path() + ":/bin:/usr/bin"}};
    std::string started;
    for (const Case& row : kCases) {
        SCOPED_TRACE(row.about);
        alarm(20);
        FakeBrowser browser;
        WWHelp_BrowserInfo info{};
        ASSERT_EQ(WWHelp_Platform_SetDefaultBrowserInfo(&info), 0);
        ASSERT_TRUE(waitUntil([&info] { return WWHelp_Platform_CheckBrowserRunning(&info) == 0; }));
        if (row.isLocked) {
            browser.set("_MOZILLA_LOCK", kStranger);
        }
        std::jthread actions(row.browser, std::ref(browser));
        ASSERT_EQ(WWHelp_Startup("File:///h"), 0);
        EXPECT_EQ(WWHelp_DisplayHelp("C", row.about), 0);
        WWHelp_Shutdown();
        actions.join();
        const std::string address =
            "File:///h/wwhelp/wwhimpl/api.htm?context=C&topic=" + std::string(row.about) + "&single=true";
        const bool isCommanded = row.shows || !row.isLocked;
        EXPECT_EQ(browser.command, isCommanded ? "openURL(" + address + ")" : "");
        EXPECT_EQ(browser.lock, isCommanded ? info.processSignature : "");
        if (!row.lockAfter.empty()) {
            EXPECT_EQ(browser.get("_MOZILLA_LOCK"), row.lockAfter);
        }
        started += row.shows ? "" : address + "\n";
        EXPECT_TRUE(waitUntil([&] { return folder.read("started") == started; })) << folder.read("started");
    }
    alarm(0);
}

}  // namespace
