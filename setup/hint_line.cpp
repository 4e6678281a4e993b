#include "setup/hint_line.h"

#include <Xm/Label.h>

#include "motifutil/widgets.h"

HintLine::HintLine(Widget parent) {
    // A blank, lest the line be lower than one with text.
    line_ = createLabel(parent, "LblHint", std::string(" "));
    XtVaSetValues(line_, XmNalignment, XmALIGNMENT_BEGINNING, XmNmarginWidth, 0, XmNrecomputeSize, False, nullptr);
}

void HintLine::explain(Widget widget, const std::string& text) {
    texts_[widget] = text;
    XtAddEventHandler(widget, FocusChangeMask, False, focused, this);
}

void HintLine::fit() {
    XmRenderTable fonts = nullptr;
    Dimension width = 0;
    XtVaGetValues(line_, XmNrenderTable, &fonts, XmNwidth, &width, nullptr);
    std::string shown = text_.empty() ? " " : text_;
    XmStringPtr label = compoundString(shown);
    std::size_t end = shown.rfind(' ');
    while (XmStringWidth(fonts, label.get()) > width && end != std::string::npos && end > 0) {
        shown = text_.substr(0, end) + " ...";
        label = compoundString(shown);
        end = text_.rfind(' ', end - 1);
    }
    XtVaSetValues(line_, XmNlabelString, label.get(), nullptr);
}

void HintLine::focused(Widget widget, XtPointer self, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that gets the keyboard tells the field under the pointer too, which has not got it.
    if (event->type == FocusIn && event->xfocus.detail != NotifyPointer) {
        auto* hint = static_cast<HintLine*>(self);
        hint->text_ = hint->texts_[widget];
        hint->fit();
    }
}
