// A window with a notebook of five empty pages: what any Motif program of this kind has to do before it does anything
// else.
#include <Xm/Form.h>
#include <Xm/Notebook.h>
#include <Xm/PushB.h>

int main(int argc, char** argv) {
    XtAppContext context = nullptr;
    Widget shell = XtVaAppInitialize(&context, "BareNotebook", nullptr, 0, &argc, argv, nullptr, XmNtitle,
                                     "Varnholt ODBC Administrator", nullptr);
    Widget notebook = XmCreateNotebook(shell, const_cast<char*>("notebook"), nullptr, 0);
    for (int page = 1; page <= 5; ++page) {
        XtVaCreateManagedWidget("page", xmFormWidgetClass, notebook, XmNnotebookChildType, XmPAGE, XmNpageNumber, page,
                                XmNwidth, 560, XmNheight, 400, nullptr);
        XtVaCreateManagedWidget("tab", xmPushButtonWidgetClass, notebook, XmNnotebookChildType, XmMAJOR_TAB,
                                XmNpageNumber, page, nullptr);
    }
    XtManageChild(notebook);
    XtRealizeWidget(shell);
    XtAppMainLoop(context);
}
