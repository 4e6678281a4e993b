#include "setup/file_dialog.h"

#include <Xm/FileSB.h>
#include <Xm/TextF.h>
#include <sys/stat.h>

#include <new>
#include <string>

#include "motifutil/catalog_text.h"
#include "motifutil/widgets.h"
#include "setup/setup_texts.h"

namespace {

constexpr int kVisibleItems = 10;
constexpr short kTextColumns = 54;

void cancelled(Widget box, XtPointer /*clientData*/, XtPointer /*callData*/) {
    XtDestroyWidget(XtParent(box));
}

void closed(Widget /*shell*/, XtPointer box, XtPointer /*callData*/) {
    cancelled(static_cast<Widget>(box), nullptr, nullptr);
}

void chosen(Widget box, XtPointer field, XtPointer callData) {
    const std::string path = plainText(static_cast<XmFileSelectionBoxCallbackStruct*>(callData)->value);
    // Only a directory has been chosen yet.
    if (path.empty() || path.back() == '/') {
        return;
    }
    XmTextFieldSetString(static_cast<Widget>(field), const_cast<char*>(path.c_str()));
    XmProcessTraversal(static_cast<Widget>(field), XmTRAVERSE_CURRENT);
    XtDestroyWidget(XtParent(box));
}

// The directory of an absolute path, with its slash; empty when there is none to show.
std::string directoryOf(const std::string& path) {
    if (path.empty() || path.front() != '/') {
        return {};
    }
    std::string directory = path.substr(0, path.rfind('/') + 1);
    struct stat status {};
    return stat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? directory : std::string();
}

}  // namespace

void showFileDialog(Widget field) {
    const std::string title = setupText(SetupMessage::kChooseFileTitle);
    const XmStringPtr selection = compoundString(catalogText(Message::kFileSelection));
    const XmStringPtr files = compoundString(catalogText(Message::kFileList));
    const XmStringPtr directories = compoundString(catalogText(Message::kDirectoryList));
    const XmStringPtr ok = compoundString(catalogText(Message::kOk));
    const XmStringPtr cancel = compoundString(catalogText(Message::kCancel));
    const XmStringPtr filter = compoundString(catalogText(Message::kFilter));
    const XtTextPtr present(XmTextFieldGetString(field));
    const std::string path = present ? present.get() : "";
    const std::string start = directoryOf(path);
    const XmStringPtr directory = compoundString(start);
    ArgumentList arguments;
    arguments.set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL)
        .set(XmNtitle, title.c_str())
        // Names without their directory, which has a field of its own then.
        .set(XmNpathMode, XmPATH_MODE_RELATIVE)
        .set(XmNlistVisibleItemCount, kVisibleItems)
        .set(XmNtextColumns, kTextColumns)
        .set(XmNselectionLabelString, selection.get())
        .set(XmNfileListLabelString, files.get())
        .set(XmNdirListLabelString, directories.get())
        .set(XmNokLabelString, ok.get())
        .set(XmNcancelLabelString, cancel.get())
        .set(XmNfilterLabelString, filter.get())
        .set(XmNapplyLabelString, filter.get());
    if (!start.empty()) {
        arguments.set(XmNdirectory, directory.get());
    }
    static char name[] = "fileDialog";
    Widget box = XmCreateFileSelectionDialog(XtParent(field), name, arguments.data(), arguments.size());
    if (box == nullptr) {
        throw std::bad_alloc();
    }
    XtUnmanageChild(XtNameToWidget(box, "Help"));
    if (!start.empty()) {
        Widget text = XtNameToWidget(box, "Text");
        XmTextFieldSetString(text, const_cast<char*>(path.c_str()));
        XmTextFieldSetInsertionPosition(text, XmTextFieldGetLastPosition(text));
    }
    XtAddCallback(box, XmNokCallback, chosen, field);
    XtAddCallback(box, XmNcancelCallback, cancelled, nullptr);
    onWindowManagerClose(XtParent(box), closed, box);
    XtManageChild(box);
}
