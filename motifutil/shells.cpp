#include "motifutil/shells.h"

#include <X11/Xatom.h>
#include <Xm/Protocols.h>

#include <cstring>

namespace {

void poppingUp(Widget shell, XtPointer /*clientData*/, XtPointer /*callData*/) {
    // A window has to be there to have a title, and is to have it before it is seen.
    XtRealizeWidget(shell);
    publishTitle(shell);
}

}  // namespace

void prepareShell(Widget shell, XtCallbackProc closed, XtPointer clientData) {
    // Without an encoding Xt takes that of the locale (ICCCM 4.1.2.1 in place of plain Latin-1).
    XtVaSetValues(shell, XmNdeleteResponse, XmDO_NOTHING, XmNtitleEncoding, None, nullptr);
    const Atom deleteWindow = XInternAtom(XtDisplay(shell), "WM_DELETE_WINDOW", False);
    XmAddWMProtocolCallback(shell, deleteWindow, closed, clientData);
    XtAddCallback(shell, XtNpopupCallback, poppingUp, nullptr);
}

Widget shellOf(Widget widget) {
    while (!XtIsShell(widget)) {
        widget = XtParent(widget);
    }
    return widget;
}

void publishTitle(Widget shell) {
    char* title = nullptr;
    XtVaGetValues(shell, XmNtitle, &title, nullptr);
    if (title != nullptr) {
        Display* connection = XtDisplay(shell);
        XChangeProperty(connection, XtWindow(shell), XInternAtom(connection, "_NET_WM_NAME", False),
                        XInternAtom(connection, "UTF8_STRING", False), 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(title), static_cast<int>(std::strlen(title)));
    }
}
