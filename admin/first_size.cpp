#include "admin/first_size.h"

#include <Xm/FileSB.h>
#include <Xm/Form.h>
#include <Xm/PushB.h>
#include <Xm/ScrolledW.h>

#include <algorithm>
#include <vector>

#include "admin/table.h"
#include "motifutil/font_size.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"

namespace {

// In pixels at 96 dpi.
constexpr int kUsualWidth = 700;
constexpr int kLeastTableWidth = 240;
constexpr int kLeastTableHeight = 76;
constexpr int kLeastSelectionWidth = 280;
constexpr int kRowHeight = 19;
// What there is above and below the lists of files: letters, and room between them that does not grow with them, with
// what a window manager draws around the window.
constexpr int kAboveAndBelowLetters = 140;
constexpr int kAboveAndBelowRoom = 286;
// Of the screen's width, in percent.
constexpr int kLargestShare = 60;
constexpr int kMostRows = 10;
constexpr int kLeastRows = 3;
constexpr int kRowsOfButtons = 2;
// What stands on both sides of a page's parts: margins, and the notebook's frame.
constexpr int kAroundPage = 2 * (kWindowGap + kPageMargin) + 4;
constexpr int kBetweenTabs = 3;
// What window managers draw on both sides of a window.
constexpr int kFrameWidth = 16;

std::vector<Widget> tablesIn(Widget form) {
    std::vector<Widget> tables = managedBelow(form);
    std::erase_if(tables, [](Widget widget) { return !XmIsScrolledWindow(widget) || Table::in(widget) == nullptr; });
    return tables;
}

// The room that the tabs take above a page's parts: each is as wide as the widest.
int roomOfTabs(Widget notebook) {
    int widest = 0;
    int count = 0;
    for (Widget child : managedChildren(notebook)) {
        unsigned char type = XmNONE;
        XtVaGetValues(child, XmNnotebookChildType, &type, nullptr);
        if (type == XmMAJOR_TAB) {
            widest = std::max<int>(widest, preferredWidth(child));
            ++count;
        }
    }
    return count * (widest + kBetweenTabs) - 2 * kPageMargin;
}

// The room that the buttons beside a table take.
int buttonsBeside(Widget table) {
    int widest = 0;
    for (Widget sibling : managedChildren(XtParent(table))) {
        widest = std::max(widest, XmIsPushButton(sibling) ? preferredWidth(sibling) + kPageMargin : 0);
    }
    return widest;
}

int rowsOf(Widget fileSelection) {
    const int room =
        HeightOfScreen(XtScreen(fileSelection)) - scaled(fileSelection, kAboveAndBelowLetters) - kAboveAndBelowRoom;
    return std::clamp(room / scaled(fileSelection, kRowHeight), kLeastRows, kMostRows);
}

struct Size {
    int width;
    int height;
};

// What a page can do without: of its table, of its lists of files, or between what stands at its top and its bottom.
Size spareOf(Widget page, Widget fileSelection) {
    if (const std::vector<Widget> tables = tablesIn(page); !tables.empty()) {
        return {sizeOf(tables.front(), XmNwidth) - scaled(page, kLeastTableWidth),
                sizeOf(tables.front(), XmNheight) - scaled(page, kLeastTableHeight)};
    }
    if (XtParent(fileSelection) == page) {
        return {sizeOf(fileSelection, XmNwidth) - scaled(page, kLeastSelectionWidth),
                sizeOf(XtParent(XmFileSelectionBoxGetChild(fileSelection, XmDIALOG_LIST)), XmNheight) -
                    scaled(page, kLeastRows * kRowHeight)};
    }
    int top = 0;
    int bottom = sizeOf(page, XmNheight);
    for (Widget child : managedChildren(page)) {
        Position y = 0;
        unsigned char attachment = XmATTACH_NONE;
        XtVaGetValues(child, XmNy, &y, XmNbottomAttachment, &attachment, nullptr);
        if (attachment == XmATTACH_FORM) {
            bottom = std::min<int>(bottom, y);
        } else {
            top = std::max(top, y + sizeOf(child, XmNheight));
        }
    }
    // An explanation takes more lines in a narrow window.
    return {0, bottom - top - scaled(page, 2 * kRowHeight)};
}

}  // namespace

void askForFirstSize(Widget notebook, Widget fileSelection) {
    const int screen = WidthOfScreen(XtScreen(notebook));
    const int wanted = std::max(scaled(notebook, kUsualWidth) - kAroundPage, roomOfTabs(notebook));
    const int least = std::min(wanted, screen - kFrameWidth - kAroundPage);
    const int most = std::max(screen * kLargestShare / 100 - kAroundPage, least);
    for (Widget table : tablesIn(notebook)) {
        const int width = std::clamp(Table::in(table)->wantedWidth() + buttonsBeside(table), least, most);
        for (Widget window : managedChildren(XtParent(table))) {
            if (XmIsScrolledWindow(window)) {
                const int height = window == table
                                       ? scaled(notebook, kLeastTableHeight)
                                       : roomForLine(notebook, kHeaderHeight) + 2 * sizeOf(window, XmNshadowThickness);
                XtVaSetValues(window, XmNwidth, width - buttonsBeside(table), XmNheight, height, nullptr);
            }
        }
    }
    // The lists also get the room for the row of buttons that the box has no more.
    XtVaSetValues(fileSelection, XmNlistVisibleItemCount, rowsOf(fileSelection) - kRowsOfButtons, XmNwidth,
                  scaled(notebook, kLeastSelectionWidth), nullptr);
}

void setLeastSize(Widget shell, Widget notebook, Widget fileSelection) {
    // Pages that have not been in front yet have a size of their own.
    Widget front = XtParent(tablesIn(notebook).front());
    int width = 0;
    int height = 0;
    for (Widget page : managedChildren(notebook)) {
        if (XmIsForm(page)) {
            const Size spare = spareOf(page, fileSelection);
            width = std::max(width, sizeOf(page, XmNwidth) - spare.width);
            height = std::max(height, sizeOf(page, XmNheight) - spare.height);
        }
    }
    width += sizeOf(shell, XmNwidth) - sizeOf(front, XmNwidth);
    height += sizeOf(shell, XmNheight) - sizeOf(front, XmNheight);
    XtVaSetValues(shell, XmNminWidth, std::min<int>(width, sizeOf(shell, XmNwidth)), XmNminHeight,
                  std::min<int>(height, sizeOf(shell, XmNheight)), nullptr);
}
