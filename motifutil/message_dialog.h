// The one factory of message boxes, and the two ready-made error boxes of setup dialogs. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <new>

// Kinds of message box.
inline constexpr unsigned long kQuestionDialog = 0;
inline constexpr unsigned long kInformationDialog = 1;
inline constexpr unsigned long kErrorDialog = 2;

// The message box that exists now, shown or not; null when there is none. There is never more than one: a new one
// replaces the old one even if that is still on screen.
extern Widget dialog;
// The administrator's name for the box that it showed last, which `dialog` may by then have replaced. Both are cleared
// when the box they name is destroyed.
extern Widget Mdialog;

// Makes a message box, unmanaged: the caller adds its callbacks and manages it. `type` is one of the kinds above: a
// question has OK and Cancel, the others have OK alone. The message stands as it is given, but for lines that would not
// fit on the screen. Texts are in the encoding of the locale, not changed, and copied. With an unknown type the
// out-of-memory box is shown over `parent` and the result is null.
Widget createMessageDialog(Widget parent, unsigned long type, char* message, char* okLabel, char* cancelLabel,
                           char* title);

// Makes No what Return, and the keyboard at first, is at in a question whose Yes removes something.
void answerNoByReturn(Widget question);

// Shows the box that says that settings may not be written (`flag` non-zero) or read (zero).
void showPermissionError(Widget parent, int flag);

// Shows the out-of-memory box, whose OK button abandons the configuration dialog `parent`.
void showOutOfMemoryError(Widget parent);

// Does the work of a callback of the dialog `configuration`. No exception may cross a callback, so a failed allocation
// ends here, in the out-of-memory box.
template <typename Work>
void reportingLackOfMemory(Widget configuration, Work work) {
    try {
        work();
    } catch (const std::bad_alloc&) {
        showOutOfMemoryError(configuration);
    }
}

// The two ways to abandon a configuration dialog for lack of memory: hide it, record 7312 on the error list, end the
// nested loop. The callback finds the dialog in `clientData`.
void outOfMemoryError(Widget widget);
extern "C" __attribute__((visibility("default"))) void exitDriverConfig(Widget widget, XtPointer clientData,
                                                                        XtPointer callData);
