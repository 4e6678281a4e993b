#include "motifutil/file_dialog.h"

#include <Xm/FileSB.h>
#include <Xm/List.h>

#include <new>

#include "motifutil/catalog_text.h"
#include "motifutil/mnemonics.h"
#include "motifutil/script_fonts.h"
#include "motifutil/shells.h"
#include "motifutil/table_keys.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"

namespace {

// Room for paths of a usual length, whatever the lists hold at first.
constexpr short kTextColumns = 48;
constexpr int kVisibleItems = 10;

void closed(Widget /*shell*/, XtPointer box, XtPointer /*callData*/) {
    XtCallCallbacks(static_cast<Widget>(box), XmNcancelCallback, nullptr);
}

void showWithTabs(Widget /*list*/, XtPointer box, XtPointer callData) {
    const std::string path = plainText(static_cast<XmListCallbackStruct*>(callData)->item);
    if (path.find('\t') != std::string::npos) {
        showPath(XtNameToWidget(static_cast<Widget>(box), "Text"), path);
    }
}

}  // namespace

Widget createFileDialog(Widget parent, const char* name, const std::string& title, const ArgumentList& further) {
    const XmStringPtr selection = compoundString(catalogText(Message::kFileSelection));
    const XmStringPtr files = compoundString(catalogText(Message::kFileList));
    const XmStringPtr directories = compoundString(catalogText(Message::kDirectoryList));
    const XmStringPtr ok = compoundString(catalogText(Message::kOk));
    const XmStringPtr cancel = compoundString(catalogText(Message::kCancel));
    const XmStringPtr filter = compoundString(catalogText(Message::kFilter));
    const XmStringPtr directory = compoundString(catalogText(Message::kDirectoryField));
    const XmStringPtr nothing = compoundString(catalogText(Message::kNoFiles));
    ArgumentList arguments;
    // Names without their directory, which has a field of its own then.
    arguments.set(XmNpathMode, XmPATH_MODE_RELATIVE)
        .set(XmNlistVisibleItemCount, kVisibleItems)
        .set(XmNtextColumns, kTextColumns)
        .set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL)
        .set(XmNtitle, title.c_str())
        .set(XmNselectionLabelString, selection.get())
        .set(XmNfileListLabelString, files.get())
        .set(XmNdirListLabelString, directories.get())
        .set(XmNokLabelString, ok.get())
        .set(XmNcancelLabelString, cancel.get())
        .set(XmNfilterLabelString, filter.get())
        .set(XmNapplyLabelString, filter.get())
        .set(XmNdirTextLabelString, directory.get())
        .set(XmNnoMatchString, nothing.get())
        .add(further);
    Widget box = XmCreateFileSelectionDialog(parent, const_cast<char*>(name), arguments.data(), arguments.size());
    if (box == nullptr) {
        throw std::bad_alloc();
    }
    XtUnmanageChild(XtNameToWidget(box, "Help"));
    finishFileSelection(box);
    prepareShell(XtParent(box), closed, box);
    serveKeys(XtParent(box));
    setHelpTopic(box, "choose");
    return box;
}

void finishFileSelection(Widget box) {
    const auto child = [box](unsigned char which) { return XmFileSelectionBoxGetChild(box, which); };
    const struct {
        unsigned char label, field;
        std::string letter;
    } fields[] = {{XmDIALOG_FILTER_LABEL, XmDIALOG_FILTER_TEXT, catalogText(Message::kFilterFieldLetter)},
                  {XmDIALOG_DIR_LIST_LABEL, XmDIALOG_DIR_LIST, mnemonicFor(Message::kDirectoryList)},
                  {XmDIALOG_LIST_LABEL, XmDIALOG_LIST, mnemonicFor(Message::kFileList)},
                  {XmDIALOG_SELECTION_LABEL, XmDIALOG_TEXT, mnemonicFor(Message::kFileSelection)}};
    for (const auto& [label, field, letter] : fields) {
        giveFonts(child(label));
        leadTo(child(label), child(field), letter);
        if (XmIsList(child(field))) {
            addTableKeys(child(field));
        } else {
            hideIdleCursor(child(field));
        }
    }
    // There where names stand without their directories.
    if (Widget directory = XtNameToWidget(box, "DirText")) {
        leadTo(XtNameToWidget(box, "DirL"), directory);
    }
    giveFonts(child(XmDIALOG_LIST));
    giveFonts(child(XmDIALOG_APPLY_BUTTON));
    setMnemonic(child(XmDIALOG_APPLY_BUTTON), mnemonicFor(Message::kFilter));
    setMnemonic(child(XmDIALOG_OK_BUTTON), mnemonicFor(Message::kOk));
    setMnemonic(child(XmDIALOG_CANCEL_BUTTON), mnemonicFor(Message::kCancel));
    Widget files = child(XmDIALOG_LIST);
    for (const char* callback : {XmNsingleSelectionCallback, XmNbrowseSelectionCallback, XmNdefaultActionCallback}) {
        XtAddCallback(files, callback, showWithTabs, box);
    }
}
