#include "help/browser_remote.h"

#include <X11/Xmu/WinUtil.h>

#include <cstring>
#include <memory>
#include <string>

#include "help/window_property.h"
#include "kvlib/out_of_memory.h"

namespace {

// An answer of the browser, or a lock: 255 bytes count.
using PropertyText = char[256];

struct XDeleter {
    void operator()(Window* windows) const { XFree(windows); }
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

}  // namespace

int WWHelp_Platform_CheckBrowserRunning(WWHelp_BrowserInfo* info) {
    if (info->remoteCapable == 0) {
        return -1;
    }
    const BrowserDisplay connection;
    Display* display = connection.get();
    return display != nullptr && private_WWHelp_Platform_FindMozillaWindow(display, Atoms(display).version) != None
               ? 0
               : -1;
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
        const Window window = private_WWHelp_Platform_FindMozillaWindow(display, atoms.version);
        if (window == None || private_WWHelp_Platform_LockMozillaWindow(display, window, atoms.version, atoms.lock,
                                                                        info->processSignature) != 0) {
            return -1;
        }
        const int sent = private_WWHelp_Platform_SendMozillaRemoteCommand(display, window, atoms.command,
                                                                          atoms.response, command.c_str());
        private_WWHelp_Platform_UnlockMozillaWindow(display, window, atoms.lock, info->processSignature);
        return sent;
    });
}

Window private_WWHelp_Platform_FindMozillaWindow(Display* display, Atom versionAtom) {
    const Window root = DefaultRootWindow(display);
    Window foundRoot = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned int count = 0;
    const Status status = XQueryTree(display, root, &foundRoot, &parent, &children, &count);
    const std::unique_ptr<Window, XDeleter> owned(children);
    if (status == 0 || foundRoot != root || parent != None || children == nullptr) {
        return None;
    }
    for (unsigned int i = 0; i < count; ++i) {
        const Window client = XmuClientWindow(display, children[i]);
        if (private_WWHelp_Platform_WindowPropertyExists(display, client, versionAtom) == 0) {
            return client;
        }
    }
    return None;
}

int private_WWHelp_Platform_LockMozillaWindow(Display* display, Window window, Atom versionAtom, Atom lockAtom,
                                              const char* signature) {
    // Watched from before the first try, so that no release between a try and the wait after it is missed.
    watch(display, window);
    while (true) {
        // A window that went before it was watched sends no event when it goes, and has no lock either.
        if (private_WWHelp_Platform_WindowPropertyExists(display, window, versionAtom) != 0) {
            return -1;
        }
        XGrabServer(display);
        const int created = private_WWHelp_Platform_WindowPropertyCreate(display, window, lockAtom, signature);
        XUngrabServer(display);
        XSync(display, False);
        if (created == 0) {
            return 0;
        }
        if (private_WWHelp_Platform_WaitForPropertyDelete(display, window, lockAtom) != 0) {
            return -1;
        }
    }
}

int private_WWHelp_Platform_WaitForPropertyDelete(Display* display, Window window, Atom lockAtom) {
    watch(display, window);
    XEvent event;
    do {
        XNextEvent(display, &event);
        if (isDestroyed(event, window)) {
            return -1;
        }
    } while (!isProperty(event, window, lockAtom, PropertyDelete));
    return 0;
}

int private_WWHelp_Platform_SendMozillaRemoteCommand(Display* display, Window window, Atom commandAtom,
                                                     Atom responseAtom, const char* command) {
    watch(display, window);
    XEvent event;
    // Answers from before our lock were for other controllers.
    while (XCheckTypedWindowEvent(display, window, PropertyNotify, &event) != 0) {
    }
    writeWindowProperty(display, window, commandAtom, command);
    while (true) {
        XNextEvent(display, &event);
        if (isDestroyed(event, window)) {
            return -1;
        }
        if (!isProperty(event, window, responseAtom, PropertyNewValue)) {
            continue;
        }
        PropertyText response;
        if (private_WWHelp_Platform_WindowPropertyGet(display, window, responseAtom, response, sizeof response) != 0) {
            return -1;
        }
        if (*response != '1') {
            return std::strncmp(response, "200", 3) == 0 ? 0 : -1;
        }
    }
}

void private_WWHelp_Platform_UnlockMozillaWindow(Display* display, Window window, Atom lockAtom,
                                                 const char* signature) {
    PropertyText holder;
    if (private_WWHelp_Platform_WindowPropertyGet(display, window, lockAtom, holder, sizeof holder) == 0 &&
        std::strcmp(holder, signature) == 0) {
        private_WWHelp_Platform_WindowPropertyDestroy(display, window, lockAtom);
    }
    XSync(display, False);
}
