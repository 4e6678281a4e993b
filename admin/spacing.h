// The room between the widgets of a page or of a dialog of the administrator, in pixels.
#pragma once

// At the edges of the form.
inline constexpr int kMargin = 12;
// Between widgets that belong together.
inline constexpr int kGap = 8;
