// The colours of every window, worked out from two of them.
#pragma once

#include <X11/Intrinsic.h>

#include <optional>

struct Rgb {
    int red = 0;
    int green = 0;
    int blue = 0;
    friend bool operator==(const Rgb&, const Rgb&) = default;
};

struct Palette {
    Rgb ground, ink;  // Windows and their text.
    Rgb field;        // Lists and fields to type into, which have the same ink.
    Rgb header;       // Of a table.
    Rgb trough;       // Of a scroll bar.
    Rgb line, frame;  // Around headers, and around the pages.
    Rgb accent;       // Where the keyboard is, and what is switched on.
    Rgb selection;    // Under a selected row, whose ink stays: Xft text in a list keeps it.
};

// The palette for these two; what is not given is chosen so that it can be read with the other, light without both.
[[nodiscard]] Palette paletteOf(std::optional<Rgb> ground, std::optional<Rgb> ink);

// Gives the windows of this display the palette of the user's own `background` and `foreground`, or ours. Colours that
// the user's resources set for single widgets stay. Call it before the first window is made.
void setPalette(Display* connection);
