#include "admin/columns.h"

#include <Xm/Form.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <numeric>

#include "admin/dialogs.h"
#include "admin/lists.h"
#include "motifutil/scrolling.h"
#include "motifutil/widgets.h"

namespace {

constexpr int kMargin = 12;
constexpr int kGap = 8;
// The room that a column keeps free on the right of its widest text.
constexpr int kColumnRoom = 8;

int widthOf(Widget widget) {
    Dimension width = 0;
    XtVaGetValues(widget, XmNwidth, &width, nullptr);
    return width;
}

void resized(Widget /*widget*/, XtPointer fit, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that is first mapped may have had its size before it existed.
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        guarded(reinterpret_cast<void (*)()>(fit));
    }
}

// The width that a list asks for; an empty list would answer with the width it has.
Dimension widestRow(Widget list) {
    int count = 0;
    XtVaGetValues(list, XmNitemCount, &count, nullptr);
    return count > 0 ? preferredWidth(list) : Dimension{0};
}

// Large letters need all of the height that a header has; its text stays in line with the rows.
void useWholeHeight(Widget header) {
    Dimension highlight = 0;
    Dimension shadow = 0;
    XtVaGetValues(header, XmNhighlightThickness, &highlight, XmNshadowThickness, &shadow, nullptr);
    XtVaSetValues(header, XmNhighlightThickness, 0, XmNshadowThickness, 0, XmNmarginHeight, 0, XmNmarginLeft,
                  highlight + shadow, nullptr);
}

// How far the window around a list is scrolled to the right.
int scrolledSideways(Widget list) {
    Widget window = XtParent(list);
    while (!XmIsScrolledWindow(window)) {
        window = XtParent(window);
    }
    Widget scrollBar = nullptr;
    XtVaGetValues(window, XmNhorizontalScrollBar, &scrollBar, nullptr);
    int value = 0;
    XtVaGetValues(scrollBar, XmNvalue, &value, nullptr);
    return value;
}

// Places the lists side by side and gives the forms around lists and headers the size of what is in them. Left alone, a
// form in a scrolled window grows with its children but does not shrink with them.
void layOut(const std::vector<Column>& columns, const std::vector<int>& widths) {
    int start = 0;
    Dimension height = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Attach(columns[i].list).topForm().span(start, widths[i]);
        start += widths[i];
        height = std::max(height, preferredHeight(columns[i].list));
    }
    const auto total = static_cast<Dimension>(std::max(start, 1));
    XtVaSetValues(XtParent(columns.front().list), XmNresizePolicy, XmRESIZE_NONE, XmNwidth, total, XmNheight, height,
                  nullptr);
    XtVaSetValues(XtParent(columns.front().header), XmNresizePolicy, XmRESIZE_NONE, XmNwidth, total, nullptr);
    scrollHeaders(columns, scrolledSideways(columns.front().list));
}

// The size of a list without rows goes with the list, as its user data.
struct Size {
    Dimension width;
    Dimension height;
};

XtPointer packed(Size size) {
    return reinterpret_cast<XtPointer>(std::uintptr_t{std::bit_cast<std::uint32_t>(size)});
}

Size emptySize(Widget list) {
    XtPointer data = nullptr;
    XtVaGetValues(list, XmNuserData, &data, nullptr);
    return std::bit_cast<Size>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(data)));
}

bool hasEmptySize(const Column& column) {
    int count = 0;
    XtVaGetValues(column.list, XmNitemCount, &count, nullptr);
    return count == 0 && emptySize(column.list).width != 0;
}

void layOutEmpty(const std::vector<Column>& columns) {
    std::vector<int> widths;
    for (const Column& column : columns) {
        widths.push_back(emptySize(column.list).width);
    }
    layOut(columns, widths);
    for (const Column& column : columns) {
        XtVaSetValues(column.list, XmNheight, emptySize(column.list).height, nullptr);
    }
}

}  // namespace

Widget createHeaderWindow(Widget parent, const char* name) {
    return XtVaCreateManagedWidget(name, xmScrolledWindowWidgetClass, parent, XmNscrollingPolicy, XmAPPLICATION_DEFINED,
                                   XmNvisualPolicy, XmVARIABLE, nullptr);
}

