// The administrator's dialogs: one factory, and the reports that every page uses. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <new>
#include <string>

#include "catalogs/message_numbers.h"

// A message box on the main window, unmanaged; kinds as in motifutil/message_dialog.h. `cancelLabel` is "" for a box with
// one button. Callers store it in `Mdialog`.
Widget createMessageDialogAdmin(short kind, const char* message, const char* okLabel, const char* cancelLabel,
                                const char* title);

// Shows a box with one button, titled as the program, and keeps it in `Mdialog`.
void showInformation(Message::Number text);
void showError(Message::Number text);
// The same with another label of the button, or another title.
void showError(Message::Number text, Message::Number okLabel, Message::Number title);

// Shows a box with this text and title and the one button OK, and keeps it in `Mdialog`. `acknowledged` and `discarded` as in
// askQuestion().
void showResult(const std::string& text, Message::Number title, XtCallbackProc acknowledged, XtPointer clientData,
                XtCallbackProc discarded);

// Shows the report that was raised last while the main window was being built; it waited for the window to be there.
void showWaitingReport();

// Shows a question, titled as the program, and keeps it in `Mdialog`. `accepted` is called with `clientData` when the
// person agrees; `discarded`, when not null, is called with it once the question is gone, answered or replaced, so that it
// can free `clientData`; `declined`, when not null, is called without it when the person does not agree.
void askQuestion(const std::string& question, XtCallbackProc accepted, XtPointer clientData,
                 XtCallbackProc discarded = nullptr, XtCallbackProc declined = nullptr);

// Frees the globals and shows the out-of-memory box; the caller returns at once.
void showOutOfMemoryErrorAdmin();

// Does a callback's work. No exception may cross a callback, so a failed allocation ends here, in that report.
template <typename Work>
void guarded(Work work) {
    try {
        work();
    } catch (const std::bad_alloc&) {
        showOutOfMemoryErrorAdmin();
    }
}

// Reports that the driver file could not be read. The program goes on.
void showODBCINSTError();

// Reports that the data source file could not be read; the program ends when the person has seen it. Unlike the driver
// file it is what the program is there to edit: going on with half of it read could lose the other half. Of several reports
// that are raised while the window is being built the last one alone is seen, so there this one can be missed.
void showODBCINIError();

// The buttons of the main window that end the program or keep its settings.
void btnOK_activate(Widget widget, XtPointer clientData, XtPointer callData);
void btnCancel_activate(Widget widget, XtPointer clientData, XtPointer callData);
void btnApply_activate(Widget widget, XtPointer clientData, XtPointer callData);
