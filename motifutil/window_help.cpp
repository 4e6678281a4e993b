#include "motifutil/window_help.h"

void (*showHelpTopic)(const char* topic) = nullptr;

namespace {

void helpRequested(Widget /*dialogBox*/, XtPointer topic, XtPointer /*callData*/) {
    if (showHelpTopic != nullptr) {
        showHelpTopic(static_cast<const char*>(topic));
    }
}

}  // namespace

void setHelpTopic(Widget dialogBox, const char* topic) {
    XtRemoveAllCallbacks(dialogBox, XmNhelpCallback);
    XtAddCallback(dialogBox, XmNhelpCallback, helpRequested, const_cast<char*>(topic));
}
