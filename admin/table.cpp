#include "admin/table.h"

#include <Xm/Form.h>
#include <Xm/List.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <numeric>
#include <utility>

#include "admin/dialogs.h"
#include "admin/lists.h"
#include "admin/tall_rows.h"
#include "motifutil/font_size.h"
#include "motifutil/scrolling.h"
#include "motifutil/spacing.h"
#include "motifutil/table_keys.h"
#include "motifutil/widgets.h"

namespace {

using Column = Table::Column;

// The room that a column keeps free on the right of its widest text.
constexpr int kColumnRoom = 8;
// What a window makes room for of a single text at first, in pixels at 96 dpi.
constexpr int kLongestText = 300;

int widthOf(Widget widget) {
    Dimension width = 0;
    XtVaGetValues(widget, XmNwidth, &width, nullptr);
    return width;
}

void resized(Widget /*widget*/, XtPointer table, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that is first mapped may have had its size before it existed.
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        guarded([table] { static_cast<const Table*>(table)->fit(); });
    }
}

// The width that a list asks for; an empty list would answer with the width it has.
Dimension widestRow(Widget list) {
    int count = 0;
    XtVaGetValues(list, XmNitemCount, &count, nullptr);
    return count > 0 ? preferredWidth(list) : Dimension{0};
}

int wantedWidthOf(const Column& column) {
    return std::max(widestRow(column.list), preferredWidth(column.header));
}

// The room above and below the text of a header is that of its strip; the text stays in line with the rows.
void useWholeHeight(Widget header) {
    Dimension highlight = 0;
    Dimension shadow = 0;
    XtVaGetValues(header, XmNhighlightThickness, &highlight, XmNshadowThickness, &shadow, nullptr);
    XtVaSetValues(header, XmNhighlightThickness, 0, XmNshadowThickness, 0, XmNmarginHeight, 0, XmNmarginLeft,
                  highlight + shadow, nullptr);
}

// How far the window around a list is scrolled to the right.
int scrolledSideways(Widget list) {
    Widget scrollBar = nullptr;
    XtVaGetValues(scrolledWindowAround(list), XmNhorizontalScrollBar, &scrollBar, nullptr);
    int value = 0;
    XtVaGetValues(scrollBar, XmNvalue, &value, nullptr);
    return value;
}

int rootX(Widget widget) {
    Position x = 0;
    Position y = 0;
    XtTranslateCoords(widget, 0, 0, &x, &y);
    return x;
}

std::vector<int> listWidths(const std::vector<Column>& columns) {
    std::vector<int> widths;
    for (const Column& column : columns) {
        widths.push_back(widthOf(column.list));
    }
    return widths;
}

TableRows rowsOf(const std::vector<Column>& columns) {
    TableRows rows{scrolledWindowAround(columns.front().list), {}};
    for (const Column& column : columns) {
        rows.lists.push_back(column.list);
    }
    return rows;
}

// Places the headers above columns of these widths when the lists are scrolled right by `scrolled` pixels.
void placeHeaders(const std::vector<Column>& columns, const std::vector<int>& widths, int scrolled) {
    // The windows around headers and lists have frames of their own.
    Widget clipWindow = nullptr;
    XtVaGetValues(scrolledWindowAround(columns.front().list), XmNclipWindow, &clipWindow, nullptr);
    int start = rootX(clipWindow) - rootX(XtParent(columns.front().header)) - scrolled;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Attach(columns[i].header).strip(roomForLine(columns[i].header, kHeaderHeight)).span(start, widths[i]);
        XtVaSetValues(columns[i].header, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
        start += widths[i];
    }
}

