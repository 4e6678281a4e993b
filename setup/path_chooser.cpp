#include "setup/path_chooser.h"

#include <Xm/FileSB.h>
#include <sys/stat.h>

#include <string>

#include "motifutil/file_dialog.h"
#include "motifutil/widgets.h"
#include "setup/setup_texts.h"

namespace {

void cancelled(Widget box, XtPointer /*clientData*/, XtPointer /*callData*/) {
    XtDestroyWidget(XtParent(box));
}

void chosen(Widget box, XtPointer field, XtPointer callData) {
    const std::string path = plainText(static_cast<XmFileSelectionBoxCallbackStruct*>(callData)->value);
    // Only a directory has been chosen yet.
    if (path.empty() || path.back() == '/') {
        return;
    }
    showPath(static_cast<Widget>(field), path);
    XmProcessTraversal(static_cast<Widget>(field), XmTRAVERSE_CURRENT);
    XtDestroyWidget(XtParent(box));
}

// The directory of an absolute path, with its slash; empty when there is no such directory.
std::string existingDirectoryOf(const std::string& path) {
    if (path.empty() || path.front() != '/') {
        return {};
    }
    std::string directory = path.substr(0, path.rfind('/') + 1);
    struct stat status {};
    return stat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? directory : std::string();
}

}  // namespace

void choosePath(Widget field) {
    const std::string path = fieldText(field);
    const std::string start = existingDirectoryOf(path);
    const XmStringPtr directory = compoundString(start);
    ArgumentList arguments;
    if (!start.empty()) {
        arguments.set(XmNdirectory, directory.get());
    }
    Widget box = createFileDialog(XtParent(field), "fileDialog", setupText(SetupMessage::kChooseFileTitle), arguments);
    if (!start.empty()) {
        showPath(XtNameToWidget(box, "Text"), path);
    }
    XtAddCallback(box, XmNokCallback, chosen, field);
    XtAddCallback(box, XmNcancelCallback, cancelled, nullptr);
    XtManageChild(box);
}
