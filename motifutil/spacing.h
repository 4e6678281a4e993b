// The room between widgets, in pixels: at the edges of a form (margin) and between widgets that belong together (gap).
#pragma once

// On the pages of the main window and the screens of the dialogs that lead through adding a data source.
inline constexpr int kPageMargin = 12;
inline constexpr int kPageGap = 8;

// In the window around the pages, and in dialogs that stand alone.
inline constexpr int kWindowMargin = 16;
inline constexpr int kWindowGap = 12;

// Between rows of labels and fields.
inline constexpr int kRowGap = 6;
