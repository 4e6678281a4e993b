// One-line helpers for building windows: a builder made of them reads as the widget tree. Labels come from the catalog.
// GUI thread only. A widget that can't be made throws std::bad_alloc, which every builder catches and reports.
#pragma once

#include <Xm/Xm.h>

#include <string>
#include <vector>

#include "catalogs/message_numbers.h"
#include "motifutil/compound_string.h"

// A page of a notebook and the tab that brings it to the front, both unmanaged and without a page number: whoever puts
// the pages in order numbers them and manages them together.
Widget createPage(Widget notebook, const char* name);
Widget createTab(Widget notebook, const char* name, Message::Number text);

// All of these make managed widgets.
Widget createForm(Widget parent, const char* name);
Widget createSeparator(Widget parent, const char* name);
Widget createLabel(Widget parent, const char* name, Message::Number text);
Widget createLabel(Widget parent, const char* name, const std::string& text);
// A label above what it tells of, whose text begins where that begins.
Widget createHeading(Widget parent, const char* name, Message::Number text);
Widget createPushButton(Widget parent, const char* name, const std::string& text, XtCallbackProc activated = nullptr,
                        XtPointer clientData = nullptr);
Widget createPushButton(Widget parent, const char* name, Message::Number text, XtCallbackProc activated = nullptr,
                        XtPointer clientData = nullptr);
Widget createToggleButton(Widget parent, const char* name, const std::string& text);
Widget createToggleButton(Widget parent, const char* name, Message::Number text);
Widget createTextField(Widget parent, const char* name);
// Shows the cursor of a text widget only while it has the keyboard; an idle one would blur the first letter.
void hideIdleCursor(Widget text);
// An explanation of `rows` lines that wraps with the window's width and is passed over by the Tab key.
Widget createReadOnlyText(Widget parent, const char* name, Message::Number text, short rows);
// Gives it another text, and the lines which that takes.
void setExplanation(Widget text, const std::string& words);
// An editable text of several lines in a scrolled window of its own, its parent. It wraps long lines.
Widget createScrolledText(Widget parent, const char* name, short rows, short columns);
// A full application modal dialog that keeps its size and holds nothing yet, unmanaged; `closed` is called when the
// window manager closes it. Its shell is its parent.
Widget createTemplateDialog(Widget parent, const char* name, Message::Number title, XtCallbackProc closed);
// A scrolled window that clips its work area and shows scroll bars as they are needed.
Widget createScrolledWindow(Widget parent, const char* name);
// A single-selection list, as wide as its widest item or, with XmCONSTANT, of a width of its own. `acted` is its
// default action: a double click, and Return, which presses no button of the window, with or without one.
Widget createList(Widget parent, const char* name, XtCallbackProc selected, XtCallbackProc acted,
                  unsigned char sizePolicy = XmVARIABLE);
// Lets a widget act by this translation table before its own.
void overrideTranslations(Widget widget, const std::string& table);
// Makes Return and the keypad's Enter raise the default action of a list, or the activate callbacks of a text, and
// nothing else.
void keepReturn(Widget widget);

void setLabel(Widget widget, const std::string& text);

// The text of an XmText or XmTextField.
[[nodiscard]] std::string fieldText(Widget field);
// Puts a path into an XmTextField and shows its end: the file's own name is what a person wants to see of a long path.
void showPath(Widget textField, const std::string& path);

// The width, or height, that the widget asks for, in pixels.
// The resource XmNwidth, XmNheight, or another of the type Dimension.
Dimension sizeOf(Widget widget, const char* resource);
Dimension preferredWidth(Widget widget);
Dimension preferredHeight(Widget widget);

// Gives all widgets the width of the one that asks for most.
void equalizeWidths(const std::vector<Widget>& widgets);

// The managed children, and those of a manager and all below it that are managed, parents before their children.
std::vector<Widget> managedChildren(Widget manager);
std::vector<Widget> managedBelow(Widget manager);

// Attaches a child of a form, side by side with the edges of the form or of its siblings; offsets in pixels.
class Attach {
public:
    explicit Attach(Widget child) : child_(child) {}
    Attach& topForm(int offset = 0) { return toForm(XmNtopAttachment, XmNtopOffset, offset); }
    Attach& bottomForm(int offset = 0) { return toForm(XmNbottomAttachment, XmNbottomOffset, offset); }
    Attach& leftForm(int offset = 0) { return toForm(XmNleftAttachment, XmNleftOffset, offset); }
    Attach& rightForm(int offset = 0) { return toForm(XmNrightAttachment, XmNrightOffset, offset); }
    Attach& below(Widget other, int offset);
    Attach& above(Widget other, int offset);
    Attach& rightOf(Widget other, int offset);
    Attach& leftOf(Widget other, int offset);
    // The top edge level with that of `other`.
    Attach& levelWith(Widget other, int offset = 0);
    // Left edge at `start`, right edge at `start` + `width`, both counted from the form's left edge.
    Attach& span(int start, int width);
    // Top edge at the form's, `height` pixels high.
    Attach& strip(int height);

private:
    Attach& toForm(const char* attachment, const char* offsetName, int offset);
    Attach& toWidget(const char* attachment, const char* widgetName, const char* offsetName, Widget other, int offset);
    Widget child_;
};

// Lets a widget be used, or not, and look so.
void setEnabled(Widget widget, bool enabled);

// Presses a push button as a click does: it flashes, and its callbacks run.
void pressButton(Widget button);
