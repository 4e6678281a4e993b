#include "admin/advanced_dialog.h"

#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <string>

#include "admin/dialogs.h"
#include "admin/globals.h"
#include "motifutil/mnemonics.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"

Widget AdvFDDialog = nullptr;
Widget TxtFDAdv = nullptr;

namespace {

constexpr short kRows = 9;
// Of the widest letter; of an ordinary text some two and a half times as many.
constexpr short kColumns = 18;

void forgetDestroyed(Widget widget, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (AdvFDDialog == widget) {
        AdvFDDialog = nullptr;
        TxtFDAdv = nullptr;
    }
}

void createAdvancedDialog() {
    AdvFDDialog = createTemplateDialog(ShODBCAdmin, "AdvFDDialog", Message::kAdvancedTitle, advFDDialogCancel_Clicked);
    XtAddCallback(AdvFDDialog, XmNdestroyCallback, forgetDestroyed, nullptr);

    Widget form = createForm(AdvFDDialog, "frmFDAdv");
    Widget heading = createHeading(form, "lblAdvFDDesc", Message::kAdvancedHeading);
    Attach(heading).topForm(kPageMargin).leftForm(kPageMargin);

    Widget cancel = createPushButton(form, "BtnAdvFDCancel", Message::kCancel, advFDDialogCancel_Clicked);
    Widget ok = createPushButton(form, "BtnAdvFDOK", Message::kOk, advFDDialogOK_Clicked);
    equalizeWidths({ok, cancel});
    Attach(cancel).rightForm(kPageMargin).bottomForm(kPageMargin);
    Attach(ok).leftOf(cancel, kPageGap).bottomForm(kPageMargin);

    Widget verify = createToggleButton(form, "TglVerifyConnection", Message::kVerifyConnection);
    XmToggleButtonSetState(verify, static_cast<Boolean>(IsVerificationNeeded), False);
    XtAddCallback(verify, XmNvalueChangedCallback, VerifyConnection_StateChanged, nullptr);
    Attach(verify).leftForm(kPageMargin).above(cancel, kPageMargin);

    TxtFDAdv = createScrolledText(form, "TxtFDAdv", kRows, kColumns);
    Attach(XtParent(TxtFDAdv))
        .below(heading, kPageGap)
        .leftForm(kPageMargin)
        .rightForm(kPageMargin)
        .above(verify, kPageGap);
    leadTo(heading, TxtFDAdv, mnemonicFor(Message::kAdvancedHeading));
    serveKeys(XtParent(AdvFDDialog));
    setHelpTopic(AdvFDDialog, "advanced");
    XtVaSetValues(form, XmNdefaultButton, ok, XmNcancelButton, cancel, XmNinitialFocus, XtParent(TxtFDAdv), nullptr);
}

}  // namespace

void Show_AdvancedOptionDialog(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([] {
        if (AdvFDDialog != nullptr) {
            XtDestroyWidget(XtParent(AdvFDDialog));
            // Its text goes with it, so there is none to use should the new dialog fail.
            AdvFDDialog = nullptr;
            TxtFDAdv = nullptr;
        }
        createAdvancedDialog();
        std::string text = "Driver={" + std::string(CurrentDriver != nullptr ? CurrentDriver : "") + "}";
        XmTextSetString(TxtFDAdv, text.data());
        XmTextSetInsertionPosition(TxtFDAdv, XmTextGetLastPosition(TxtFDAdv));
        XtManageChild(AdvFDDialog);
        XmProcessTraversal(TxtFDAdv, XmTRAVERSE_CURRENT);
    });
}

void advFDDialogOK_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    IsAdvOptSet = true;
    XtUnmanageChild(AdvFDDialog);
}

void advFDDialogCancel_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    IsAdvOptSet = false;
    XtUnmanageChild(AdvFDDialog);
}

void VerifyConnection_StateChanged(Widget toggle, XtPointer /*clientData*/, XtPointer /*callData*/) {
    IsVerificationNeeded = XmToggleButtonGetState(toggle) != 0;
}
