#include "admin/columns.h"

#include <Xm/Form.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include <algorithm>

#include "motifutil/widgets.h"

namespace {

constexpr int kMargin = 12;
constexpr int kGap = 8;
// The room that a column keeps free on the right of its widest text.
constexpr int kColumnRoom = 20;

int widthOf(Widget widget) {
    Dimension width = 0;
    XtVaGetValues(widget, XmNwidth, &width, nullptr);
    return width;
}

void resized(Widget /*widget*/, XtPointer fit, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that is first mapped may have had its size before it existed.
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        reinterpret_cast<void (*)()>(fit)();
    }
}

}  // namespace

Widget createHeaderWindow(Widget parent, const char* name) {
    return XtVaCreateManagedWidget(name, xmScrolledWindowWidgetClass, parent, XmNscrollingPolicy, XmAPPLICATION_DEFINED,
                                   XmNvisualPolicy, XmVARIABLE, nullptr);
}

void fitColumns(const std::vector<Column>& columns, int viewWidth) {
    std::vector<int> widths;
    int total = 0;
    for (const Column& column : columns) {
        // What Motif asks for a list is the width of its widest item.
        widths.push_back(std::max(preferredWidth(column.list), preferredWidth(column.header)) + kColumnRoom);
        total += widths.back();
    }
    const int unused = std::max(viewWidth - total, 0);
    widths.back() += unused;
    total += unused;

    for (Widget form : {XtParent(columns.front().list), XtParent(columns.front().header)}) {
        XtVaSetValues(form, XmNwidth, static_cast<Dimension>(total), nullptr);
    }
    int start = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Attach(columns[i].list).topForm().span(start, widths[i]);
        start += widths[i];
    }
    scrollHeaders(columns, 0);
}

void placeColumns(const std::vector<Column>& columns) {
    int start = 0;
    for (const Column& column : columns) {
        const int width = widthOf(column.list);
        Attach(column.list).topForm().span(start, width);
        start += width;
    }
    scrollHeaders(columns, 0);
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

void onHorizontalScroll(Widget scrolledWindow, XtCallbackProc scrolled) {
    Widget scrollBar = nullptr;
    XtVaGetValues(scrolledWindow, XmNhorizontalScrollBar, &scrollBar, nullptr);
    for (const char* reason :
         {XmNvalueChangedCallback, XmNincrementCallback, XmNdecrementCallback, XmNpageIncrementCallback,
          XmNpageDecrementCallback, XmNtoTopCallback, XmNtoBottomCallback, XmNdragCallback}) {
        XtAddCallback(scrollBar, reason, scrolled, nullptr);
    }
}

void onResize(Widget scrolledWindow, void (*fit)()) {
    XtAddEventHandler(scrolledWindow, StructureNotifyMask, False, resized, reinterpret_cast<XtPointer>(fit));
}

int viewWidth(Widget scrolledWindow) {
    Widget clip = nullptr;
    XtVaGetValues(scrolledWindow, XmNclipWindow, &clip, nullptr);
    return widthOf(clip);
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
    Widget above = page.headers;
    for (Widget button : page.buttons) {
        Attach(button).rightForm(kMargin);
        if (above == page.headers) {
            Attach(button).levelWith(page.headers);
        } else {
            Attach(button).below(above, kGap);
        }
        above = button;
    }
    Attach(page.headers).leftOf(page.buttons.front(), kMargin);
    Attach(page.lists).leftOf(page.buttons.front(), kMargin);
}