void setEmptySize(Widget list, Dimension width, Dimension height) {
    XtVaSetValues(list, XmNwidth, width, XmNheight, height, XmNuserData, packed({width, height}), nullptr);
}

void fitColumns(const std::vector<Column>& columns, Widget scrolledWindow) {
    if (std::all_of(columns.begin(), columns.end(), hasEmptySize)) {
        layOutEmpty(columns);
        return;
    }
    std::vector<int> widths;
    for (const Column& column : columns) {
        widths.push_back(std::max(widestRow(column.list), preferredWidth(column.header)) + kColumnRoom);
    }
    const int total = std::accumulate(widths.begin(), widths.end(), 0);
    const int lastWidth = widths.back();
    const int view = viewWidth(scrolledWindow);
    widths.back() = lastWidth + std::max(view - total, 0);
    layOut(columns, widths);
    // The rows may have brought up the vertical scroll bar, or let it go.
    const int viewAfter = viewWidth(scrolledWindow);
    if (viewAfter != view) {
        widths.back() = lastWidth + std::max(viewAfter - total, 0);
        layOut(columns, widths);
    }
}

void placeColumns(const std::vector<Column>& columns) {
    std::vector<int> widths;
    for (const Column& column : columns) {
        widths.push_back(widthOf(column.list));
    }
    layOut(columns, widths);
}

void scrollHeaders(const std::vector<Column>& columns, int scrolled) {
    int start = -scrolled;
    for (const Column& column : columns) {
        const int width = widthOf(column.list);
        Attach(column.header).strip(kHeaderHeight).span(start, width);
        XtVaSetValues(column.header, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
        start += width;
    }
}

void revealRow(Widget list, int position, Widget scrolledWindow) {
    int rows = 0;
    XtVaGetValues(list, XmNitemCount, &rows, nullptr);
    if (rows == 0) {
        return;
    }
    Dimension height = 0;
    XtVaGetValues(list, XmNheight, &height, nullptr);
    revealRange(scrolledWindow, (position - 1) * height / rows, position * height / rows);
}

void followRow(Widget clicked, const std::vector<Column>& columns, Widget scrolledWindow) {
    std::vector<Widget> lists;
    for (const Column& column : columns) {
        lists.push_back(column.list);
    }
    selectSameRow(clicked, lists);
    if (const std::optional<int> row = selectedRow(clicked)) {
        revealRow(clicked, *row, scrolledWindow);
    }
}

void watchColumns(const std::vector<Column>& columns, Widget scrolledWindow, XtCallbackProc scrolled, void (*fit)()) {
    Widget scrollBar = nullptr;
    XtVaGetValues(scrolledWindow, XmNhorizontalScrollBar, &scrollBar, nullptr);
    for (const char* reason :
         {XmNvalueChangedCallback, XmNincrementCallback, XmNdecrementCallback, XmNpageIncrementCallback,
          XmNpageDecrementCallback, XmNtoTopCallback, XmNtoBottomCallback, XmNdragCallback}) {
        XtAddCallback(scrollBar, reason, scrolled, nullptr);
    }
    XtAddEventHandler(scrolledWindow, StructureNotifyMask, False, resized, reinterpret_cast<XtPointer>(fit));
    for (const Column& column : columns) {
        scrollWithWheel(scrolledWindow, column.list);
        useWholeHeight(column.header);
    }
}

void placeTable(const TablePage& page) {
    Attach(page.explanation).leftForm(kMargin).rightForm(kMargin).bottomForm(kMargin);
    Attach(page.headers).leftForm(kMargin);
    if (page.heading != nullptr) {
        Attach(page.heading).topForm(kMargin).leftForm(kMargin);
        Attach(page.headers).below(page.heading, kGap);
    } else {
        Attach(page.headers).topForm(kGap);
    }
    Attach(page.lists).below(page.headers, 0).leftForm(kMargin).above(page.explanation, kGap);
    if (page.buttons.empty()) {
        Attach(page.headers).rightForm(kMargin);
        Attach(page.lists).rightForm(kMargin);
        return;
    }
    Widget above = page.heading;
    for (Widget button : page.buttons) {
        Attach(button).below(above, kGap).rightForm(kMargin);
        above = button;
    }
    Attach(page.headers).leftOf(page.buttons.front(), kMargin);
    Attach(page.lists).leftOf(page.buttons.front(), kMargin);
}
