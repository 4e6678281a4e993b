#include "motifutil/icons.h"

#include <X11/xpm.h>

Widget frmabout = nullptr;

void getVHIconIPixmap(Pixmap* pixmapOut, char** xpmData) {
    *pixmapOut = None;
    Display* display = XtDisplay(frmabout);
    const int screen = DefaultScreen(display);
    XpmAttributes attributes{};
    attributes.valuemask = XpmVisual | XpmColormap | XpmDepth;
    attributes.visual = DefaultVisual(display, screen);
    int depth = 0;
    XtVaGetValues(frmabout, XmNcolormap, &attributes.colormap, XmNdepth, &depth, nullptr);
    attributes.depth = static_cast<unsigned int>(depth);
    XpmCreatePixmapFromData(display, RootWindow(display, screen), xpmData, pixmapOut, nullptr, &attributes);
}
