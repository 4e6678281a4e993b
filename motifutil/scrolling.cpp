#include "motifutil/scrolling.h"

#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include <algorithm>

namespace {

struct Box {
    Position x = 0;
    Position y = 0;
    Dimension width = 0;
    Dimension height = 0;
};

Box boxOf(Widget widget) {
    Box box;
    XtVaGetValues(widget, XmNx, &box.x, XmNy, &box.y, XmNwidth, &box.width, XmNheight, &box.height, nullptr);
    return box;
}

// Shadow and frame of the clip window at both ends. Motif's clip window itself is of no use here: its size lags behind
// while scroll bars come and go.
int frameOf(Widget scrolledWindow) {
    Dimension shadow = 0;
    XtVaGetValues(scrolledWindow, XmNshadowThickness, &shadow, nullptr);
    return 2 * (shadow + 1);
}

Widget scrollBarOf(Widget scrolledWindow, const char* which) {
    Widget scrollBar = nullptr;
    XtVaGetValues(scrolledWindow, which, &scrollBar, nullptr);
    return scrollBar;
}

struct Scroll {
    Widget scrollBar = nullptr;
    int value = 0;
    int slider = 0;
    int increment = 0;
    int page = 0;
    int maximum = 0;
};

Scroll scrollOf(Widget scrolledWindow, const char* which) {
    Scroll scroll;
    scroll.scrollBar = scrollBarOf(scrolledWindow, which);
    XmScrollBarGetValues(scroll.scrollBar, &scroll.value, &scroll.slider, &scroll.increment, &scroll.page);
    XtVaGetValues(scroll.scrollBar, XmNmaximum, &scroll.maximum, nullptr);
    return scroll;
}

void scrollTo(const Scroll& scroll, int wanted) {
    const int value = std::clamp(wanted, 0, scroll.maximum - scroll.slider);
    if (value != scroll.value) {
        XmScrollBarSetValues(scroll.scrollBar, value, scroll.slider, scroll.increment, scroll.page, True);
    }
}

void wheelTurned(Widget /*child*/, XtPointer scrolledWindow, XEvent* event, Boolean* /*continueToDispatch*/) {
    constexpr int kPixelsPerNotch = 60;
    const unsigned int button = event->xbutton.button;
    if (button == Button4 || button == Button5) {
        const Scroll scroll = scrollOf(static_cast<Widget>(scrolledWindow), XmNverticalScrollBar);
        XtPointer step = nullptr;
        XtVaGetValues(scroll.scrollBar, XmNuserData, &step, nullptr);
        const int pixels = step == nullptr ? kPixelsPerNotch : static_cast<int>(reinterpret_cast<XtArgVal>(step));
        scrollTo(scroll, scroll.value + (button == Button4 ? -pixels : pixels));
    }
}

}  // namespace

int viewWidth(Widget scrolledWindow) {
    const Box whole = boxOf(scrolledWindow);
    // A scroll bar that is not needed stays managed and is moved out of sight.
    const Box scrollBar = boxOf(scrollBarOf(scrolledWindow, XmNverticalScrollBar));
    return whole.width - frameOf(scrolledWindow) - (scrollBar.x < whole.width ? scrollBar.width : 0);
}

int viewHeight(Widget scrolledWindow) {
    const Box whole = boxOf(scrolledWindow);
    const Box scrollBar = boxOf(scrollBarOf(scrolledWindow, XmNhorizontalScrollBar));
    return whole.height - frameOf(scrolledWindow) - (scrollBar.y < whole.height ? scrollBar.height : 0);
}

void scrollWithWheel(Widget scrolledWindow, Widget child) {
    XtAddEventHandler(child, ButtonPressMask, False, wheelTurned, scrolledWindow);
}

void setWheelStep(Widget scrolledWindow, int pixels) {
    XtVaSetValues(scrollBarOf(scrolledWindow, XmNverticalScrollBar), XmNuserData,
                  reinterpret_cast<XtPointer>(XtArgVal{pixels}), nullptr);
}

void scrollDownTo(Widget scrolledWindow, int value) {
    scrollTo(scrollOf(scrolledWindow, XmNverticalScrollBar), value);
}

void revealRange(Widget scrolledWindow, int top, int bottom) {
    const Scroll scroll = scrollOf(scrolledWindow, XmNverticalScrollBar);
    const int lowest = bottom - scroll.slider;
    scrollTo(scroll, std::clamp(scroll.value, lowest, std::max(top, lowest)));
}

void scrollSideways(Widget scrolledWindow, int direction) {
    constexpr int kPixelsPerStep = 40;
    const Scroll scroll = scrollOf(scrolledWindow, XmNhorizontalScrollBar);
    scrollTo(scroll, scroll.value + direction * kPixelsPerStep);
}
