#include "admin/look.h"

#include <Xm/Xm.h>

namespace {

// All begin with "*": the display is opened without an application class. Selected rows are light, because Xft text in
// a list keeps its ink when it is selected.
const char* const kFallbackResources[] = {
    "*uif.fontType: FONT_IS_XFT",
    "*uif.fontName: DejaVu Sans",
    "*uif.fontSize: 10",
    "*background: #eceff1",
    "*foreground: #1f2a33",
    "*shadowThickness: 1",
    "*XmForm.shadowThickness: 0",
    "*highlightThickness: 1",
    "*highlightColor: #2f6db5",
    "*highlightBackground: #eceff1",

    // Every button is reached by Tab, not only by the arrow keys.
    "*XmPushButton.navigationType: TAB_GROUP",
    "*XmPushButtonGadget.navigationType: TAB_GROUP",
    "*XmToggleButton.navigationType: TAB_GROUP",
    "*XmPushButton.marginWidth: 10",
    "*XmPushButton.marginHeight: 5",
    "*XmPushButton.defaultButtonShadowThickness: 0",
    "*XmLabel.alignment: ALIGNMENT_BEGINNING",
    "*XmTextField.background: #ffffff",
    "*XmText.background: #ffffff",
    "*XmTextField.marginHeight: 4",
    "*XmToggleButton.shadowThickness: 0",
    "*XmToggleButton.selectColor: #2f6db5",
    // The tab in front, under its words.
    "*TabsSettings*selectColor: #cfe2f6",
    "*XmToggleButton.indicatorSize: 14",

    "*XmList.background: #ffffff",
    "*XmList.selectColor: #cfe2f6",
    "*XmList.listMarginWidth: 6",
    "*XmList.listMarginHeight: 4",
    "*XmList.listSpacing: 3",
    "*FormLists*shadowThickness: 0",
    "*FrmTable*shadowThickness: 0",
    "*frmLists*shadowThickness: 0",
    "*FormAboutLists*shadowThickness: 0",
    "*FormLists.background: #ffffff",
    "*FrmTable.background: #ffffff",
    "*frmLists.background: #ffffff",
    "*FormAboutLists.background: #ffffff",
    "*ClipWindow.background: #ffffff",
    "*XmScrolledWindow.spacing: 0",
    "*XmScrollBar.width: 14",
    "*XmScrollBar.troughColor: #dde3e7",

    "*FormLabels.XmLabel.marginWidth: 6",
    "*FormLabels*background: #e1e7eb",
    "*frmLabel.XmLabel.marginWidth: 6",
    "*frmLabel*background: #e1e7eb",
    "*FormAboutLabels.XmLabel.marginWidth: 6",
    "*FormAboutLabels*background: #e1e7eb",
    "*ScrWinLabels.topShadowColor: #c3ccd3",
    "*ScrWinLabels.bottomShadowColor: #c3ccd3",
    "*ScrWinLabels.background: #e1e7eb",
    "*scrolledWin1.topShadowColor: #c3ccd3",
    "*scrolledWin1.bottomShadowColor: #c3ccd3",
    "*scrolledWin1.background: #e1e7eb",
    "*scrWinDPLabel.topShadowColor: #c3ccd3",
    "*scrWinDPLabel.bottomShadowColor: #c3ccd3",
    "*scrWinDPLabel.background: #e1e7eb",
    "*ScrAboutLabels.topShadowColor: #c3ccd3",
    "*ScrAboutLabels.bottomShadowColor: #c3ccd3",
    "*ScrAboutLabels.background: #e1e7eb",

    "*TxtODBCDesc.background: #eceff1",
    "*TxtFDDesc.background: #eceff1",
    "*TxtDriversDesc.background: #eceff1",
    "*TxtTraceDesc.background: #eceff1",
    "*TxtAboutDesc.background: #eceff1",
    "*TxtODBCDesc.shadowThickness: 0",
    "*TxtFDDesc.shadowThickness: 0",
    "*TxtDriversDesc.shadowThickness: 0",
    "*TxtTraceDesc.shadowThickness: 0",
    "*TxtAboutDesc.shadowThickness: 0",

    "*FSelect.listVisibleItemCount: 6",

    "*TabManager.frameShadowThickness: 1",
    "*TabManager.backPageBackground: #eceff1",
    "*TabManager.backPageForeground: #b0bac2",
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
