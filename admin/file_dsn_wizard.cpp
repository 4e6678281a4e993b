#include "admin/file_dsn_wizard.h"

#include <Xm/Frame.h>
#include <Xm/Text.h>
#include <Xm/TextF.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "admin/advanced_dialog.h"
#include "admin/dialogs.h"
#include "admin/driver_chooser.h"
#include "admin/file_name_dialog.h"
#include "admin/file_name_screen.h"
#include "admin/forms.h"
#include "admin/globals.h"
#include "admin/wizard_finish.h"
#include "motifutil/font_size.h"
#include "motifutil/mnemonics.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"

Widget BtnFinish = nullptr;
Widget BtnNavigate = nullptr;
Widget BtnDPCancel = nullptr;
Widget FormScr3 = nullptr;
Widget TxtDSNInfo = nullptr;
short CurScreenAt = 1;

namespace {

constexpr short kSummaryRows = 10;
constexpr short kSummaryColumns = 10;

void createSummaryScreen(Widget parent) {
    FormScr3 = createForm(parent, "frmScr3");
    Widget heading = createHeading(FormScr3, "lblScr3Desc", Message::kSummaryHeading);
    Attach(heading).topForm(kPageMargin).leftForm(kPageMargin);
    TxtDSNInfo = createScrolledText(FormScr3, "txtDSNInfo", kSummaryRows, kSummaryColumns);
    XtVaSetValues(TxtDSNInfo, XmNeditable, False, nullptr);
    leadTo(heading, TxtDSNInfo, mnemonicFor(Message::kSummaryHeading));
    Attach(XtParent(TxtDSNInfo))
        .below(heading, kPageGap)
        .leftForm(kPageMargin)
        .rightForm(kPageMargin)
        .bottomForm(kPageMargin);
}

void createButtons(Widget form) {
    BtnDPCancel = createPushButton(form, "BtnDPCancel", Message::kCancel, CloseDriverPopup);
    BtnFinish = createPushButton(form, "BtnFinish", Message::kNext, Wizard_Next);
    BtnNavigate = createPushButton(form, "BtnNavigate", Message::kBack, Wizard_Back);
    equalizeWidths({BtnNavigate, BtnFinish, BtnDPCancel});
    Attach(BtnDPCancel).rightForm(kPageMargin).bottomForm(kPageMargin);
    Attach(BtnFinish).leftOf(BtnDPCancel, kPageGap).bottomForm(kPageMargin);
    Attach(BtnNavigate).leftOf(BtnFinish, kPageGap).bottomForm(kPageMargin);
    XtVaSetValues(form, XmNdefaultButton, BtnFinish, XmNcancelButton, BtnDPCancel, nullptr);
}

void labelFinish(Message::Number text) {
    setLabel(BtnFinish, catalogText(text));
    setMnemonic(BtnFinish, mnemonicFor(text));
}

// What the drivers and the headings of the other screens ask for.
int widthForScreens() {
    int width = widthForDrivers();
    for (Widget heading : {XtNameToWidget(FormScr2, "lbl"), XtNameToWidget(FormScr3, "lblScr3Desc")}) {
        width = std::max(width, preferredWidth(heading) + 2 * kPageMargin);
    }
    return width;
}

// Large letters, or long texts, need more than what the screen is shown with.
void showScreen(Widget screen) {
    // In percent of the monitor.
    constexpr int kWidest = 90;
    constexpr int kHighest = 60;
    show_Form(screen);
    int width = 0;
    int height = 0;
    XtVaGetValues(screen, XmNrightOffset, &width, XmNbottomOffset, &height, nullptr);
    const Screen* monitor = XtScreen(screen);
    const int wantedWidth = std::min(widthForScreens(), monitor->width * kWidest / 100);
    const int wantedHeight = std::min(scaled(screen, -height), monitor->height * kHighest / 100);
    XtVaSetValues(screen, XmNrightOffset, -std::max(-width, wantedWidth), XmNbottomOffset,
                  -std::max(-height, wantedHeight), nullptr);
}

void changeScreen(Widget from, Widget to, short number, Widget focus) {
    hide_Form(from);
    showScreen(to);
    CurScreenAt = number;
    XmProcessTraversal(focus, XmTRAVERSE_CURRENT);
}

// Takes over what was typed in the advanced dialog, and returns what the summary tells of it.
std::string takeAttributes() {
    replaceText(DsnInfoText, fieldText(TxtFDAdv).c_str());
    DsnInfo = DsnInfoText;
    if (strcasestr(DsnInfo, "Driver") != nullptr) {
        const char* firstEnd = std::strchr(DsnInfo, '\n');
        if (firstEnd == nullptr) {
            return {};
        }
        DsnInfo = firstEnd + 1;
        IsEntriesmodified = true;
    }
    // A text that names no driver is shown and not used: without the line that the dialog begins with it is not known
    // to be meant for this driver.
    return catalogText(Message::kSummaryAttributes) + DsnInfo;
}

void showSummary() {
    const std::string name = fieldText(Text7);
    if (name.empty()) {
        XmProcessTraversal(Text7, XmTRAVERSE_CURRENT);
        showError(Message::kFileNameMissing, Message::kOk, Message::kFileNameMissingTitle);
        return;
    }
    if (name.find(';') != std::string::npos) {
        // It would end the path in the connection string.
        XmProcessTraversal(Text7, XmTRAVERSE_CURRENT);
        showError(Message::kFileNameHasSemicolon);
        return;
    }
    replaceText(FileDSNName, name.c_str());
    std::string summary = catalogText(Message::kSummaryFileName) + FileDSNName + "\n" +
                          catalogText(Message::kSummaryDriver) + (CurrentDriver != nullptr ? CurrentDriver : "");
    if (IsAdvOptSet && TxtFDAdv != nullptr) {
        summary += takeAttributes();
    }
    XmTextSetString(TxtDSNInfo, summary.data());
    labelFinish(Message::kFinish);
    changeScreen(FormScr2, FormScr3, 3, BtnFinish);
}

}  // namespace

