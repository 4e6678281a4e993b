#include "admin/look.h"

#include <Xm/Xm.h>

namespace {

// All begin with "*": the display is opened without an application class. The colours are the palette's.
const char* const kFallbackResources[] = {
    "*uif.fontType: FONT_IS_XFT",
    "*uif.fontName: Sans",
    "*uif.fontSize: 10",
    "*shadowThickness: 1",
    "*XmForm.shadowThickness: 0",
    "*highlightThickness: 1",

    // Every button is reached by Tab, not only by the arrow keys.
    "*XmPushButton.navigationType: TAB_GROUP",
    "*XmPushButtonGadget.navigationType: TAB_GROUP",
    "*XmToggleButton.navigationType: TAB_GROUP",
    "*XmPushButton.marginWidth: 10",
    "*XmPushButton.marginHeight: 5",
    "*XmPushButton.defaultButtonShadowThickness: 0",
    "*XmLabel.alignment: ALIGNMENT_BEGINNING",
    "*XmTextField.marginHeight: 4",
    "*XmToggleButton.shadowThickness: 0",

    "*XmList.listMarginWidth: 6",
    "*XmList.listMarginHeight: 4",
    "*XmList.listSpacing: 3",
    "*FormLists*shadowThickness: 0",
    "*FrmTable*shadowThickness: 0",
    "*frmLists*shadowThickness: 0",
    "*FormAboutLists*shadowThickness: 0",
    "*XmScrolledWindow.spacing: 0",
    // None has to scroll while something is dragged over its edge, and listening for that waits for the server often.
    "*XmScrolledWindow.autoDragModel: AUTO_DRAG_DISABLED",
    "*XmScrollBar.width: 14",

    "*FormLabels.XmLabel.marginWidth: 6",
    "*frmLabel.XmLabel.marginWidth: 6",
    "*FormAboutLabels.XmLabel.marginWidth: 6",

    "*TxtODBCDesc.shadowThickness: 0",
    "*TxtFDDesc.shadowThickness: 0",
    "*TxtDriversDesc.shadowThickness: 0",
    "*TxtTraceDesc.shadowThickness: 0",
    "*TxtAboutDesc.shadowThickness: 0",

    "*FSelect.XmLabelGadget.marginWidth: 0",
    "*FSelect.XmLabelGadget.shadowThickness: 0",
    "*FSelect.XmLabelGadget.highlightThickness: 0",
    "*FSelect.XmPushButtonGadget.marginWidth: 10",
    "*FSelect.XmPushButtonGadget.marginHeight: 3",
    "*FSelect.XmPushButtonGadget.defaultButtonShadowThickness: 0",

    "*TabManager.frameShadowThickness: 1",
    "*FramWizMain.shadowThickness: 0",
    "*XmMessageBox.marginWidth: 16",
    "*XmMessageBox.marginHeight: 14",
    "*XmMessageBox*XmPushButtonGadget.marginWidth: 18",
    "*XmMessageBox*XmPushButtonGadget.marginHeight: 5",
    "*XmMessageBox*XmPushButtonGadget.defaultButtonShadowThickness: 0",
    nullptr,
};

}  // namespace

void setFallbackLook(XtAppContext context) {
    XtAppSetFallbackResources(context, const_cast<char**>(kFallbackResources));
}

void setFont(Widget shell) {
    // Kept for good: a display that is closed after the last user of the font has gone ends in libXft 2.3.6 (SIGSEGV).
    static XmRenderTable font = nullptr;
    if (font == nullptr) {
        static char name[] = "uif";
        XmRenderTable converted = nullptr;
        XrmValue from{sizeof name, name};
        XrmValue to{sizeof converted, reinterpret_cast<XPointer>(&converted)};
        if (XtConvertAndStore(shell, XmRString, &from, XmRRenderTable, &to) == 0) {
            return;
        }
        font = XmRenderTableCopy(converted, nullptr, 0);
    }
    XtVaSetValues(shell, XmNbuttonRenderTable, font, XmNlabelRenderTable, font, XmNtextRenderTable, font, nullptr);
}
