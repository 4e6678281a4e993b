#include "motifutil/true_color.h"

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

// The other way round.
unsigned short valueOf(unsigned long pixel, unsigned long mask) {
    constexpr unsigned long kMost = 0xffff;
    const unsigned long part = mask == 0 ? 0 : (pixel & mask) >> __builtin_ctzl(mask);
    return static_cast<unsigned short>(mask == 0 ? 0 : part * kMost / (mask >> __builtin_ctzl(mask)));
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