void create_FileDsnWizard() {
    guarded([] {
        DlgDriverPopup = createTemplateDialog(ShODBCAdmin, "DlgDriverPopup", Message::kChooserTitle, CloseDriverPopup);
        Widget form = createForm(DlgDriverPopup, "FileDsnMainWiz");
        createButtons(form);
        Widget separator = createSeparator(form, "Separator5");
        Attach(separator).leftForm().rightForm().above(BtnDPCancel, kPageMargin);

        Widget frame = XtVaCreateManagedWidget("FramWizMain", xmFrameWidgetClass, form, nullptr);
        Attach(frame).topForm().leftForm().rightForm().above(separator, 0);
        Widget screens = createForm(frame, "FormWizMain");
        createDriverScreen(screens, DPDriver_doubleClick);
        createFileNameScreen(screens, BrowseFileDSN);
        createSummaryScreen(screens);
        hide_Form(FormScr2);
        hide_Form(FormScr3);
        serveKeys(XtParent(DlgDriverPopup));
    });
}

void AddUserDsn_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    addDsn(kUserDataSource);
}

void AddFDsn_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    addDsn(kFileDataSource);
}

void addDsn(short kind) {
    CurScreenAt = 1;
    showScreen(FormScr1);
    hide_Form(FormScr2);
    hide_Form(FormScr3);
    DsnType = kind;
    const bool isFile = kind == kFileDataSource;
    setHelpTopic(DlgDriverPopup, isFile ? "wizard" : "chooser");
    offerAdvancedAttributes(isFile);
    if (isFile) {
        XtManageChild(BtnNavigate);
    } else {
        XtUnmanageChild(BtnNavigate);
    }
    labelFinish(isFile ? Message::kNext : Message::kFinish);
    XtSetSensitive(BtnNavigate, False);
    showPath(Text7, {});
    IsEntriesmodified = false;
    IsVerificationNeeded = true;
    IsAdvOptSet = false;
    XtManageChild(DlgDriverPopup);
    XmProcessTraversal(LstDPName, XmTRAVERSE_CURRENT);
}

void Wizard_Next(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([] {
        if (DsnType == kFileDataSource && CurScreenAt == 1) {
            XtSetSensitive(BtnNavigate, True);
            changeScreen(FormScr1, FormScr2, 2, Text7);
        } else if (DsnType == kFileDataSource && CurScreenAt == 2) {
            showSummary();
        } else if (DsnType == kFileDataSource && IsEntriesmodified) {
            finishWithAttributes();
        } else {
            finish(nullptr, nullptr);
        }
    });
}

void Wizard_Back(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (CurScreenAt == 2) {
        changeScreen(FormScr2, FormScr1, 1, LstDPName);
        XtSetSensitive(BtnNavigate, False);
    } else if (CurScreenAt == 3) {
        labelFinish(Message::kNext);
        changeScreen(FormScr3, FormScr2, 2, Text7);
    }
}

void DPDriver_doubleClick(Widget list, XtPointer clientData, XtPointer callData) {
    if (DsnType == kFileDataSource) {
        Wizard_Next(list, clientData, callData);
    } else {
        finish(nullptr, nullptr);
    }
}

void BrowseFileDSN(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    showFileDialogBox(kBrowseForName);
}
