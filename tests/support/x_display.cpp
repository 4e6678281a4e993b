#include "tests/support/x_display.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace {

// Clicks farther apart make no double click; the server tells all programs, so that tests need not wait long.
constexpr auto kDoubleClickTime = std::chrono::milliseconds(100);
constexpr std::string_view kResources = "*multiClickTime: 90\n";

// With this variable the tests run on a screen of 192 dots per inch.
const bool IsDense = std::getenv("VH_TEST_DENSE_SCREEN") != nullptr;

Display* Ignored = nullptr;

int reportError(Display* display, XErrorEvent* error) {
    if (display != Ignored) {
        std::array<char, 200> text{};
        XGetErrorText(display, error->error_code, text.data(), text.size());
        ADD_FAILURE() << "X error: " << text.data() << ", request " << int{error->request_code};
    }
    return 0;
}

bool windowManagerRuns() {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return false;
    }
    XTextProperty info{};
    const bool found = XGetTextProperty(display, DefaultRootWindow(display), &info,
                                        XInternAtom(display, "_MOTIF_WM_INFO", False)) != 0;
    XFree(info.value);
    XCloseDisplay(display);
    return found;
}

}  // namespace

XServer::XServer()
    : server_({"Xvfb", "-displayfd", "1", "-screen", "0", IsDense ? "2048x1536x24" : "1024x768x24", "-dpi",
               IsDense ? "192" : "96", "-nolisten", "tcp", "-noreset"},
              folder_.path("number"), SIGTERM) {
    if (!waitUntil([this] { return folder_.read("number").ends_with("\n"); })) {
        throw std::runtime_error("Xvfb did not start");
    }
    const std::string number = folder_.read("number");
    environment_.set("DISPLAY", ":" + number.substr(0, number.size() - 1));
    manager_ = std::make_unique<Program>(std::vector<std::string>{"mwm"});
    if (!waitUntil(windowManagerRuns)) {
        throw std::runtime_error("mwm did not start");
    }
}

XPerson::XPerson() : display_(XOpenDisplay(nullptr)) {
    if (display_ == nullptr) {
        throw std::runtime_error("no display");
    }
    Ignored = display_;
    XChangeProperty(display_, DefaultRootWindow(display_), XA_RESOURCE_MANAGER, XA_STRING, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(kResources.data()), static_cast<int>(kResources.size()));
    XSync(display_, False);
    XSetErrorHandler(reportError);
}

XPerson::~XPerson() {
    XCloseDisplay(display_);
}

void XPerson::key(KeySym symbol, KeySym modifier) {
    KeyCode code = XKeysymToKeycode(display_, symbol);
    if (code == 0) {
        // The highest code is on no keyboard.
        int lowest = 0;
        int highest = 0;
        XDisplayKeycodes(display_, &lowest, &highest);
        XChangeKeyboardMapping(display_, highest, 1, &symbol, 1);
        XSync(display_, False);
        code = static_cast<KeyCode>(highest);
    }
    const KeyCode shift =
        XkbKeycodeToKeysym(display_, code, 0, 0) != symbol ? XKeysymToKeycode(display_, XK_Shift_L) : KeyCode{0};
    const KeyCode held = modifier != NoSymbol ? XKeysymToKeycode(display_, modifier) : shift;
    for (const auto& [pressed, down] : {std::pair{held, True}, {code, True}, {code, False}, {held, False}}) {
        if (pressed != 0) {
            XTestFakeKeyEvent(display_, pressed, down, CurrentTime);
        }
    }
    XSync(display_, False);
}

void XPerson::type(std::string_view text) {
    for (const char character : text) {
        key(static_cast<unsigned char>(character));  // the key symbols of Latin 1 are its codes
    }
}

void XPerson::enter(Inputs inputs) {
    for (const Input& input : inputs) {
        for (int i = 0; i < input.times; ++i) {
            key(input.key);
        }
        type(input.text);
    }
}

void XPerson::click(int x, int y, int times) {
    std::this_thread::sleep_until(lastClick_ + kDoubleClickTime);
    XTestFakeMotionEvent(display_, -1, x, y, CurrentTime);
    for (int i = 0; i < times; ++i) {
        XTestFakeButtonEvent(display_, Button1, True, CurrentTime);
        XTestFakeButtonEvent(display_, Button1, False, CurrentTime);
    }
    XSync(display_, False);
    lastClick_ = std::chrono::steady_clock::now();
}

std::vector<Window> XPerson::children(Window window) {
    Window root = None;
    Window parent = None;
    Window* list = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display_, window, &root, &parent, &list, &count) == 0 || list == nullptr) {
        return {};
    }
    std::vector<Window> result(list, list + count);
    XFree(list);
    return result;
}

std::vector<Window> XPerson::windows(const std::string& title, bool dialogs) {
    std::vector<Window> found;
    std::vector<Window> all{DefaultRootWindow(display_)};
    for (std::size_t i = 0; i < all.size(); ++i) {
        const Window window = all[i];
        const std::vector<Window> inside = children(window);
        all.insert(all.end(), inside.begin(), inside.end());
        char* name = nullptr;
        if (XFetchName(display_, window, &name) != 0 && name != nullptr) {
            Window owner = None;
            const bool isDialog = XGetTransientForHint(display_, window, &owner) != 0;
            if (name == title && isDialog == dialogs && isVisible(window)) {
                found.push_back(window);
            }
            XFree(name);
        }
    }
    return found;
}

bool XPerson::isVisible(Window window) {
    XWindowAttributes attributes{};
    return XGetWindowAttributes(display_, window, &attributes) != 0 && attributes.map_state == IsViewable;
}

bool XPerson::hasFocus(Window window) {
    Window focus = None;
    int revert = 0;
    XGetInputFocus(display_, &focus, &revert);
    return focus == window;
}

unsigned long XPerson::pixel(Window window, int x, int y) {
    XImage* image = XGetImage(display_, window, x, y, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr) {
        return 0;
    }
    const unsigned long value = XGetPixel(image, 0, 0) & 0xffffff;
    XDestroyImage(image);
    return value;
}
