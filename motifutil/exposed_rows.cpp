#include "motifutil/exposed_rows.h"

#include <Xm/ListP.h>

#include <algorithm>

// Motif has no resource for any of this: what is here writes into the record of the list (Motif 2.3.8, ListP.h).

namespace {

XmListRec& recordOf(Widget list) {
    return *reinterpret_cast<XmListRec*>(list);
}

void drawAll(Widget list, XEvent* event, Region region) {
    xmListClassRec.core_class.expose(list, event, region);
}

// Lets Motif draw the rows that the event is about, as if they were all that the list has, below a margin of the rows
// above them. The row before and the one behind may have the frame of the keyboard, which goes beyond its row.
void drawExposed(Widget widget, XEvent* event, Region region) {
    XmListRec& record = recordOf(widget);
    XmListPart& list = record.list;
    const int shown = std::min(list.visibleItemCount, list.itemCount - list.top_position);
    const int keyboard = list.CurrentKbdItem - list.top_position;
    // A frame around the whole list.
    const bool hasFrame =
        record.primitive.shadow_thickness > 0 || (list.Traversing != 0 && (keyboard < 0 || keyboard >= shown));
    if (event == nullptr || event->type != Expose || shown < 1 || list.spacing < 1 || hasFrame) {
        drawAll(widget, event, region);
        return;
    }
    const int row = list.MaxItemHeight + list.spacing;
    const int top = list.margin_height + list.HighlightThickness;
    const int first = std::clamp((event->xexpose.y - top) / row - 1, 0, shown - 1);
    const int end = std::clamp((event->xexpose.y + event->xexpose.height - top) / row + 2, first + 1, shown);

    // With BaseY, which drawing takes from the margin, and the next key draws by.
    const XmListPart whole = list;
    const Dimension height = record.core.height;
    list.top_position += first;
    list.visibleItemCount = end - first;
    list.margin_height = static_cast<Dimension>(list.margin_height + first * row);
    // Motif keeps the margin free below, too, and clears what is left between that and the rows. Of a list that X
    // allows twice the height has room here.
    record.core.height = static_cast<Dimension>(2 * (top + first * row) + (end - first) * row - list.spacing);
    list.Traversing = list.Traversing != 0 && keyboard >= first && keyboard < end;
    drawAll(widget, event, region);
    list = whole;
    record.core.height = height;
}

XmListClassRec exposedRowsListClassRecord() {
    XmListClassRec record{};
    CoreClassPart& core = record.core_class;
    core.superclass = xmListWidgetClass;
    core.class_name = xmListClassRec.core_class.class_name;
    core.widget_size = sizeof(XmListRec);
    core.realize = XtInheritRealize;
    core.xrm_class = NULLQUARK;
    core.compress_motion = xmListClassRec.core_class.compress_motion;
    core.compress_exposure = xmListClassRec.core_class.compress_exposure;
    core.compress_enterleave = xmListClassRec.core_class.compress_enterleave;
    core.resize = XtInheritResize;
    core.expose = drawExposed;
    core.set_values_almost = XtInheritSetValuesAlmost;
    core.version = XtVersion;
    core.query_geometry = XtInheritQueryGeometry;
    record.primitive_class.border_highlight = XmInheritBorderHighlight;
    record.primitive_class.border_unhighlight = XmInheritBorderUnhighlight;
    return record;
}

}  // namespace

WidgetClass exposedRowsListClass() {
    static XmListClassRec record = exposedRowsListClassRecord();
    return reinterpret_cast<WidgetClass>(&record);
}

void changeUndrawn(Widget list, const std::function<void()>& change) {
    int& visible = recordOf(list).list.visibleItemCount;
    const int before = visible;
    visible = 0;
    change();
    visible = before;
}
