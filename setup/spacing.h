// The room between the widgets of the setup library's dialogs, in pixels.
#pragma once

// At the edges of the form.
inline constexpr int kMargin = 16;
// Between widgets that belong together.
inline constexpr int kGap = 12;
// Between rows.
inline constexpr int kRowGap = 6;
