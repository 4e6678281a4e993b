#include "admin/file_selection_layout.h"

#include <X11/IntrinsicP.h>
#include <Xm/FileSB.h>
#include <Xm/List.h>
#include <Xm/ScrollBar.h>

#include <algorithm>

#include "motifutil/compound_string.h"
#include "motifutil/widgets.h"

namespace {

// Returns the height.
int place(Widget widget, int x, int y, int width, int height) {
    Position oldX = 0;
    Position oldY = 0;
    XtVaGetValues(widget, XmNx, &oldX, XmNy, &oldY, nullptr);
    if (oldX != x || oldY != y || sizeOf(widget, XmNwidth) != width || sizeOf(widget, XmNheight) != height) {
        XtConfigureWidget(widget, static_cast<Position>(x), static_cast<Position>(y),
                          static_cast<Dimension>(std::max(width, 1)), static_cast<Dimension>(std::max(height, 1)), 0);
        if (!XtIsWidget(widget)) {
            // A gadget that moves leaves its picture behind.
            XClearArea(XtDisplayOfObject(widget), XtWindowOfObject(widget), 0, 0, 0, 0, True);
        }
    }
    return height;
}

// How wide the items of a list are at most, with its margins.
int widestItem(Widget list, XmRenderTable fonts) {
    int count = 0;
    XmStringTable items = nullptr;
    Dimension margin = 0;
    XtVaGetValues(list, XmNitemCount, &count, XmNitems, &items, XmNlistMarginWidth, &margin, nullptr);
    int widest = 0;
    for (int i = 0; i < count; ++i) {
        widest = std::max<int>(widest, XmStringWidth(fonts, items[i]));
    }
    return widest + 2 * (margin + sizeOf(list, XmNshadowThickness) + sizeOf(list, XmNhighlightThickness));
}

// Lets a list have the room of the scroll bars that it does not need to show names that begin behind `directory`, and
// scrolls it to there. The box itself always shows them; to have them come and go as they are needed ends the process
// in Motif 2.3.8 when a search brings them up.
void fillWindow(Widget list, XmString directory) {
    Widget across = nullptr;
    Widget down = nullptr;
    XmRenderTable fonts = nullptr;
    XtVaGetValues(XtParent(list), XmNhorizontalScrollBar, &across, XmNverticalScrollBar, &down, nullptr);
    XtVaGetValues(list, XmNrenderTable, &fonts, nullptr);
    const int start = directory == nullptr ? 0 : XmStringWidth(fonts, directory);
    const int fullWidth = sizeOf(XtParent(list), XmNwidth);
    const int fullHeight = sizeOf(XtParent(list), XmNheight);
    const bool isTooWide = widestItem(list, fonts) - start > fullWidth;
    const int height = fullHeight - (isTooWide ? sizeOf(across, XmNheight) : 0);
    place(list, 0, 0, sizeOf(list, XmNwidth), height);
    int rows = 0;
    int visible = 0;
    XtVaGetValues(list, XmNitemCount, &rows, XmNvisibleItemCount, &visible, nullptr);
    const int width = fullWidth - (rows > visible ? sizeOf(down, XmNwidth) : 0);
    place(list, 0, 0, width, height);
    place(down, width, 0, sizeOf(down, XmNwidth), height);
    place(across, 0, height, width, sizeOf(across, XmNheight));
    // Further than XmListSetHorizPos() goes, which stops where the longest item ends.
    int maximum = 0;
    XtVaGetValues(across, XmNmaximum, &maximum, nullptr);
    XtVaSetValues(across, XmNmaximum, std::max(maximum, start + width), XmNsliderSize, width, XmNvalue, 0, nullptr);
    XmScrollBarSetValues(across, start, 0, 0, 0, True);
}

void arrange(Widget box, Widget filterLabel) {
    const auto part = [box](unsigned char which) { return XmFileSelectionBoxGetChild(box, which); };
    const int margin = sizeOf(box, XmNmarginWidth);
    const int width = sizeOf(box, XmNwidth) - 2 * margin;
    const int directoryWidth = std::max<int>((width - margin) * 2 / 5, preferredWidth(part(XmDIALOG_DIR_LIST_LABEL)));
    const int fileStart = margin + directoryWidth + margin;
    const int fileWidth = width - margin - directoryWidth;
    Widget filter = part(XmDIALOG_FILTER_TEXT);
    Widget button = part(XmDIALOG_APPLY_BUTTON);
    const int filterHeight = preferredHeight(filter);
    const int buttonWidth = preferredWidth(button);
    const int buttonHeight = preferredHeight(button);
    const int rowHeight = std::max(filterHeight, buttonHeight);

    int y = sizeOf(box, XmNmarginHeight);
    y += place(filterLabel, margin, y, width, preferredHeight(filterLabel));
    place(filter, margin, y + (rowHeight - filterHeight) / 2, width - margin - buttonWidth, filterHeight);
    place(button, margin + width - buttonWidth, y + (rowHeight - buttonHeight) / 2, buttonWidth, buttonHeight);
    y += rowHeight + margin;
    const int headingHeight = preferredHeight(part(XmDIALOG_LIST_LABEL));
    place(part(XmDIALOG_DIR_LIST_LABEL), margin, y, directoryWidth, headingHeight);
    y += place(part(XmDIALOG_LIST_LABEL), fileStart, y, fileWidth, headingHeight);
    // The rest from the bottom.
    int end = sizeOf(box, XmNheight) - sizeOf(box, XmNmarginHeight);
    for (const unsigned char which : {XmDIALOG_TEXT, XmDIALOG_SELECTION_LABEL}) {
        const int height = preferredHeight(part(which));
        end -= place(part(which), margin, end - height, width, height);
    }
    const int listHeight = end - margin - y;
    place(XtParent(part(XmDIALOG_DIR_LIST)), margin, y, directoryWidth, listHeight);
    place(XtParent(part(XmDIALOG_LIST)), fileStart, y, fileWidth, listHeight);

    XmString directory = nullptr;
    XmString nothing = nullptr;
    XtVaGetValues(box, XmNdirectory, &directory, XmNnoMatchString, &nothing, nullptr);
    const XmStringPtr ownedDirectory(directory);
    const XmStringPtr ownedNothing(nothing);
    fillWindow(part(XmDIALOG_DIR_LIST), directory);
    const bool isEmpty = XmListItemExists(part(XmDIALOG_LIST), nothing) != 0;
    fillWindow(part(XmDIALOG_LIST), isEmpty ? nullptr : directory);
}

void changed(Widget /*widget*/, XtPointer filterLabel, XEvent* event, Boolean* /*continueToDispatch*/) {
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        auto* label = static_cast<Widget>(filterLabel);
        arrange(XtParent(label), label);
    }
}

}  // namespace

void arrangeFileSelection(Widget box, Widget filterLabel) {
    // Longer names make it no wider.
    XtVaSetValues(box, XmNresizePolicy, XmRESIZE_NONE, nullptr);
    XtAddEventHandler(box, StructureNotifyMask, False, changed, filterLabel);
    // A search hides the list of files meanwhile, and lets the box place its parts.
    for (const unsigned char which : {XmDIALOG_DIR_LIST, XmDIALOG_LIST}) {
        Widget list = XmFileSelectionBoxGetChild(box, which);
        for (Widget widget : {list, XtParent(list)}) {
            XtAddEventHandler(widget, StructureNotifyMask, False, changed, filterLabel);
        }
    }
}
