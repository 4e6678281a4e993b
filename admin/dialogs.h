// The administrator's dialogs: one factory, and the reports that every page uses. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <new>
#include <string>
#include <string_view>

#include "catalogs/message_numbers.h"
#include "installer/configuration_change.h"

// A message box on the main window, unmanaged; kinds as in motifutil/message_dialog.h. `cancelLabel` is "" for a box
// with one button. Callers store it in `Mdialog`.
Widget createMessageDialogAdmin(short kind, char* message, char* okLabel, char* cancelLabel, char* title);

// Shows a box with one button, titled as the program, and keeps it in `Mdialog`.
void showInformation(Message::Number text);
void showInformation(const std::string& text);
void showError(Message::Number text);
// The same with another label of the button, or another title.
void showError(Message::Number text, Message::Number okLabel, Message::Number title);
// The same with what the report is about, in the place of "%1" in the text.
void showError(Message::Number text, std::string_view subject);
// The same with what else there is to say, in a paragraph of its own.
void showErrorAndMore(Message::Number text, const std::string& more);
// The same with the reason why a configuration file was not changed.
void showError(Message::Number text, const installer::ChangeFailure& failure);

// The boxes that carry on what was begun, kept in `Mdialog`. Their callbacks get a copy of `subject` (a char*,
// terminated; null when it is empty), which belongs to the box and goes with it, answered or replaced.
//
// A question, titled as the program; `accepted` is called when the person agrees, `declined`, when not null, otherwise.
// Return answers it with `usual`, which is to be No where Yes removes something.
enum class Answer { kYes, kNo };
void askQuestion(std::string question, const std::string& subject, XtCallbackProc accepted,
                 XtCallbackProc declined = nullptr, Answer usual = Answer::kYes);
// Information with the one button OK, which calls `acknowledged`.
void showResult(std::string text, Message::Number title, const std::string& subject, XtCallbackProc acknowledged);

// Shows the report that waited until the main window was there. There is one box at a time: of several reports it is
// the one that ends the program, if there is one, and otherwise the last.
void showWaitingReport();

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
// file it is what the program is there to edit: going on with half of it read could lose the other half.
void showODBCINIError();
