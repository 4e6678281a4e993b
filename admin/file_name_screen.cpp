#include "admin/file_name_screen.h"

#include "motifutil/mnemonics.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"

Widget FormScr2 = nullptr;
Widget Text7 = nullptr;

void createFileNameScreen(Widget parent, XtCallbackProc browse) {
    FormScr2 = createForm(parent, "frmScr2");
    Widget heading = createHeading(FormScr2, "lbl", Message::kFileNameHeading);
    Attach(heading).topForm(kPageMargin).leftForm(kPageMargin);
    Widget button = createPushButton(FormScr2, "BtnBrowse", Message::kBrowse, browse);
    Attach(button).below(heading, kPageGap).rightForm(kPageMargin);
    Text7 = createTextField(FormScr2, "Text7");
    leadTo(heading, Text7, mnemonicFor(Message::kFileNameHeading));
    Attach(Text7).below(heading, kPageGap).leftForm(kPageMargin).leftOf(button, kPageGap);
}
