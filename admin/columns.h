// Tables made of parallel lists: headers above the columns, and the layout of a page around them. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <vector>

// One column: a list and the header above it.
struct Column {
    Widget list;
    Widget header;
};

inline constexpr int kHeaderHeight = 25;

// A scrolled window for headers: it clips them and never shows scroll bars of its own.
Widget createHeaderWindow(Widget parent, const char* name);

// Makes each list at least as wide as its header asks for, and the last one wide enough to fill `viewWidth` pixels, then
// places lists and headers side by side. Call it when rows changed or when the view was resized.
void fitColumns(const std::vector<Column>& columns, int viewWidth);

// Places lists and headers side by side by the lists' present widths.
void placeColumns(const std::vector<Column>& columns);

// Moves the headers left by `scrolled` pixels, so that they stand above the columns of lists scrolled by as much.
void scrollHeaders(const std::vector<Column>& columns, int scrolled);

// Calls `scrolled` for every way in which the horizontal scroll bar of a scrolled window moves.
void onHorizontalScroll(Widget scrolledWindow, XtCallbackProc scrolled);

// Calls `fit` whenever a scrolled window got another size.
void onResize(Widget scrolledWindow, void (*fit)());

// The width in pixels of what a scrolled window shows of its work area.
int viewWidth(Widget scrolledWindow);

// The parts of a page that shows a table, from top to bottom. `heading` may be null, and there may be no `buttons`; they
// stand in a column on the right.
struct TablePage {
    Widget form;
    Widget heading;
    Widget headers;
    Widget lists;
    Widget explanation;
    std::vector<Widget> buttons;
};

// Attaches the parts so that the table takes all room that the window gains.
void placeTable(const TablePage& page);
