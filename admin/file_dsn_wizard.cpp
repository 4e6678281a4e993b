#include "admin/file_dsn_wizard.h"

#include <Xm/Frame.h>
#include <Xm/Text.h>
#include <Xm/TextF.h>

#include <cstring>
#include <new>
#include <string>

#include "admin/add_data_source.h"
#include "admin/advanced_dialog.h"
#include "admin/dialogs.h"
#include "admin/driver_chooser.h"
#include "admin/forms.h"
#include "admin/globals.h"
#include "admin/spacing.h"
#include "motifutil/widgets.h"

Widget BtnFinish = nullptr;
Widget BtnNavigate = nullptr;
Widget BtnDPCancel = nullptr;
Widget FormScr2 = nullptr;
Widget Text7 = nullptr;
Widget FormScr3 = nullptr;
Widget TxtDSNInfo = nullptr;
short CurScreenAt = 1;

namespace {

constexpr short kSummaryRows = 10;
constexpr short kSummaryColumns = 10;

void createFileNameScreen(Widget parent) {
    FormScr2 = createForm(parent, "frmScr2");
    Widget heading = createLabel(FormScr2, "lbl", Message::kFileNameHeading);
    Attach(heading).topForm(kMargin).leftForm(kMargin);
    Widget browse = createPushButton(FormScr2, "BtnBrowse", Message::kBrowse, BrowseFileDSN);
    Attach(browse).below(heading, kGap).rightForm(kMargin);
    Text7 = createTextField(FormScr2, "Text7");
    Attach(Text7).below(heading, kGap).leftForm(kMargin).leftOf(browse, kGap);
}

void createSummaryScreen(Widget parent) {
    FormScr3 = createForm(parent, "frmScr3");
    Widget heading = createLabel(FormScr3, "lblScr3Desc", Message::kSummaryHeading);
    Attach(heading).topForm(kMargin).leftForm(kMargin);
    TxtDSNInfo = createScrolledText(FormScr3, "txtDSNInfo", kSummaryRows, kSummaryColumns);
    XtVaSetValues(TxtDSNInfo, XmNeditable, False, nullptr);
    Attach(XtParent(TxtDSNInfo)).below(heading, kGap).leftForm(kMargin).rightForm(kMargin).bottomForm(kMargin);
}

void createButtons(Widget form) {
    BtnDPCancel = createPushButton(form, "BtnDPCancel", Message::kCancel, CloseDriverPopup);
    BtnFinish = createPushButton(form, "BtnFinish", Message::kNext, Wizard_Next);
    BtnNavigate = createPushButton(form, "BtnNavigate", Message::kBack, Wizard_Back);
    equalizeWidths({BtnNavigate, BtnFinish, BtnDPCancel});
    Attach(BtnDPCancel).rightForm(kMargin).bottomForm(kMargin);
    Attach(BtnFinish).leftOf(BtnDPCancel, kGap).bottomForm(kMargin);
    Attach(BtnNavigate).leftOf(BtnFinish, kGap).bottomForm(kMargin);
    XtVaSetValues(form, XmNdefaultButton, BtnFinish, XmNcancelButton, BtnDPCancel, nullptr);
}

void labelFinish(Message::Number text) {
    setLabel(BtnFinish, catalogText(text));
}

void changeScreen(Widget from, Widget to, short number, Widget focus) {
    hide_Form(from);
    show_Form(to);
    CurScreenAt = number;
    XmProcessTraversal(focus, XmTRAVERSE_CURRENT);
}

// Takes over what was typed in the advanced dialog, and returns what the summary tells of it.
std::string takeAttributes() {
    const XtTextPtr typed(XmTextGetString(TxtFDAdv));
    replaceText(DsnInfoText, typed ? typed.get() : "");
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
    const XtTextPtr name(XmTextFieldGetString(Text7));
    if (!name || *name.get() == '\0') {
        XmProcessTraversal(Text7, XmTRAVERSE_CURRENT);
        showError(Message::kFileNameMissing, Message::kOk, Message::kFileNameMissingTitle);
        return;
    }
    replaceText(FileDSNName, name.get());
    std::string summary = catalogText(Message::kSummaryFileName) + FileDSNName + "\n" +
                          catalogText(Message::kDriversTab) + ":" + (CurrentDriver != nullptr ? CurrentDriver : "");
    if (IsAdvOptSet && TxtFDAdv != nullptr) {
        summary += takeAttributes();
    }
    XmTextSetString(TxtDSNInfo, summary.data());
    labelFinish(Message::kFinish);
    changeScreen(FormScr2, FormScr3, 3, BtnFinish);
}

}  // namespace

void create_FileDsnWizard() {
    try {
        DlgDriverPopup = createTemplateDialog(ShODBCAdmin, "DlgDriverPopup", Message::kChooserTitle, CloseDriverPopup);
        Widget form = createForm(DlgDriverPopup, "FileDsnMainWiz");
        createButtons(form);
        Widget separator = createSeparator(form, "Separator5");
        Attach(separator).leftForm().rightForm().above(BtnDPCancel, kMargin);

        Widget frame = XtVaCreateManagedWidget("FramWizMain", xmFrameWidgetClass, form, nullptr);
        Attach(frame).topForm().leftForm().rightForm().above(separator, 0);
        Widget screens = createForm(frame, "FormWizMain");
        createDriverScreen(screens);
        createFileNameScreen(screens);
        createSummaryScreen(screens);
        hide_Form(FormScr2);
        hide_Form(FormScr3);
    } catch (const std::bad_alloc&) {
        showOutOfMemoryErrorAdmin();
    }
}

void addDsn(short kind) {
    CurScreenAt = 1;
    show_Form(FormScr1);
    hide_Form(FormScr2);
    hide_Form(FormScr3);
    DsnType = kind;
    const bool isFile = kind == kFileDataSource;
    offerAdvancedAttributes(isFile);
    if (isFile) {
        XtManageChild(BtnNavigate);
    } else {
        XtUnmanageChild(BtnNavigate);
    }
    labelFinish(isFile ? Message::kNext : Message::kFinish);
    XtSetSensitive(BtnNavigate, False);
    static char nothing[] = "";
    XmTextFieldSetString(Text7, nothing);
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
