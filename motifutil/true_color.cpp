#include "motifutil/true_color.h"

#include <X11/IntrinsicP.h>
// After the other.
#include <X11/CoreP.h>

#include <cstdio>
#include <cstring>

namespace {

// One part of a colour, of 16 bits, as the bits of a mask.
unsigned long partOf(unsigned short value, unsigned long mask) {
    if (mask == 0) {
        return 0;
    }
    const int shift = __builtin_ctzl(mask);
    const int bits = __builtin_popcountl(mask);
    return static_cast<unsigned long>(bits <= 16 ? value >> (16 - bits) : value << (bits - 16)) << shift;
}

// "#rrggbb", which is what our own resources say; false for any other name.
bool parse(const char* text, XColor& colour) {
    constexpr std::size_t kLength = 7;
    unsigned int red = 0;
    unsigned int green = 0;
    unsigned int blue = 0;
    int end = 0;
    if (std::strlen(text) != kLength || std::sscanf(text, "#%2x%2x%2x%n", &red, &green, &blue, &end) != 3 ||
        end != static_cast<int>(kLength)) {
        return false;
    }
    constexpr unsigned int kToSixteenBits = 0x101;
    colour.red = static_cast<unsigned short>(red * kToSixteenBits);
    colour.green = static_cast<unsigned short>(green * kToSixteenBits);
    colour.blue = static_cast<unsigned short>(blue * kToSixteenBits);
    return true;
}

// Xt's converter (XtConvertArgRec, XtTypeConverter), which is asked for what is not worked out here.
Boolean convert(Display* connection, XrmValue* arguments, Cardinal* count, XrmValue* from, XrmValue* to,
                XtPointer* data) {
    XColor colour{};
    static Pixel result;
    if (*count == 2 && parse(static_cast<const char*>(from->addr), colour) &&
        setPixel(connection, *reinterpret_cast<Colormap*>(arguments[1].addr), colour)) {
        if (to->addr != nullptr && to->size < sizeof result) {
            to->size = sizeof result;
            return False;
        }
        result = colour.pixel;
        if (to->addr == nullptr) {
            to->addr = reinterpret_cast<XPointer>(&result);
        } else {
            *reinterpret_cast<Pixel*>(to->addr) = result;
        }
        to->size = sizeof result;
        return True;
    }
    return XtCvtStringToPixel(connection, arguments, count, from, to, data);
}

Status allocate(Display* connection, Colormap colormap, XColor* colour) {
    return setPixel(connection, colormap, *colour) ? 1 : XAllocColor(connection, colormap, colour);
}

}  // namespace

bool setPixel(Display* connection, Colormap colormap, XColor& colour) {
    const int screen = DefaultScreen(connection);
    const Visual* visual = DefaultVisual(connection, screen);
    if (visual->c_class != TrueColor || colormap != DefaultColormap(connection, screen)) {
        return false;
    }
    colour.pixel = partOf(colour.red, visual->red_mask) | partOf(colour.green, visual->green_mask) |
                   partOf(colour.blue, visual->blue_mask);
    return true;
}

void workOutColours(XtAppContext context, Display* connection) {
    static XtConvertArgRec arguments[] = {
        {XtWidgetBaseOffset, reinterpret_cast<XtPointer>(XtOffsetOf(WidgetRec, core.screen)), sizeof(Screen*)},
        {XtWidgetBaseOffset, reinterpret_cast<XtPointer>(XtOffsetOf(WidgetRec, core.colormap)), sizeof(Colormap)}};
    XtAppSetTypeConverter(context, XtRString, XtRPixel, convert, arguments, XtNumber(arguments), XtCacheByDisplay,
                          nullptr);
    XtVaSetValues(XmGetXmScreen(DefaultScreenOfDisplay(connection)), XmNcolorAllocationProc, allocate, nullptr);
}
