#include "motifutil/table_keys.h"

#include <X11/keysym.h>
#include <Xm/List.h>
#include <Xm/ScrolledW.h>

#include <algorithm>
#include <string>

#include "motifutil/characters.h"
#include "motifutil/key_stroke.h"
#include "motifutil/scrolling.h"
#include "motifutil/widgets.h"

namespace {

// Letters that follow one another faster belong together, in milliseconds.
constexpr Time kTypingTime = 1000;

// What is being typed, and where.
struct Typing {
    Widget list = nullptr;
    Time last = 0;
    std::wstring text;
};
Typing Typed;

int rowsOf(Widget list) {
    int count = 0;
    XtVaGetValues(list, XmNitemCount, &count, nullptr);
    return count;
}

// The row that has the keyboard, from 1; 0 when none is selected.
int currentRow(Widget list) {
    int count = 0;
    int* positions = nullptr;
    XtVaGetValues(list, XmNselectedPositionCount, &count, XmNselectedPositions, &positions, nullptr);
    return count > 0 ? positions[0] : 0;
}

// Whether a list in a window shows only some of its rows. Its own keys would not lead it to the others.
bool isTooTall(Widget list) {
    int visible = 0;
    XtVaGetValues(list, XmNvisibleItemCount, &visible, nullptr);
    return scrolledWindowAround(list) != nullptr && visible < rowsOf(list);
}

// How many rows are seen at once.
int rowsInSight(Widget list) {
    int visible = 0;
    Dimension height = 0;
    XtVaGetValues(list, XmNvisibleItemCount, &visible, XmNheight, &height, nullptr);
    Widget window = scrolledWindowAround(list);
    return window == nullptr || height == 0 ? visible : std::min(visible, viewHeight(window) * rowsOf(list) / height);
}

void select(Widget list, int row) {
    XmListSetKbdItemPos(list, row);
    XmListSelectPos(list, row, True);
    int top = 0;
    int visible = 0;
    XtVaGetValues(list, XmNtopItemPosition, &top, XmNvisibleItemCount, &visible, nullptr);
    if (row < top) {
        XmListSetPos(list, row);
    } else if (row >= top + visible) {
        XmListSetBottomPos(list, row);
    }
}

// The row that a key leads to; 0 for a key that leads to none.
int rowFor(const KeyStroke& stroke, Widget list) {
    const bool isPlain = stroke.modifiers == 0;
    const bool isWithControl = stroke.modifiers == ControlMask;
    if (stroke.symbol == XK_Home && (isPlain || isWithControl)) {
        return 1;
    }
    if (stroke.symbol == XK_End && (isPlain || isWithControl)) {
        return rowsOf(list);
    }
    if (stroke.symbol == XK_Up && isPlain && isTooTall(list)) {
        return std::max(currentRow(list) - 1, 1);
    }
    if (stroke.symbol == XK_Down && isPlain && isTooTall(list)) {
        return std::min(currentRow(list) + 1, rowsOf(list));
    }
    // A row stays in sight for orientation.
    const int page = std::max(rowsInSight(list) - 1, 1);
    if (stroke.symbol == XK_Prior && isPlain) {
        return std::max(currentRow(list) - page, 1);
    }
    if (stroke.symbol == XK_Next && isPlain) {
        return std::min(currentRow(list) + page, rowsOf(list));
    }
    return 0;
}

// What the row is found by.
std::wstring nameOf(Widget list, int row) {
    XmStringTable items = nullptr;
    XtVaGetValues(list, XmNitems, &items, nullptr);
    const std::string text = plainText(items[row - 1]);
    return lowerCase(text.starts_with('/') ? text.substr(text.rfind('/') + 1) : text);
}

// The first row at or after `start`, or else from the beginning, whose name begins so; 0 when there is none.
int rowThatBegins(const std::wstring& prefix, Widget list, int start) {
    const int count = rowsOf(list);
    for (int i = 0; i < count; ++i) {
        const int row = (start - 1 + i) % count + 1;
        if (nameOf(list, row).starts_with(prefix)) {
            return row;
        }
    }
    return 0;
}

bool typeAhead(Widget list, wchar_t character, Time time) {
    const bool goesOn = Typed.list == list && time - Typed.last < kTypingTime && !Typed.text.empty();
    if (!goesOn) {
        if (character == L' ') {
            return false;
        }
        Typed = {list, time, {}};
    }
    Typed.last = time;
    const int current = currentRow(list);
    const std::wstring longer = Typed.text + character;
    int row = goesOn ? rowThatBegins(longer, list, std::max(current, 1)) : 0;
    if (row != 0 || !goesOn) {
        Typed.text = longer;
    }
    if (row == 0 && Typed.text == std::wstring(1, character)) {
        // The same letter again and again leads from row to row.
        row = rowThatBegins(Typed.text, list, current + 1);
    }
    if (row != 0) {
        select(list, row);
    }
    return true;
}

bool keyPressed(Widget list, XEvent* event) {
    const KeyStroke stroke = keyStrokeOf(event);
    if (rowsOf(list) == 0) {
        return false;
    }
    if (const int row = rowFor(stroke, list); row != 0) {
        select(list, row);
        return true;
    }
    if (stroke.character != 0 && (stroke.modifiers & ~static_cast<unsigned int>(ShiftMask)) == 0) {
        return typeAhead(list, stroke.character, event->xkey.time);
    }
    const bool isSideways = (stroke.symbol == XK_Left || stroke.symbol == XK_Right) && stroke.modifiers == 0;
    Widget window = scrolledWindowAround(list);
    if (window != nullptr && isSideways) {
        scrollSideways(window, stroke.symbol == XK_Left ? -1 : 1);
        return true;
    }
    return false;
}

}  // namespace

void addTableKeys(Widget list) {
    onKeyStroke(list, keyPressed);
    if (Widget window = scrolledWindowAround(list)) {
        Widget clipWindow = nullptr;
        XtVaGetValues(window, XmNclipWindow, &clipWindow, nullptr);
        // It would grab the page keys, Home and End.
        XtUninstallTranslations(clipWindow);
    }
}

Widget scrolledWindowAround(Widget list) {
    Widget window = XtParent(list);
    while (!XtIsShell(window) && !XmIsScrolledWindow(window)) {
        window = XtParent(window);
    }
    unsigned char policy = XmAPPLICATION_DEFINED;
    if (XmIsScrolledWindow(window)) {
        XtVaGetValues(window, XmNscrollingPolicy, &policy, nullptr);
    }
    return policy == XmAUTOMATIC ? window : nullptr;
}
