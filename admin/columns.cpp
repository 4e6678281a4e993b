#include "admin/columns.h"

#include <Xm/Form.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include <algorithm>
#include <numeric>

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

// The width in pixels that the work area of a scrolled window can have without a horizontal scroll bar. Motif's clip window
// is of no use here: its width lags behind while scroll bars come and go. A scroll bar that is not needed stays managed and
// is moved out of sight.
int viewWidth(Widget scrolledWindow) {
    Dimension shadow = 0;
    Widget scrollBar = nullptr;
    XtVaGetValues(scrolledWindow, XmNshadowThickness, &shadow, XmNverticalScrollBar, &scrollBar, nullptr);
    const int inner = widthOf(scrolledWindow) - 2 * (shadow + 1);
    Position x = 0;
    XtVaGetValues(scrollBar, XmNx, &x, nullptr);
    return x < widthOf(scrolledWindow) ? inner - widthOf(scrollBar) : inner;
}

// The width that a list asks for; an empty list would answer with the width it has.
Dimension widestRow(Widget list) {
    int count = 0;
    XtVaGetValues(list, XmNitemCount, &count, nullptr);
    return count > 0 ? preferredWidth(list) : Dimension{0};
}

// Places the lists side by side and gives the forms around lists and headers the size of what is in them. Left alone, a form
// in a scrolled window grows with its children but does not shrink with them.
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
    scrollHeaders(columns, 0);
}

struct ScrollState {
    Widget scrollBar = nullptr;
    int value = 0;
    int slider = 0;
    int increment = 0;
    int page = 0;
    int maximum = 0;
};

ScrollState scrollState(Widget scrolledWindow) {
    ScrollState state;
    XtVaGetValues(scrolledWindow, XmNverticalScrollBar, &state.scrollBar, nullptr);
    XmScrollBarGetValues(state.scrollBar, &state.value, &state.slider, &state.increment, &state.page);
    XtVaGetValues(state.scrollBar, XmNmaximum, &state.maximum, nullptr);
    return state;
}

void scrollTo(const ScrollState& state, int wanted) {
    const int value = std::clamp(wanted, 0, state.maximum - state.slider);
    if (value != state.value) {
        XmScrollBarSetValues(state.scrollBar, value, state.slider, state.increment, state.page, True);
    }
}

void wheelTurned(Widget /*list*/, XtPointer scrolledWindow, XEvent* event, Boolean* /*continueToDispatch*/) {
    constexpr int kPixelsPerNotch = 60;
    const ScrollState state = scrollState(static_cast<Widget>(scrolledWindow));
    if (event->xbutton.button == Button4) {
        scrollTo(state, state.value - kPixelsPerNotch);
    } else if (event->xbutton.button == Button5) {
        scrollTo(state, state.value + kPixelsPerNotch);
    }
}

}  // namespace

Widget createHeaderWindow(Widget parent, const char* name) {
    return XtVaCreateManagedWidget(name, xmScrolledWindowWidgetClass, parent, XmNscrollingPolicy, XmAPPLICATION_DEFINED,
                                   XmNvisualPolicy, XmVARIABLE, nullptr);
}

void fitColumns(const std::vector<Column>& columns, Widget scrolledWindow) {
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
    const int top = (position - 1) * height / rows;
    const int bottom = position * height / rows;
    const ScrollState state = scrollState(scrolledWindow);
    scrollTo(state, std::clamp(state.value, bottom - state.slider, std::max(top, bottom - state.slider)));
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
        XtAddEventHandler(column.list, ButtonPressMask, False, wheelTurned, scrolledWindow);
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
