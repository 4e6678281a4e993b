#include "admin/lists.h"

#include <Xm/List.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "admin/exchange_sort.h"
#include "admin/tall_rows.h"
#include "motifutil/exposed_rows.h"
#include "motifutil/script_fonts.h"
#include "motifutil/widgets.h"

namespace {

// Motif refuses to show no row at all, and X a window that is too high.
int visibleRows(Widget list, int count) {
    return std::clamp(count, 1, mostRows(list));
}

// What a list shows of a text; of an empty one a row that can be seen.
XmStringPtr rowString(const std::string& text) {
    return compoundString(text.empty() ? " " : text);
}

void setItems(Widget list, const std::vector<XmStringPtr>& rows) {
    std::vector<XmString> items;
    items.reserve(rows.size() + 1);
    for (const XmStringPtr& row : rows) {
        items.push_back(row.get());
    }
    giveFonts(list);
    items.push_back(nullptr);
    const int count = static_cast<int>(rows.size());
    XtVaSetValues(list, XmNitemCount, count, XmNitems, items.data(), XmNvisibleItemCount, visibleRows(list, count),
                  nullptr);
}

// Does what gives the list so many rows more, and lets it show as many more.
void changeRows(Widget list, int more, const std::function<void()>& change) {
    int count = 0;
    int visible = 0;
    XtVaGetValues(list, XmNitemCount, &count, XmNvisibleItemCount, &visible, nullptr);
    const int visibleAfter = visibleRows(list, count + more);
    if (visibleAfter == visible) {
        change();
        return;
    }
    changeUndrawn(list, change);
    XtVaSetValues(list, XmNvisibleItemCount, visibleAfter, nullptr);
}

// The functions for arrays exchange the pointers and leave the texts alone.
std::vector<char*> pointersTo(const std::vector<std::string>& rows) {
    std::vector<char*> pointers;
    pointers.reserve(rows.size());
    for (const std::string& row : rows) {
        pointers.push_back(const_cast<char*>(row.c_str()));
    }
    return pointers;
}

}  // namespace

void populateList(Widget list, char** strings, int count) {
    std::vector<XmStringPtr> rows;
    for (int i = 0; i < count; ++i) {
        rows.push_back(rowString(strings[i] == nullptr ? "" : strings[i]));
    }
    setItems(list, rows);
}

void populateList(Widget list, const std::vector<std::string>& rows) {
    populateList(list, pointersTo(rows).data(), static_cast<int>(rows.size()));
}

void populateList(Widget list, const FixedRow* rows, int count) {
    std::vector<XmStringPtr> items;
    for (int i = 0; i < count; ++i) {
        items.push_back(compoundString(rows[i].data()));
    }
    setItems(list, items);
}

void FreeListMemory(char** strings, int count) noexcept {
    if (strings == nullptr) {
        return;
    }
    std::for_each_n(strings, std::max(count, 0), [](char* text) { std::free(text); });
    std::free(strings);
}

void sortList(char** strings, short count) {
    exchangeSort({strings, static_cast<std::size_t>(std::max<short>(count, 0))});
}

void sortRows(std::vector<std::string>& rows) {
    std::vector<char*> order = pointersTo(rows);
    exchangeSort(order);
    rows = std::vector<std::string>(order.begin(), order.end());
}

std::optional<int> selectedRow(Widget list) {
    int count = 0;
    int* positions = nullptr;
    XtVaGetValues(list, XmNselectedPositionCount, &count, XmNselectedPositions, &positions, nullptr);
    return count == 1 ? std::optional(positions[0]) : std::nullopt;
}

std::string rowText(Widget list, int position) {
    int count = 0;
    XmStringTable items = nullptr;
    XtVaGetValues(list, XmNitemCount, &count, XmNitems, &items, nullptr);
    return position >= 1 && position <= count ? plainText(items[position - 1]) : std::string();
}

void insertRow(Widget list, int position, const std::string& text) {
    giveFonts(list);
    const XmStringPtr row = rowString(text);
    changeRows(list, 1, [&] { XmListAddItemUnselected(list, row.get(), position); });
}

void deleteRow(Widget list, int position) {
    changeRows(list, -1, [&] { XmListDeletePos(list, position); });
}
