#include "motifutil/icons.h"

#include <X11/xpm.h>

#include "motifutil/true_color.h"

Widget frmabout = nullptr;

namespace {

// Xpm's way to allocate a colour: by name, or what `colour` holds without one. As many as an icon has would be waited
// for one by one.
int allocate(Display* connection, Colormap colormap, char* name, XColor* colour, void* /*closure*/) {
    if (name != nullptr && XParseColor(connection, colormap, name, colour) == 0) {
        return -1;
    }
    return setPixel(connection, colormap, *colour) || XAllocColor(connection, colormap, colour) != 0 ? 1 : 0;
}

// Makes the pixmap in the colormap and depth of `widget`; what Xpm answers is told by the pixmap alone.
Pixmap createPixmap(Widget widget, char** xpmData, XpmAttributes& attributes) {
    Display* display = XtDisplay(widget);
    const int screen = DefaultScreen(display);
    attributes.valuemask |= XpmVisual | XpmColormap | XpmDepth;
    attributes.visual = DefaultVisual(display, screen);
    int depth = 0;
    XtVaGetValues(widget, XmNcolormap, &attributes.colormap, XmNdepth, &depth, nullptr);
    attributes.depth = static_cast<unsigned int>(depth);
    attributes.valuemask |= XpmAllocColor;
    attributes.alloc_color = allocate;
    Pixmap pixmap = None;
    XpmCreatePixmapFromData(display, RootWindow(display, screen), xpmData, &pixmap, nullptr, &attributes);
    return pixmap;
}

void freeIcon(Widget widget, XtPointer icon, XtPointer /*callData*/) {
    const auto pixmap = reinterpret_cast<Pixmap>(icon);
    // Motif remembers what it knows of a pixmap that it was shown.
    XmDestroyPixmap(XtScreen(widget), pixmap);
    XFreePixmap(XtDisplay(widget), pixmap);
}

}  // namespace

Pixmap createIconPixmap(Widget widget, const char* const* xpmData) {
    static char groundName[] = "ground";
    XpmColorSymbol ground{groundName, nullptr, 0};
    XtVaGetValues(widget, XmNbackground, &ground.pixel, nullptr);
    XpmAttributes attributes{};
    attributes.valuemask = XpmColorSymbols;
    attributes.colorsymbols = &ground;
    attributes.numsymbols = 1;
    return createPixmap(widget, const_cast<char**>(xpmData), attributes);
}

void getVHIconIPixmap(Pixmap* pixmapOut, char** xpmData) {
    XpmAttributes attributes{};
    *pixmapOut = createPixmap(frmabout, xpmData, attributes);
}

void setIcon(Widget widget, const char* resource, Pixmap icon) {
    if (icon != None) {
        XtVaSetValues(widget, resource, icon, nullptr);
        XtAddCallback(widget, XmNdestroyCallback, freeIcon, reinterpret_cast<XtPointer>(icon));
    }
}
