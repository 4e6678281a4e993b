#include "motifutil/window_keys.h"

#include <X11/keysym.h>
#include <Xm/DialogS.h>
#include <Xm/Notebook.h>
#include <Xm/RowColumn.h>
#include <Xm/ScrollBar.h>
#include <Xm/ToggleB.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "motifutil/characters.h"
#include "motifutil/dialog_focus.h"
#include "motifutil/key_stroke.h"
#include "motifutil/mnemonics.h"
#include "motifutil/shells.h"
#include "motifutil/widgets.h"

namespace {

using Widgets = std::vector<Widget>;

// A strip of tabs: those of a notebook, or toggles in a radio box.
bool isStrip(Widget widget) {
    Boolean isRadio = False;
    if (XmIsRowColumn(widget)) {
        XtVaGetValues(widget, XmNradioBehavior, &isRadio, nullptr);
    }
    return isRadio != 0 || XmIsNotebook(widget);
}

Widgets tabsOf(Widget strip) {
    Widgets tabs = managedChildren(strip);
    if (XmIsNotebook(strip)) {
        std::erase_if(tabs, [](Widget child) {
            unsigned char type = XmPAGE;
            XtVaGetValues(child, XmNnotebookChildType, &type, nullptr);
            return type != XmMAJOR_TAB;
        });
    }
    return tabs;
}

bool isInFront(Widget tab) {
    if (XmIsToggleButton(tab)) {
        return XmToggleButtonGetState(tab) != 0;
    }
    int page = 0;
    int front = 0;
    XtVaGetValues(tab, XmNpageNumber, &page, nullptr);
    XtVaGetValues(XtParent(tab), XmNcurrentPageNumber, &front, nullptr);
    return page == front;
}

bool isTab(Widget widget) {
    if (!isStrip(XtParent(widget))) {
        return false;
    }
    const Widgets tabs = tabsOf(XtParent(widget));
    return std::find(tabs.begin(), tabs.end(), widget) != tabs.end();
}

bool takesKeyboard(Widget widget) {
    return (XmIsPrimitive(widget) || XmIsGadget(widget)) && !XmIsScrollBar(widget) && XmIsTraversable(widget) != 0 &&
           (!isTab(widget) || isInFront(widget));
}

// The widgets in a child of a manager that take the keyboard, and where the child is.
struct Part {
    Widgets stops;
    int left, right, top, bottom;

