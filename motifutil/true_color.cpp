#include "motifutil/true_color.h"

namespace {

constexpr unsigned long kMostPart = 0xffff;

// One part of a colour, of 16 bits, as the bits of a mask: the nearest that there is, as X servers have it.
unsigned long partOf(unsigned short value, unsigned long mask) {
    if (mask == 0) {
        return 0;
    }
    const int shift = __builtin_ctzl(mask);
    const unsigned long most = mask >> shift;
    return (value * most + kMostPart / 2) / kMostPart << shift;
}

// The other way round.
unsigned short valueOf(unsigned long pixel, unsigned long mask) {
    const unsigned long part = mask == 0 ? 0 : (pixel & mask) >> __builtin_ctzl(mask);
    return static_cast<unsigned short>(mask == 0 ? 0 : part * kMostPart / (mask >> __builtin_ctzl(mask)));
}

}  // namespace

bool isTrueColor(Display* connection, Colormap colormap) {
    const int screen = DefaultScreen(connection);
    return DefaultVisual(connection, screen)->c_class == TrueColor && colormap == DefaultColormap(connection, screen);
}

bool setPixel(Display* connection, Colormap colormap, XColor& colour) {
    if (!isTrueColor(connection, colormap)) {
        return false;
    }
    const Visual* visual = DefaultVisual(connection, DefaultScreen(connection));
    colour.pixel = partOf(colour.red, visual->red_mask) | partOf(colour.green, visual->green_mask) |
                   partOf(colour.blue, visual->blue_mask);
    return true;
}

bool setColour(Display* connection, Colormap colormap, XColor& colour) {
    if (!isTrueColor(connection, colormap)) {
        return false;
    }
    const Visual* visual = DefaultVisual(connection, DefaultScreen(connection));
    colour.red = valueOf(colour.pixel, visual->red_mask);
    colour.green = valueOf(colour.pixel, visual->green_mask);
    colour.blue = valueOf(colour.pixel, visual->blue_mask);
    colour.flags = DoRed | DoGreen | DoBlue;
    return true;
}
