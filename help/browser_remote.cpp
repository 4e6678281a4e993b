#include "help/browser_remote.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xmu/WinUtil.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kvlib/out_of_memory.h"

namespace {

constexpr long kLongestProperty = 8192;
constexpr std::size_t kLongestAnswer = 255;

struct XDeleter {
    void operator()(unsigned char* data) const { XFree(data); }
};

// A connection of its own to the display of the environment. While it lives, X errors are passed over: the browser's
// window can go away between any two requests, and Xlib's own handler would end the process. A failed request then
// shows as a missing property.
class BrowserDisplay {
public:
    BrowserDisplay() : display_(XOpenDisplay("")), handlerBefore_(XSetErrorHandler(passOver)) {}
    ~BrowserDisplay() {
        if (display_ != nullptr) {
            XCloseDisplay(display_);
        }
        XSetErrorHandler(handlerBefore_);
    }
    BrowserDisplay(const BrowserDisplay&) = delete;
    BrowserDisplay& operator=(const BrowserDisplay&) = delete;
    Display* get() const { return display_; }

private:
    static int passOver(Display* /*display*/, XErrorEvent* /*error*/) { return 0; }
    Display* display_;
    XErrorHandler handlerBefore_;
};

struct Atoms {
    explicit Atoms(Display* display)
        : version(XInternAtom(display, "_MOZILLA_VERSION", False)),
          lock(XInternAtom(display, "_MOZILLA_LOCK", False)),
          command(XInternAtom(display, "_MOZILLA_COMMAND", False)),
          response(XInternAtom(display, "_MOZILLA_RESPONSE", False)) {}
    Atom version;
    Atom lock;
    Atom command;
    Atom response;
};

// The value of a text property, or nothing when the window has none; with `destroy` the property is deleted.
std::optional<std::string> readProperty(Display* display, Window window, Atom atom, bool destroy = false) {
    Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(display, window, atom, 0, kLongestProperty, destroy ? True : False, XA_STRING,
                                          &type, &format, &items, &rest, &data);
    const std::unique_ptr<unsigned char, XDeleter> owned(data);
    if (status != Success || type == None) {
        return std::nullopt;
    }
    return format == 8 && data != nullptr ? std::string(reinterpret_cast<const char*>(data), items) : std::string();
}

void writeProperty(Display* display, Window window, Atom atom, const std::string& text) {
    XChangeProperty(display, window, atom, XA_STRING, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

Window findBrowserWindow(Display* display, Atom versionAtom) {
    const Window root = DefaultRootWindow(display);
    Window foundRoot = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned int count = 0;
    const Status status = XQueryTree(display, root, &foundRoot, &parent, &children, &count);
    const std::unique_ptr<unsigned char, XDeleter> owned(reinterpret_cast<unsigned char*>(children));
    if (status == 0 || foundRoot != root || parent != None || children == nullptr) {
        return None;
    }
    for (unsigned int i = 0; i < count; ++i) {
        const Window client = XmuClientWindow(display, children[i]);
        if (readProperty(display, client, versionAtom)) {
            return client;
        }
    }
    return None;
}

void watch(Display* display, Window window) {
    XSelectInput(display, window, PropertyChangeMask | StructureNotifyMask);
}

bool isDestroyed(const XEvent& event, Window window) {
    return event.type == DestroyNotify && event.xdestroywindow.window == window;
}

bool isProperty(const XEvent& event, Window window, Atom atom, int state) {
    return event.type == PropertyNotify && event.xproperty.window == window && event.xproperty.atom == atom &&
           event.xproperty.state == state;
}

// Waits until another controller has let the lock go; false when the window was destroyed meanwhile.
bool waitForUnlock(Display* display, Window window, Atom lock) {
    watch(display, window);
    XEvent event;
    do {
        XNextEvent(display, &event);
        if (isDestroyed(event, window)) {
            return false;
        }
    } while (!isProperty(event, window, lock, PropertyDelete));
    return true;
}

bool lockWindow(Display* display, Window window, Atom version, Atom lock, const char* signature) {
    // Watched from before the first try, so that no release between a try and the wait after it is missed.
    watch(display, window);
    while (true) {
        // A window that went before it was watched sends no event when it goes, and has no lock either.
        if (!readProperty(display, window, version)) {
            return false;
        }
        XGrabServer(display);
        const bool free = !readProperty(display, window, lock);
        if (free) {
            writeProperty(display, window, lock, signature);
        }
        XUngrabServer(display);
        XSync(display, False);
        if (free) {
            return true;
        }
        if (!waitForUnlock(display, window, lock)) {
            return false;
        }
    }
}

void unlockWindow(Display* display, Window window, Atom lock, std::string_view signature) {
    if (readProperty(display, window, lock).value_or("").substr(0, kLongestAnswer) == signature) {
        readProperty(display, window, lock, /*destroy=*/true);
    }
    XSync(display, False);
}

// Writes the command and waits for the browser's verdict: "1.." says that it is at work, "200" that it is done,
// anything else that it is not willing.
bool sendCommand(Display* display, Window window, const Atoms& atoms, const std::string& command) {
    XEvent event;
    // Answers from before our lock were for other controllers.
    while (XCheckTypedWindowEvent(display, window, PropertyNotify, &event) != 0) {
    }
    writeProperty(display, window, atoms.command, command);
    while (true) {
        XNextEvent(display, &event);
        if (isDestroyed(event, window)) {
            return false;
        }
        if (!isProperty(event, window, atoms.response, PropertyNewValue)) {
            continue;
        }
        const std::optional<std::string> response = readProperty(display, window, atoms.response);
        if (!response || !response->starts_with('1')) {
            return response && response->starts_with("200");
        }
    }
}

}  // namespace

int WWHelp_Platform_CheckBrowserRunning(WWHelp_BrowserInfo* info) {
    if (info->remoteCapable == 0) {
        return -1;
    }
    const BrowserDisplay connection;
    Display* display = connection.get();
    return display != nullptr && findBrowserWindow(display, Atoms(display).version) != None ? 0 : -1;
}

int WWHelp_Platform_SendURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length) {
    return orFailure(-1, [&] {
        if (info->remoteCapable == 0) {
            return -1;
        }
        const BrowserDisplay connection;
        Display* display = connection.get();
        if (display == nullptr) {
            return -1;
        }
        const std::string command = "openURL(" + std::string(url, length) + ")";
        const Atoms atoms(display);
        const Window window = findBrowserWindow(display, atoms.version);
        if (window == None || !lockWindow(display, window, atoms.version, atoms.lock, info->processSignature)) {
            return -1;
        }
        const bool sent = sendCommand(display, window, atoms, command);
        unlockWindow(display, window, atoms.lock, info->processSignature);
        return sent ? 0 : -1;
    });
}