// Places the lists side by side and gives the forms around lists and headers the size of what is in them. Left alone, a
// form in a scrolled window grows with its children but does not shrink with them.
void layOut(const std::vector<Column>& columns, const std::vector<int>& widths) {
    const TableRows rows = rowsOf(columns);
    const bool areTooMany = rows.areTooMany();
    int start = 0;
    const int top = rows.top();
    int height = areTooMany ? rows.arrange() : 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Widget list = columns[i].list;
        Attach(list).span(start, widths[i]);
        start += widths[i];
        if (!areTooMany) {
            Attach(list).topForm();
            height = std::max<int>(height, preferredHeight(list));
        }
    }
    const auto total = static_cast<Dimension>(std::max(start, 1));
    XtVaSetValues(XtParent(columns.front().list), XmNresizePolicy, XmRESIZE_NONE, XmNwidth, total, XmNheight, height,
                  nullptr);
    XtVaSetValues(XtParent(columns.front().header), XmNresizePolicy, XmRESIZE_NONE, XmNwidth, total, nullptr);
    if (areTooMany) {
        rows.showAgain(top);
    } else {
        setWheelStep(rows.window, 0);
    }
    placeHeaders(columns, widths, scrolledSideways(columns.front().list));
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

// Scrolls the window around the lists as far as it takes to show the row at `position`, from 1.
void revealRow(const TableRows& table, int position) {
    if (table.areTooMany()) {
        table.reveal(position);
        return;
    }
    int rows = 0;
    Dimension height = 0;
    XtVaGetValues(table.lists.front(), XmNitemCount, &rows, XmNheight, &height, nullptr);
    revealRange(table.window, (position - 1) * height / rows, position * height / rows);
}

}  // namespace

void Table::adopt(std::vector<Column> columns, Widget scrolledWindow, XtCallbackProc scrolled) {
    columns_ = std::move(columns);
    window_ = scrolledWindow;
    Widget scrollBar = nullptr;
    XtVaGetValues(window_, XmNhorizontalScrollBar, &scrollBar, nullptr);
    Widget other = nullptr;
    XtVaGetValues(window_, XmNverticalScrollBar, &other, nullptr);
    for (const char* reason :
         {XmNvalueChangedCallback, XmNincrementCallback, XmNdecrementCallback, XmNpageIncrementCallback,
          XmNpageDecrementCallback, XmNtoTopCallback, XmNtoBottomCallback, XmNdragCallback}) {
        XtAddCallback(scrollBar, reason, scrolled, nullptr);
        XtAddCallback(other, reason, rowsScrolled, this);
    }
    for (Widget bar : {scrollBar, other}) {
        XtVaSetValues(bar, XmNtraversalOn, False, nullptr);
    }
    XtVaSetValues(window_, XmNuserData, this, nullptr);
    XtAddEventHandler(window_, StructureNotifyMask, False, resized, this);
    for (const Column& column : columns_) {
        scrollWithWheel(window_, column.list);
        useWholeHeight(column.header);
        // The table is one stop for Tab, its first column.
        XtVaSetValues(column.list, XmNtraversalOn, column.list == columns_.front().list, nullptr);
    }
    addTableKeys(columns_.front().list);
    XtVaGetValues(window_, XmNtopShadowColor, &topShadow_, XmNbottomShadowColor, &bottomShadow_, nullptr);
    XtAddEventHandler(columns_.front().list, FocusChangeMask, False, focusChanged, this);
}

void Table::focusChanged(Widget list, XtPointer table, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that gets the keyboard tells the list under the pointer too, which has not got it.
    if (event->xfocus.detail == NotifyPointer) {
        return;
    }
    const auto* self = static_cast<const Table*>(table);
    Pixel highlight = 0;
    XtVaGetValues(list, XmNhighlightColor, &highlight, nullptr);
    const bool hasKeyboard = event->type == FocusIn;
    XtVaSetValues(self->window_, XmNtopShadowColor, hasKeyboard ? highlight : self->topShadow_, XmNbottomShadowColor,
                  hasKeyboard ? highlight : self->bottomShadow_, nullptr);
}

void Table::rowsScrolled(Widget /*scrollBar*/, XtPointer table, XtPointer /*callData*/) {
    guarded([table] {
        const TableRows rows = rowsOf(static_cast<const Table*>(table)->columns_);
        if (rows.areTooMany()) {
            rows.show();
        }
    });
}

void Table::fit() const {
    if (std::all_of(columns_.begin(), columns_.end(), hasEmptySize)) {
        layOutEmpty(columns_);
        return;
    }
    const int view = viewWidth(window_);
    layOut(columns_, widthsFor(view));
    // The rows may have brought up the vertical scroll bar, or let it go.
    if (const int viewAfter = viewWidth(window_); viewAfter != view) {
        layOut(columns_, widthsFor(viewAfter));
    }
}

