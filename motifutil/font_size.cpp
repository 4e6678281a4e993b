#include "motifutil/font_size.h"

#include "motifutil/compound_string.h"
#include "motifutil/shells.h"

namespace {

// The height of a line at 96 dots per inch.
constexpr int kLineHeight = 17;

int lineHeight(Widget widget) {
    XmRenderTable fonts = nullptr;
    XtVaGetValues(shellOf(widget), XmNlabelRenderTable, &fonts, nullptr);
    const int height = fonts == nullptr ? 0 : XmStringHeight(fonts, compoundString("X").get());
    return height == 0 ? kLineHeight : height;
}

}  // namespace

int scaled(Widget widget, int pixels) {
    return pixels * lineHeight(widget) / kLineHeight;
}

int roomForLine(Widget widget, int pixels) {
    return lineHeight(widget) <= pixels ? pixels : scaled(widget, pixels);
}
