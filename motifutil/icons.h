// Built-in icons as pixmaps. GUI thread only.
#pragma once

#include <Xm/Xm.h>

// The About form of a setup dialog: its colormap and depth are what icons are made for.
extern Widget frmabout;

// The pixmap of an icon (XPM data) for `widget`, whose background takes the place of the icon's colour "ground". The
// caller frees it with XFreePixmap; it is None when the icon can't be made.
[[nodiscard]] Pixmap createIconPixmap(Widget widget, const char* const* xpmData);

// Converts a built-in icon (XPM data) into a pixmap for `frmabout`, which must exist. The caller frees the pixmap with
// XFreePixmap; it is None when the icon can't be made (XpmCreatePixmapFromData).
void getVHIconIPixmap(Pixmap* pixmapOut, char** xpmData);

// Shows `icon` as the pixmap `resource` of `widget`, and frees it with the widget; nothing for None.
void setIcon(Widget widget, const char* resource, Pixmap icon);
