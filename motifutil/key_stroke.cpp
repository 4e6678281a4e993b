#include "motifutil/key_stroke.h"

#include <X11/XKBlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <algorithm>
#include <array>
#include <cwctype>
#include <iterator>
#include <string>

#include "motifutil/characters.h"

namespace {

void keyPressed(Widget widget, XtPointer pressed, XEvent* event, Boolean* continueToDispatch) {
    if (event->type == KeyPress && reinterpret_cast<KeyHandler>(pressed)(widget, event)) {
        *continueToDispatch = False;
    }
}

// Another name of a key, and the one that it has here.
struct Synonym {
    KeySym name;
    KeySym key;
};
constexpr std::array<Synonym, 10> kSynonyms{{{XK_KP_Home, XK_Home},
                                             {XK_KP_End, XK_End},
                                             {XK_KP_Prior, XK_Prior},
                                             {XK_KP_Next, XK_Next},
                                             {XK_KP_Up, XK_Up},
                                             {XK_KP_Down, XK_Down},
                                             {XK_KP_Left, XK_Left},
                                             {XK_KP_Right, XK_Right},
                                             {XK_KP_Tab, XK_Tab},
                                             {XK_ISO_Left_Tab, XK_Tab}}};

}  // namespace

KeyStroke keyStrokeOf(XEvent* event) {
    XKeyEvent& key = event->xkey;
    KeyStroke stroke;
    XLookupString(&key, nullptr, 0, &stroke.symbol, nullptr);
    stroke.modifiers = key.state & (ShiftMask | ControlMask | Mod1Mask);
    std::array<char, 16> typed{};
    int extra = 0;
    KeySym symbol = stroke.symbol;
    XkbTranslateKeySym(key.display, &symbol, 0, typed.data(), typed.size() - 1, &extra);
    const std::wstring text = lowerCase(typed.data());
    if (text.size() == 1 && std::iswprint(static_cast<std::wint_t>(text.front())) != 0) {
        stroke.character = text.front();
    }
    const auto* synonym = std::find_if(kSynonyms.begin(), kSynonyms.end(),
                                       [&stroke](const Synonym& other) { return other.name == stroke.symbol; });
    if (synonym != kSynonyms.end()) {
        stroke.symbol = synonym->key;
    }
    return stroke;
}

void onKeyStroke(Widget widget, KeyHandler pressed) {
    XtInsertEventHandler(widget, KeyPressMask, False, keyPressed, reinterpret_cast<XtPointer>(pressed), XtListHead);
}
