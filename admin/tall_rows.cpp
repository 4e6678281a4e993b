#include "admin/tall_rows.h"

#include <X11/IntrinsicP.h>
#include <Xm/List.h>
#include <Xm/ScrollBar.h>

#include <algorithm>
#include <cmath>

#include "motifutil/compound_string.h"
#include "motifutil/scrolling.h"
#include "motifutil/widgets.h"

namespace {

constexpr int kHighest = 30000;
constexpr int kRowsOfANotch = 3;

int rowsOf(Widget list) {
    int rows = 0;
    XtVaGetValues(list, XmNitemCount, &rows, nullptr);
    return rows;
}

// What a list has above and below its rows.
int frameOf(Widget list) {
    return 2 *
           (sizeOf(list, XmNlistMarginHeight) + sizeOf(list, XmNshadowThickness) + sizeOf(list, XmNhighlightThickness));
}

// From one row to the next, in the highest of the list's fonts.
int rowHeight(Widget list) {
    XmRenderTable fonts = nullptr;
    XtVaGetValues(list, XmNrenderTable, &fonts, nullptr);
    int height = 1;
    XmStringTag* tags = nullptr;
    const int count = XmRenderTableGetTags(fonts, &tags);
    for (int i = 0; i < count; ++i) {
        static char letter[] = "X";
        const XmStringPtr text(XmStringCreate(letter, tags[i]));
        height = std::max<int>(height, XmStringHeight(fonts, text.get()));
        XtFree(tags[i]);
    }
    XtFree(reinterpret_cast<char*>(tags));
    return height + sizeOf(list, XmNlistSpacing) + 2 * sizeOf(list, XmNhighlightThickness);
}

// Rows that are scrolled over, and the pixels by which the window is scrolled for them.
struct Range {
    Widget scrollBar = nullptr;
    int value = 0;
    int pixels = 1;
    int rows = 1;

    int topRow() const { return 1 + static_cast<int>(std::lround(1.0 * value * rows / pixels)); }
    int valueFor(int top) const { return static_cast<int>(std::lround(1.0 * (top - 1) * pixels / rows)); }
};

Range rangeOf(const TableRows& table, int visible) {
    Range range;
    int slider = 0;
    int maximum = 0;
    XtVaGetValues(table.window, XmNverticalScrollBar, &range.scrollBar, nullptr);
    XtVaGetValues(range.scrollBar, XmNvalue, &range.value, XmNsliderSize, &slider, XmNmaximum, &maximum, nullptr);
    range.pixels = std::max(maximum - slider, 1);
    range.rows = std::max(rowsOf(table.lists.front()) - visible, 1);
    return range;
}

}  // namespace

int mostRows(Widget list) {
    return std::max((kHighest - frameOf(list)) / rowHeight(list), 1);
}

bool TableRows::areTooMany() const {
    return std::any_of(lists.begin(), lists.end(), [](Widget list) { return rowsOf(list) > mostRows(list); });
}

int TableRows::visible() const {
    int rows = mostRows(lists.front());
    for (Widget list : lists) {
        rows = std::min(rows, (viewHeight(window) - frameOf(list)) / rowHeight(list));
    }
    return std::max(rows, 1);
}

int TableRows::arrange() const {
    const int rows = visible();
    for (Widget list : lists) {
        XtVaSetValues(list, XmNvisibleItemCount, rows, nullptr);
    }
    return kHighest;
}

int TableRows::top() const {
    int position = 1;
    XtVaGetValues(lists.front(), XmNtopItemPosition, &position, nullptr);
    return position;
}

void TableRows::showAgain(int top) const {
    const int rows = visible();
    const int row = std::clamp(top, 1, std::max(rowsOf(lists.front()) - rows + 1, 1));
    scrollDownTo(window, rangeOf(*this, rows).valueFor(row));
    show();
    showFrom(row);
}

void TableRows::show() const {
    const int rows = visible();
    const Range range = rangeOf(*this, rows);
    showFrom(range.topRow());
    // Motif's steps would be in pixels, of which a row has few here.
    const int row = std::max(range.valueFor(2), 1);
    XtVaSetValues(range.scrollBar, XmNincrement, row, XmNpageIncrement, row * std::max(rows - 1, 1), nullptr);
    setWheelStep(window, row * kRowsOfANotch);
}

void TableRows::showFrom(int top) const {
    int value = 0;
    Widget scrollBar = nullptr;
    XtVaGetValues(window, XmNverticalScrollBar, &scrollBar, nullptr);
    XtVaGetValues(scrollBar, XmNvalue, &value, nullptr);
    for (Widget list : lists) {
        Position x = 0;
        XtVaGetValues(list, XmNx, &x, nullptr);
        // First of all: a list that is out of sight when its resources change loses the keyboard.
        XtMoveWidget(list, x, static_cast<Position>(value));
        Attach(list).topForm(value);
        XmListSetPos(list, top);
    }
}

void TableRows::reveal(int position) const {
    const int rows = visible();
    const Range range = rangeOf(*this, rows);
    const int lowest = position - rows + 1;
    const int top = std::clamp(range.topRow(), std::max(lowest, 1), std::max(position, 1));
    scrollDownTo(window, range.valueFor(top));
    // A list scrolls by itself when a key leads out of it; and where a row has less than a pixel the scroll bar does
    // not tell which one it is.
    showFrom(top);
}
