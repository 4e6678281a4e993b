// Tables made of parallel lists: headers above the columns, and the layout of a page around them. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <vector>

// Of the headers above the columns, while the letters are not too large for it.
inline constexpr int kHeaderHeight = 25;

// Parallel lists in one scrolled window, with headers above them in another. It lives as long as the program; the
// widgets are those of its page, and of its next one when that was destroyed and made again.
class Table {
public:
    // One column: a list and the header above it.
    struct Column {
        Widget list;
        Widget header;
    };

    // Takes the columns, from left to right, and the scrolled window around the lists. From now on the columns fill
    // that window whatever its size, the mouse wheel scrolls it, and the keys of a table (motifutil/table_keys.h) work
    // in it. The first column has the keyboard for all of them, which the frame of the window shows. `scrolled` is
    // called for every way in which its horizontal scroll bar moves, and is to call scrollHeaders().
    void adopt(std::vector<Column> columns, Widget scrolledWindow, XtCallbackProc scrolled);

    // Makes each column as wide as its header and its rows ask for, and the last one wide enough to fill what the
    // window shows, then places lists and headers side by side. Call it when rows changed.
    void fit() const;

    // Places lists and headers side by side by the lists' present widths.
    void place() const;

    // Moves the headers with the lists, from a callback of the horizontal scroll bar with this `callData`.
    void scrollHeaders(XtPointer callData) const;

    // The width, in pixels, with which the window around the lists shows so many columns, from the left, and a vertical
    // scroll bar; of a long text no more than a person reads at a glance.
    int wantedWidth(std::size_t columns) const;
    int wantedWidth() const { return wantedWidth(columns_.size()); }

    // Selects the row that is selected in `clicked` in all lists, without notification, moves the keyboard to it when
    // it was clicked in another column than the first, and brings it into sight. The lists are as long as they have
    // rows, so they can't scroll to it themselves when the keyboard moves the selection.
    void followRow(Widget clicked) const;

    // The table in this window; null for any other.
    static const Table* in(Widget scrolledWindow);

private:
    std::vector<int> widthsFor(int view) const;
    static void rowsScrolled(Widget scrollBar, XtPointer table, XtPointer callData);
    static void focusChanged(Widget list, XtPointer table, XEvent* event, Boolean* continueToDispatch);

    std::vector<Column> columns_;
    Widget window_ = nullptr;
    // Colours of the window's frame without the keyboard.
    Pixel topShadow_ = 0;
    Pixel bottomShadow_ = 0;
};

// Places lists and headers side by side by the lists' present widths.
void placeColumns(const std::vector<Table::Column>& columns);

// A scrolled window for headers: it clips them and never shows scroll bars of its own.
Widget createHeaderWindow(Widget parent, const char* name);

// The size that a list has as long as it has no rows, in pixels: a table of such lists is neither fitted nor stretched.
void setEmptySize(Widget list, Dimension width, Dimension height);

// The parts of a page that shows a table, from top to bottom. `heading` may be null, and there may be no `buttons`;
// they stand in a column on the right.
struct TablePage {
    Widget heading;
    Widget headers;
    Widget lists;
    Widget explanation;
    std::vector<Widget> buttons;
};

// Attaches the parts so that the table takes all room that the window gains.
void placeTable(const TablePage& page);
