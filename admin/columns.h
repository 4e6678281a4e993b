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

// The size that a list has as long as it has no rows, in pixels: fitColumns() then neither fits nor stretches it.
void setEmptySize(Widget list, Dimension width, Dimension height);

// Makes each column as wide as its header and its rows ask for, and the last one wide enough to fill what the scrolled
// window around the lists shows, then places lists and headers side by side. Call it when rows changed or when the
// window was resized.
void fitColumns(const std::vector<Column>& columns, Widget scrolledWindow);

// Places lists and headers side by side by the lists' present widths.
void placeColumns(const std::vector<Column>& columns);

// Moves the headers left by `scrolled` pixels, so that they stand above the columns of lists scrolled by as much.
void scrollHeaders(const std::vector<Column>& columns, int scrolled);

// Scrolls the window around a list as far as it takes to show the row at `position`, from 1. The lists are as long as
// they have rows, so they can't do it themselves when the selection is moved by the keyboard.
void revealRow(Widget list, int position, Widget scrolledWindow);

// Selects the row that is selected in `clicked` in all lists, without notification, and brings it into sight.
void followRow(Widget clicked, const std::vector<Column>& columns, Widget scrolledWindow);

// Calls `scrolled` for every way in which the horizontal scroll bar of the window around the lists moves, and `fit`
// whenever that window got another size; lets the mouse wheel scroll it.
void watchColumns(const std::vector<Column>& columns, Widget scrolledWindow, XtCallbackProc scrolled, void (*fit)());

// The parts of a page that shows a table, from top to bottom. `heading` may be null, and there may be no `buttons`;
// they stand in a column on the right.
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
