// A window with a notebook of five pages: what any Motif program of this kind has to do before it does anything else.
// With the argument "dressed" its letters are smooth, and its pages hold a text field, five lists and a file selection
// box: what the toolkit takes for what the administrator's window has.
#include <Xm/FileSB.h>
#include <Xm/Form.h>
#include <Xm/List.h>
#include <Xm/Notebook.h>
#include <Xm/PushB.h>
#include <Xm/TextF.h>

#include <array>
#include <clocale>
#include <cstring>
#include <string>

namespace {

constexpr int kPages = 5;

char* const kLook[] = {const_cast<char*>("*renderTable: smooth"), const_cast<char*>("*smooth.fontType: FONT_IS_XFT"),
                       const_cast<char*>("*smooth.fontName: Sans"), const_cast<char*>("*smooth.fontSize: 10"), nullptr};

void addList(Widget page) {
    Widget list = XtVaCreateManagedWidget("list", xmListWidgetClass, page, nullptr);
    std::array<XmString, 10> rows{};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i] = XmStringCreateLocalized(std::string("row " + std::to_string(i)).data());
    }
    XtVaSetValues(list, XmNitemCount, static_cast<int>(rows.size()), XmNitems, rows.data(), XmNvisibleItemCount,
                  static_cast<int>(rows.size()), nullptr);
    for (XmString row : rows) {
        XmStringFree(row);
    }
}

void dress(Widget page, int number) {
    addList(page);
    if (number == 2) {
        XtManageChild(XmCreateFileSelectionBox(page, const_cast<char*>("files"), nullptr, 0));
    } else if (number == 3) {
        XtVaCreateManagedWidget("field", xmTextFieldWidgetClass, page, nullptr);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bool isDressed = argc > 1 && std::strcmp(argv[1], "dressed") == 0;
    // As the administrator does, before an input method is looked for.
    std::setlocale(LC_ALL, "");
    XtAppContext context = nullptr;
    Widget shell = XtVaAppInitialize(&context, "BareNotebook", nullptr, 0, &argc, argv,
                                     isDressed ? const_cast<String*>(kLook) : nullptr, XmNtitle,
                                     "Varnholt ODBC Administrator", nullptr);
    Widget notebook = XmCreateNotebook(shell, const_cast<char*>("notebook"), nullptr, 0);
    for (int number = 1; number <= kPages; ++number) {
        Widget page = XtVaCreateManagedWidget("page", xmFormWidgetClass, notebook, XmNnotebookChildType, XmPAGE,
                                              XmNpageNumber, number, XmNwidth, 560, XmNheight, 400, nullptr);
        XtVaCreateManagedWidget("tab", xmPushButtonWidgetClass, notebook, XmNnotebookChildType, XmMAJOR_TAB,
                                XmNpageNumber, number, nullptr);
        if (isDressed) {
            dress(page, number);
        }
    }
    XtManageChild(notebook);
    XtRealizeWidget(shell);
    XtAppMainLoop(context);
}
