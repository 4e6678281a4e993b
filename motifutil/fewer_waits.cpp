#include "motifutil/fewer_waits.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "motifutil/true_color.h"

namespace {

// The keyboard as it is while the toolkit begins.
struct Keyboard {
    Display* connection = nullptr;
    int first = 0;
    int last = 0;
    int symbolsOfAKey = 0;
    KeySym* symbols = nullptr;
};
Keyboard Known;

template <typename Function>
Function* xlib(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These take the places of those in Xlib for all libraries of this program, and do the same. A window has dozens of
// colours, and Motif asks for the parts of one whenever it draws a label in a font of Xft.

extern "C" __attribute__((visibility("default"))) int XQueryColor(Display* connection, Colormap colormap,
                                                                  XColor* colour) {
    static const auto ask = xlib<decltype(XQueryColor)>("XQueryColor");
    return setColour(connection, colormap, *colour) ? 1 : ask(connection, colormap, colour);
}

extern "C" __attribute__((visibility("default"))) Status XAllocColor(Display* connection, Colormap colormap,
                                                                     XColor* colour) {
    static const auto ask = xlib<decltype(XAllocColor)>("XAllocColor");
    return setPixel(connection, colormap, *colour) && setColour(connection, colormap, *colour)
               ? 1
               : ask(connection, colormap, colour);
}

extern "C" __attribute__((visibility("default"))) Status XAllocNamedColor(Display* connection, Colormap colormap,
                                                                          const char* name, XColor* screenColour,
                                                                          XColor* exactColour) {
    static const auto ask = xlib<decltype(XAllocNamedColor)>("XAllocNamedColor");
    // Only of such a name Xlib itself knows the colour.
    if (*name != '#' || XParseColor(connection, colormap, name, exactColour) == 0) {
        return ask(connection, colormap, name, screenColour, exactColour);
    }
    *screenColour = *exactColour;
    return XAllocColor(connection, colormap, screenColour);
}

extern "C" __attribute__((visibility("default"))) int XFreeColors(Display* connection, Colormap colormap,
                                                                  unsigned long* pixels, int count,
                                                                  unsigned long planes) {
    static const auto ask = xlib<decltype(XFreeColors)>("XFreeColors");
    // The server knows of none that was worked out here.
    return isTrueColor(connection, colormap) ? 1 : ask(connection, colormap, pixels, count, planes);
}

extern "C" __attribute__((visibility("default"))) KeySym* XGetKeyboardMapping(Display* connection, KeyCode first,
                                                                              int count, int* symbolsOfAKey) {
    static const auto ask = xlib<decltype(XGetKeyboardMapping)>("XGetKeyboardMapping");
    if (connection != Known.connection || first < Known.first || first + count - 1 > Known.last) {
        return ask(connection, first, count, symbolsOfAKey);
    }
    *symbolsOfAKey = Known.symbolsOfAKey;
    const std::size_t size = static_cast<std::size_t>(count) * static_cast<std::size_t>(Known.symbolsOfAKey);
    // XFree() frees it.
    auto* symbols = static_cast<KeySym*>(std::malloc(size * sizeof(KeySym)));
    if (symbols != nullptr) {
        std::copy_n(Known.symbols + (first - Known.first) * Known.symbolsOfAKey, size, symbols);
    }
    return symbols;
}

void internAtoms(Display* connection) {
    std::array<const char*, 11> names{"WM_PROTOCOLS",     "WM_DELETE_WINDOW", "WM_SAVE_YOURSELF",
                                      "WM_LOCALE_NAME",   "WM_CLIENT_LEADER", "_MOTIF_DEFAULT_BINDINGS",
                                      "EditresClientVal", "UTF8_STRING",      "UTF-8",
                                      "_NET_WM_NAME",     "_NET_WM_ICON"};
    std::array<Atom, names.size()> atoms{};
    XInternAtoms(connection, const_cast<char**>(names.data()), static_cast<int>(names.size()), False, atoms.data());
}

KeyboardAtOnce::KeyboardAtOnce(Display* connection) {
    Keyboard all;
    XDisplayKeycodes(connection, &all.first, &all.last);
    all.symbols =
        XGetKeyboardMapping(connection, static_cast<KeyCode>(all.first), all.last - all.first + 1, &all.symbolsOfAKey);
    all.connection = all.symbols == nullptr ? nullptr : connection;
    Known = all;
}

KeyboardAtOnce::~KeyboardAtOnce() {
    XFree(Known.symbols);
    Known = {};
}