// The columns' widths in a window that shows so much of them. Texts that fit without room between them need no scroll
// bar.
std::vector<int> Table::widthsFor(int view) const {
    std::vector<int> widths;
    for (const Column& column : columns_) {
        widths.push_back(wantedWidthOf(column));
    }
    const int room = kColumnRoom * static_cast<int>(widths.size() - 1);
    const int spare = view - std::accumulate(widths.begin(), widths.end(), 0);
    if (spare < 0 || spare >= room) {
        std::transform(widths.begin(), widths.end() - 1, widths.begin(), [](int width) { return width + kColumnRoom; });
    }
    widths.back() += std::max(spare >= room ? spare - room : spare, 0);
    return widths;
}

int Table::wantedWidth(std::size_t columns) const {
    Widget scrollBar = nullptr;
    Dimension width = 0;
    XtVaGetValues(window_, XmNverticalScrollBar, &scrollBar, XmNwidth, &width, nullptr);
    const int most = scaled(window_, kLongestText);
    return std::accumulate(
        columns_.begin(), columns_.begin() + static_cast<std::ptrdiff_t>(columns),
        width - viewWidth(window_) + preferredWidth(scrollBar),
        [most](int sum, const Column& column) { return sum + std::min(wantedWidthOf(column), most) + kColumnRoom; });
}

const Table* Table::in(Widget scrolledWindow) {
    XtPointer table = nullptr;
    XtVaGetValues(scrolledWindow, XmNuserData, &table, nullptr);
    return static_cast<const Table*>(table);
}

void Table::place() const {
    placeColumns(columns_);
}

void Table::scrollHeaders(XtPointer callData) const {
    placeHeaders(columns_, listWidths(columns_), static_cast<const XmScrollBarCallbackStruct*>(callData)->value);
}

void Table::followRow(Widget clicked) const {
    const std::optional<int> row = selectedRow(clicked);
    if (row) {
        // A list does not draw what is selected out of its sight.
        revealRow(rowsOf(columns_), *row);
    }
    for (const Column& column : columns_) {
        if (column.list == clicked) {
            continue;
        }
        XmListDeselectAllItems(column.list);
        if (row) {
            XmListSelectPos(column.list, *row, False);
        }
    }
    Widget first = columns_.front().list;
    if (clicked != first) {
        XmProcessTraversal(first, XmTRAVERSE_CURRENT);
    }
    if (row) {
        XmListSetKbdItemPos(first, *row);
    }
}

void placeColumns(const std::vector<Column>& columns) {
    layOut(columns, listWidths(columns));
}

Widget createHeaderWindow(Widget parent, const char* name) {
    return XtVaCreateManagedWidget(name, xmScrolledWindowWidgetClass, parent, XmNscrollingPolicy, XmAPPLICATION_DEFINED,
                                   XmNvisualPolicy, XmVARIABLE, nullptr);
}

void setEmptySize(Widget list, Dimension width, Dimension height) {
    XtVaSetValues(list, XmNwidth, width, XmNheight, height, XmNuserData, packed({width, height}), nullptr);
}

void placeTable(const TablePage& page) {
    Attach(page.explanation).leftForm(kPageMargin).rightForm(kPageMargin).bottomForm(kPageMargin);
    Attach(page.headers).leftForm(kPageMargin);
    if (page.heading != nullptr) {
        Attach(page.heading).topForm(kPageMargin).leftForm(kPageMargin);
        Attach(page.headers).below(page.heading, kPageGap);
    } else {
        Attach(page.headers).topForm(kPageGap);
    }
    Attach(page.lists).below(page.headers, 0).leftForm(kPageMargin).above(page.explanation, kPageGap);
    if (page.buttons.empty()) {
        Attach(page.headers).rightForm(kPageMargin);
        Attach(page.lists).rightForm(kPageMargin);
        return;
    }
    Widget above = page.heading;
    for (Widget button : page.buttons) {
        Attach(button).below(above, kPageGap).rightForm(kPageMargin);
        above = button;
    }
    Attach(page.headers).leftOf(page.buttons.front(), kPageMargin);
    Attach(page.lists).leftOf(page.buttons.front(), kPageMargin);
}
