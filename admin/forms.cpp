#include "admin/forms.h"

#include <Xm/Form.h>

void show_Form(Widget form) {
    XtVaSetValues(form, XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, 0, XmNleftAttachment, XmATTACH_FORM,
                  XmNleftOffset, 0, XmNbottomAttachment, XmATTACH_OPPOSITE_FORM, XmNbottomOffset, -300,
                  XmNrightAttachment, XmATTACH_OPPOSITE_FORM, XmNrightOffset, -440, nullptr);
}

void hide_Form(Widget form) {
    XtVaSetValues(form, XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, -5, XmNleftAttachment, XmATTACH_FORM,
                  XmNleftOffset, -5, XmNbottomAttachment, XmATTACH_OPPOSITE_FORM, XmNbottomOffset, 0,
                  XmNrightAttachment, XmATTACH_OPPOSITE_FORM, XmNrightOffset, 0, nullptr);
}
