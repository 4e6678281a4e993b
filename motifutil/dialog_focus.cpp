#include "motifutil/dialog_focus.h"

#include <map>

namespace {

// What had the keyboard before each dialog that is up.
std::map<Widget, Window> Before;

bool isViewable(Display* display, Window window) {
    XWindowAttributes attributes{};
    // Only windows of ours are sure to be there still.
    return XtWindowToWidget(display, window) != nullptr && XGetWindowAttributes(display, window, &attributes) != 0 &&
           attributes.map_state == IsViewable;
}

bool hasWindowManager(Widget shell) {
    XWindowAttributes root{};
    XGetWindowAttributes(XtDisplay(shell), RootWindowOfScreen(XtScreen(shell)), &root);
    return (root.all_event_masks & SubstructureRedirectMask) != 0;
}

void mapped(Widget shell, XtPointer /*clientData*/, XEvent* event, Boolean* /*continueToDispatch*/) {
    Display* display = XtDisplay(shell);
    if (event->type == MapNotify && !hasWindowManager(shell)) {
        int revert = 0;
        XGetInputFocus(display, &Before[shell], &revert);
        if (isViewable(display, XtWindow(shell))) {
            XSetInputFocus(display, XtWindow(shell), RevertToPointerRoot, CurrentTime);
        }
    }
    const auto before = Before.find(shell);
    if (event->type == UnmapNotify && before != Before.end()) {
        const bool isThere = isViewable(display, before->second);
        XSetInputFocus(display, isThere ? before->second : Window{PointerRoot}, RevertToPointerRoot, CurrentTime);
        Before.erase(before);
    }
}

void forget(Widget shell, XtPointer /*clientData*/, XtPointer /*callData*/) {
    Before.erase(shell);
}

}  // namespace

void holdKeyboard(Widget dialogShell) {
    XtAddEventHandler(dialogShell, StructureNotifyMask, False, mapped, nullptr);
    XtAddCallback(dialogShell, XmNdestroyCallback, forget, nullptr);
}
