#include "admin/file_dsn_page.h"

#include <Xm/FileSB.h>

#include <new>

#include "motifutil/catalog_text.h"
#include "motifutil/widgets.h"

Widget frmFileDSN = nullptr;
Widget TxtFDDesc = nullptr;
Widget FSelect = nullptr;
Widget TxtDirectory = nullptr;
Widget BtnFDAdd = nullptr;
Widget BtnFDRemove = nullptr;
Widget BtnFDConfigure = nullptr;
Widget BtnSetDirectory = nullptr;

namespace {

constexpr int kMargin = 12;
constexpr int kGap = 8;

Widget createFileSelection(Widget parent) {
    const XmStringPtr pattern = compoundString("*.dsn");
    const XmStringPtr filter = compoundString("\nFilter");
    const XmStringPtr selection = compoundString(catalogText(Message::kFileSelection));
    const XmStringPtr files = compoundString(catalogText(Message::kFileList));
    const XmStringPtr directories = compoundString(catalogText(Message::kDirectoryList));
    ArgumentList arguments;
    arguments.set(XmNpattern, pattern.get())
        .set(XmNfilterLabelString, filter.get())
        .set(XmNselectionLabelString, selection.get())
        .set(XmNfileListLabelString, files.get())
        .set(XmNdirListLabelString, directories.get());
    static char name[] = "FSelect";
    Widget box = XmCreateFileSelectionBox(parent, name, arguments.data(), arguments.size());
    if (box == nullptr) {
        throw std::bad_alloc();
    }
    // The page has buttons of its own.
    for (const char* part : {"OK", "Cancel", "Help", "FilterLabel", "Separator"}) {
        if (Widget child = XtNameToWidget(box, part)) {
            XtUnmanageChild(child);
        }
    }
    // Else Return anywhere in the window presses the box's OK, out of sight as it is, and not the window's.
    XtVaSetValues(box, XmNdefaultButton, nullptr, nullptr);
    XtManageChild(box);
    return box;
}

}  // namespace

Widget createFileDsnPage(Widget notebook) {
    frmFileDSN = createPage(notebook, "frmFileDSN");

    TxtFDDesc = createReadOnlyText(frmFileDSN, "TxtFDDesc", Message::kFileDsnExplanation, 2);
    Attach(TxtFDDesc).leftForm(kMargin).rightForm(kMargin).bottomForm(kMargin);
    Widget separator = createSeparator(frmFileDSN, "separator3");
    Attach(separator).leftForm(kMargin).rightForm(kMargin).above(TxtFDDesc, kGap);

    BtnFDAdd = createPushButton(frmFileDSN, "BtnFDAdd", Message::kFileDsnAdd);
    BtnFDRemove = createPushButton(frmFileDSN, "BtnFDRemove", Message::kFileDsnRemove);
    BtnFDConfigure = createPushButton(frmFileDSN, "BtnFDConfigure", Message::kFileDsnConfigure);
    BtnSetDirectory = createPushButton(frmFileDSN, "BtnSetDirectory", Message::kSetDirectory);
    for (Widget button : {BtnFDAdd, BtnFDRemove, BtnFDConfigure, BtnSetDirectory}) {
        // The page only shows files so far.
        XtSetSensitive(button, False);
    }
    equalizeWidths({BtnFDAdd, BtnFDRemove, BtnFDConfigure, BtnSetDirectory});
    Attach(BtnFDAdd).topForm(kMargin).rightForm(kMargin);
    Attach(BtnFDRemove).below(BtnFDAdd, kGap).rightForm(kMargin);
    Attach(BtnFDConfigure).below(BtnFDRemove, kGap).rightForm(kMargin);
    Attach(BtnSetDirectory).below(BtnFDConfigure, kGap).rightForm(kMargin);

    FSelect = createFileSelection(frmFileDSN);
    TxtDirectory = XtNameToWidget(FSelect, "DirText");
    Attach(FSelect).topForm(kGap).leftForm(kGap).leftOf(BtnFDAdd, kMargin).above(separator, kGap);
    return frmFileDSN;
}