    bool isAbove(const Part& other) const { return bottom <= other.top; }
    bool isBefore(const Part& other) const {
        return isAbove(other) ||
               (!other.isAbove(*this) && (left < other.left || (left == other.left && top < other.top)));
    }
};

// What Tab stops at, in the order in which the eye reads it: what is wholly above comes first, then what is further to
// the left.
Widgets stopsIn(Widget widget) {
    if (!XtIsComposite(widget)) {
        return takesKeyboard(widget) ? Widgets{widget} : Widgets{};
    }
    std::vector<Part> parts;
    for (Widget child : managedChildren(widget)) {
        Position x = 0;
        Position y = 0;
        Dimension width = 0;
        Dimension height = 0;
        XtVaGetValues(child, XmNx, &x, XmNy, &y, XmNwidth, &width, XmNheight, &height, nullptr);
        Part part{stopsIn(child), x, x + width, y, y + height};
        if (!part.stops.empty()) {
            parts.push_back(std::move(part));
        }
    }
    Widgets stops;
    while (!parts.empty()) {
        const auto first = std::find_if(parts.begin(), parts.end(), [&parts](const Part& part) {
            return std::none_of(parts.begin(), parts.end(),
                                [&part](const Part& other) { return other.isBefore(part); });
        });
        const auto next = first == parts.end() ? parts.begin() : first;
        stops.insert(stops.end(), next->stops.begin(), next->stops.end());
        parts.erase(next);
    }
    return stops;
}

// Moves the keyboard from the widget that has it to the next one, or the one before it.
void move(Widget shell, bool isBackward) {
    Widgets stops = stopsIn(shell);
    if (isBackward) {
        std::reverse(stops.begin(), stops.end());
    }
    const auto current = std::find(stops.begin(), stops.end(), XmGetFocusWidget(shell));
    if (current != stops.end()) {
        std::rotate(stops.begin(), current + 1, stops.end());
    }
    for (Widget stop : stops) {
        if (XmProcessTraversal(stop, XmTRAVERSE_CURRENT) != 0) {
            return;
        }
    }
}

// Brings the page of the next tab of the window's strip to the front, or of the one before it; false without a strip.
bool turnPage(Widget shell, bool isBackward) {
    const Widgets all = managedBelow(shell);
    const auto strip = std::find_if(all.begin(), all.end(), isStrip);
    if (strip == all.end()) {
        return false;
    }
    Widgets tabs = tabsOf(*strip);
    if (isBackward) {
        std::reverse(tabs.begin(), tabs.end());
    }
    const auto front = std::find_if(tabs.begin(), tabs.end(), isInFront);
    if (front == tabs.end()) {
        return false;
    }
    const bool isOnStrip = XmGetFocusWidget(shell) == *front;
    Widget next = front + 1 == tabs.end() ? tabs.front() : *(front + 1);
    pressButton(next);
    if (isOnStrip) {
        XmProcessTraversal(next, XmTRAVERSE_CURRENT);
    }
    return true;
}

// Acts on what has this letter and can be reached, if anything.
void pressMnemonic(Widget shell, wchar_t letter) {
    for (Widget widget : managedBelow(shell)) {
        Widget target = mnemonicTarget(widget);
        if (target == nullptr || mnemonicOf(widget) != letter || XmIsTraversable(target) == 0) {
            continue;
        }
        if (target != widget || XmIsToggleButton(target)) {
            XmProcessTraversal(target, XmTRAVERSE_CURRENT);
        }
        if (target == widget) {
            pressButton(target);
        }
        return;
    }
}

bool keyPressed(Widget widget, XEvent* event) {
    const KeyStroke stroke = keyStrokeOf(event);
    Widget shell = shellOf(widget);
    if (stroke.symbol == XK_Tab && (stroke.modifiers & Mod1Mask) == 0) {
        move(shell, (stroke.modifiers & ShiftMask) != 0);
        return true;
    }
    if ((stroke.symbol == XK_Prior || stroke.symbol == XK_Next) && stroke.modifiers == ControlMask) {
        return turnPage(shell, stroke.symbol == XK_Prior);
    }
    if ((stroke.symbol == XK_Left || stroke.symbol == XK_Right) && stroke.modifiers == 0 && isTab(widget)) {
        return turnPage(shell, stroke.symbol == XK_Left);
    }
    const bool isWithAlt = (stroke.modifiers & ~static_cast<unsigned int>(ShiftMask)) == Mod1Mask;
    if (isWithAlt && stroke.character != 0) {
        // A letter that nothing has is not meant to be typed into a field either.
        pressMnemonic(shell, stroke.character);
        return true;
    }
    return false;
}

void cameUp(Widget shell, XtPointer /*clientData*/, XtPointer /*callData*/) {
    serveNewcomers(shell);
}

// Gives what takes a letter and has none a letter of its label that is free.
void chooseMnemonics(Widget window) {
    Widgets without;
    std::wstring taken;
    std::set<std::pair<Widget, wchar_t>> inForms;
    for (Widget widget : managedBelow(window)) {
        if (mnemonicTarget(widget) != nullptr) {
            const wchar_t letter = mnemonicOf(widget);
            // Of rows with the same button the first keeps its letter; screens in forms of their own are never seen
            // together.
            const bool isAlone = letter != 0 && inForms.emplace(XtParent(widget), letter).second;
            if (isAlone) {
                taken.push_back(letter);
            } else {
                without.push_back(widget);
            }
        }
    }
    for (Widget widget : without) {
        std::wstring letters = labelOf(widget);
        if (const auto place = bracketedLetter(letters)) {
            letters = letters[*place] + std::wstring(L"ABCDEFGHIJKLMNOPQRSTUVWXYZ");
        }
        const auto free = std::find_if(letters.begin(), letters.end(), [&taken](wchar_t letter) {
            return canBeMnemonic(letter) && taken.find(lowerCase(letter)) == std::wstring::npos;
        });
        if (free != letters.end()) {
            taken.push_back(lowerCase(*free));
        }
        setMnemonic(widget, free == letters.end() ? std::string() : bytesOf({*free}));
    }
}

}  // namespace

void serveNewcomers(Widget shell) {
    for (Widget widget : managedBelow(shell)) {
        Boolean takesKeys = False;
        XtVaGetValues(widget, XmNtraversalOn, &takesKeys, nullptr);
        if (XtIsWidget(widget) && takesKeys != 0) {
            onKeyStroke(widget, keyPressed);
        }
    }
    chooseMnemonics(shell);
}

void serveKeys(Widget shell) {
    if (XtIsSubclass(shell, xmDialogShellWidgetClass) != 0) {
        XtAddCallback(shell, XmNpopupCallback, cameUp, nullptr);
        holdKeyboard(shell);
    } else {
        serveNewcomers(shell);
    }
}

void focusFirst(Widget part) {
    const Widgets stops = stopsIn(part);
    if (!stops.empty()) {
        XmProcessTraversal(stops.front(), XmTRAVERSE_CURRENT);
    }
}
