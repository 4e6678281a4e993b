#include "motifutil/widgets.h"

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/MessageB.h>
#include <Xm/Notebook.h>
#include <Xm/PushB.h>
#include <Xm/ScrolledW.h>
#include <Xm/SeparatoG.h>
#include <Xm/Text.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

#include <algorithm>
#include <map>
#include <memory>
#include <new>

#include "motifutil/catalog_text.h"
#include "motifutil/characters.h"
#include "motifutil/exposed_rows.h"
#include "motifutil/mnemonics.h"
#include "motifutil/script_fonts.h"
#include "motifutil/shells.h"

namespace {

// The key that people know for it; Motif would take the character that it stands for into the text.
constexpr const char* kSelectAll = "Ctrl<Key>a: select-all()";

Widget made(Widget widget) {
    if (widget == nullptr) {
        throw std::bad_alloc();
    }
    return widget;
}

Widget createLabelled(Widget parent, const char* name, WidgetClass kind, const std::string& text) {
    const XmStringPtr label = compoundString(text);
    Widget widget = made(XtVaCreateManagedWidget(name, kind, parent, XmNlabelString, label.get(), nullptr));
    giveFonts(widget);
    return widget;
}

void setCursorVisible(Widget text, XtPointer visible, XtPointer /*callData*/) {
    XtVaSetValues(text, XmNcursorPositionVisible, visible != nullptr, nullptr);
}

// The default action of a list's row that has the keyboard, which a list of browse selection has selected. Motif's own
// action would press the window's default button as well.
void raiseDefaultAction(Widget list, XEvent* event, String* /*parameters*/, Cardinal* /*count*/) {
    const int position = XmListGetKbdItemPos(list);
    int count = 0;
    XmStringTable items = nullptr;
    XtVaGetValues(list, XmNitemCount, &count, XmNitems, &items, nullptr);
    if (position < 1 || position > count) {
        return;
    }
    XmListCallbackStruct call{};
    call.reason = XmCR_DEFAULT_ACTION;
    call.event = event;
    call.item = items[position - 1];
    call.item_position = position;
    XtCallCallbacks(list, XmNdefaultActionCallback, &call);
}

// The same for a text.
void raiseActivate(Widget text, XEvent* event, String* /*parameters*/, Cardinal* /*count*/) {
    XmAnyCallbackStruct call{XmCR_ACTIVATE, event};
    XtCallCallbacks(text, XmNactivateCallback, &call);
}

// What an explanation says, without the line breaks that it has for its width.
std::string& explanationOf(Widget text) {
    XtPointer words = nullptr;
    XtVaGetValues(text, XmNuserData, &words, nullptr);
    return *static_cast<std::string*>(words);
}

void forgetExplanation(Widget text, XtPointer /*clientData*/, XtPointer /*callData*/) {
    delete &explanationOf(text);
}

// Gives a text that can't be scrolled as many lines as it takes at the width that it has.
void fitRows(Widget text) {
    XmRenderTable fonts = nullptr;
    Dimension width = 0;
    Dimension margin = 0;
    Dimension shadow = 0;
    Dimension highlight = 0;
    short rows = 0;
    XtVaGetValues(text, XmNrenderTable, &fonts, XmNwidth, &width, XmNmarginWidth, &margin, XmNshadowThickness, &shadow,
                  XmNhighlightThickness, &highlight, XmNrows, &rows, nullptr);
    const std::string& explanation = explanationOf(text);
    // The widget breaks its lines at any blank.
    std::string words = explanation;
    std::replace(words.begin(), words.end(), '"', '\'');
    const std::string lines = wrapped(words, fonts, width - 2 * (margin + shadow + highlight));
    // And at blanks alone, where others are.
    const std::wstring characters = charactersOf(explanation);
    if (std::any_of(characters.begin(), characters.end(), isEastAsian) && lines != fieldText(text)) {
        XmTextSetString(text, std::string(lines).data());
    }
    const auto needed = static_cast<short>(std::count(lines.begin(), lines.end(), '\n') + 1);
    if (needed != rows) {
        XtVaSetValues(text, XmNrows, needed, nullptr);
    }
}

void explanationResized(Widget text, XtPointer /*clientData*/, XEvent* event, Boolean* /*continueToDispatch*/) {
    // One that is first mapped may have had its size before it existed.
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        fitRows(text);
    }
}

}  // namespace

Widget createForm(Widget parent, const char* name) {
    return made(XtVaCreateManagedWidget(name, xmFormWidgetClass, parent, nullptr));
}

Widget createPage(Widget notebook, const char* name) {
    return made(XtVaCreateWidget(name, xmFormWidgetClass, notebook, XmNnotebookChildType, XmPAGE, nullptr));
}

Widget createTab(Widget notebook, const char* name, Message::Number text) {
    const XmStringPtr label = compoundString(catalogText(text));
    Widget tab = made(XtVaCreateWidget(name, xmPushButtonWidgetClass, notebook, XmNlabelString, label.get(),
                                       XmNnotebookChildType, XmMAJOR_TAB, nullptr));
    giveFonts(tab);
    setMnemonic(tab, mnemonicFor(text));
    return tab;
}

Widget createSeparator(Widget parent, const char* name) {
    return made(XtVaCreateManagedWidget(name, xmSeparatorGadgetClass, parent, nullptr));
}

Widget createLabel(Widget parent, const char* name, const std::string& text) {
    return createLabelled(parent, name, xmLabelWidgetClass, text);
}

Widget createLabel(Widget parent, const char* name, Message::Number text) {
    return createLabel(parent, name, catalogText(text));
}

Widget createHeading(Widget parent, const char* name, Message::Number text) {
    Widget heading = createLabel(parent, name, text);
    XtVaSetValues(heading, XmNmarginWidth, 0, XmNshadowThickness, 0, XmNhighlightThickness, 0, nullptr);
    return heading;
}

Widget createPushButton(Widget parent, const char* name, const std::string& text, XtCallbackProc activated,
                        XtPointer clientData) {
    Widget button = createLabelled(parent, name, xmPushButtonWidgetClass, text);
    if (activated != nullptr) {
        XtAddCallback(button, XmNactivateCallback, activated, clientData);
    }
    return button;
}

Widget createPushButton(Widget parent, const char* name, Message::Number text, XtCallbackProc activated,
                        XtPointer clientData) {
    Widget button = createPushButton(parent, name, catalogText(text), activated, clientData);
    setMnemonic(button, mnemonicFor(text));
    return button;
}

Widget createToggleButton(Widget parent, const char* name, const std::string& text) {
    return createLabelled(parent, name, xmToggleButtonWidgetClass, text);
}

Widget createToggleButton(Widget parent, const char* name, Message::Number text) {
    Widget toggle = createToggleButton(parent, name, catalogText(text));
    setMnemonic(toggle, mnemonicFor(text));
    return toggle;
}

Widget createTextField(Widget parent, const char* name) {
    Widget field = made(XtVaCreateManagedWidget(name, xmTextFieldWidgetClass, parent, nullptr));
    overrideTranslations(field, kSelectAll);
    hideIdleCursor(field);
    followScripts(field);
    return field;
}

void hideIdleCursor(Widget text) {
    static char visible;
    XtVaSetValues(text, XmNcursorPositionVisible, False, nullptr);
    XtAddCallback(text, XmNfocusCallback, setCursorVisible, &visible);
    XtAddCallback(text, XmNlosingFocusCallback, setCursorVisible, nullptr);
}

Widget createReadOnlyText(Widget parent, const char* name, Message::Number text, short rows) {
    Widget widget =
        made(XtVaCreateManagedWidget(name, xmTextWidgetClass, parent, XmNeditMode, XmMULTI_LINE_EDIT, XmNeditable,
                                     False, XmNwordWrap, True, XmNcursorPositionVisible, False, XmNtraversalOn, False,
                                     XmNrows, rows, XmNmarginWidth, 0, XmNhighlightThickness, 0, nullptr));
    auto words = std::make_unique<std::string>(catalogText(text));
    XmTextSetString(widget, words->data());
    followScripts(widget);
    XtAddCallback(widget, XmNdestroyCallback, forgetExplanation, nullptr);
    XtVaSetValues(widget, XmNuserData, words.release(), nullptr);
    XtAddEventHandler(widget, StructureNotifyMask, False, explanationResized, nullptr);
    return widget;
}

void setExplanation(Widget text, const std::string& words) {
    if (words == explanationOf(text)) {
        return;
    }
    explanationOf(text) = words;
    XmTextSetString(text, std::string(words).data());
    if (XtIsRealized(text) != 0) {
        fitRows(text);
    }
}

Widget createScrolledText(Widget parent, const char* name, short rows, short columns) {
    ArgumentList arguments;
    arguments.set(XmNeditMode, XmMULTI_LINE_EDIT)
        .set(XmNwordWrap, True)
        .set(XmNscrollHorizontal, False)
        .set(XmNrows, rows)
        .set(XmNcolumns, columns);
    Widget text = made(XmCreateScrolledText(parent, const_cast<char*>(name), arguments.data(), arguments.size()));
    overrideTranslations(text, kSelectAll);
    hideIdleCursor(text);
    followScripts(text);
    XtManageChild(text);
    return text;
}

Widget createTemplateDialog(Widget parent, const char* name, Message::Number title, XtCallbackProc closed) {
    const std::string titleText = catalogText(title);
    ArgumentList arguments;
    arguments.set(XmNtitle, titleText.c_str())
        .set(XmNautoUnmanage, False)
        .set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL)
        .set(XmNnoResize, True);
    Widget dialogBox =
        made(XmCreateTemplateDialog(parent, const_cast<char*>(name), arguments.data(), arguments.size()));
    prepareShell(XtParent(dialogBox), closed, nullptr);
    // The template's own separator would stand between the dialog's buttons and nothing.
    XtUnmanageChild(XtNameToWidget(dialogBox, "Separator"));
    return dialogBox;
}

Widget createScrolledWindow(Widget parent, const char* name) {
    return made(XtVaCreateManagedWidget(name, xmScrolledWindowWidgetClass, parent, XmNscrollingPolicy, XmAUTOMATIC,
                                        XmNscrollBarDisplayPolicy, XmAS_NEEDED, nullptr));
}

Widget createList(Widget parent, const char* name, XtCallbackProc selected, XtCallbackProc acted,
                  unsigned char sizePolicy) {
    // Browse selection: the callbacks that keep parallel lists in step are those of this policy.
    Widget list = made(XtVaCreateManagedWidget(name, exposedRowsListClass(), parent, XmNselectionPolicy,
                                               XmBROWSE_SELECT, XmNlistSizePolicy, sizePolicy, nullptr));
    if (selected != nullptr) {
        XtAddCallback(list, XmNbrowseSelectionCallback, selected, nullptr);
    }
    if (acted != nullptr) {
        XtAddCallback(list, XmNdefaultActionCallback, acted, nullptr);
    }
    keepReturn(list);
    return list;
}

void overrideTranslations(Widget widget, const std::string& table) {
    // Xt frees no table, nor what it makes of one for a widget class: each is parsed once.
    static std::map<std::string, XtTranslations> parsed;
    XtTranslations& translations = parsed[table];
    if (translations == nullptr) {
        translations = XtParseTranslationTable(table.c_str());
    }
    XtOverrideTranslations(widget, translations);
}

void keepReturn(Widget widget) {
    static char listAction[] = "RaiseDefaultAction";
    static char textAction[] = "RaiseActivate";
    XtActionsRec actions[] = {{listAction, raiseDefaultAction}, {textAction, raiseActivate}};
    // Under the same names they take the places of themselves.
    XtAppAddActions(XtWidgetToApplicationContext(widget), actions, XtNumber(actions));
    const std::string action = XmIsList(widget) ? listAction : textAction;
    std::string table;
    for (const char* key : {"osfActivate", "Return", "KP_Enter"}) {
        table += std::string("<Key>") + key + ": " + action + "()\n";
    }
    overrideTranslations(widget, table);
}

void setEnabled(Widget widget, bool enabled) {
    if (XmIsTextField(widget) && enabled != (XtIsSensitive(widget) != 0)) {
        // An empty field tells by nothing else than its ground that nothing can be typed into it.
        Pixel own = 0;
        Pixel around = 0;
        XtPointer before = nullptr;
        XtVaGetValues(widget, XmNbackground, &own, XmNuserData, &before, nullptr);
        XtVaGetValues(XtParent(widget), XmNbackground, &around, nullptr);
        XtVaSetValues(widget, XmNbackground, enabled ? reinterpret_cast<Pixel>(before) : around, XmNuserData, own,
                      nullptr);
    }
    XtSetSensitive(widget, enabled ? True : False);
}

void setLabel(Widget widget, const std::string& text) {
    const XmStringPtr label = compoundString(text);
    giveFonts(widget);
    XtVaSetValues(widget, XmNlabelString, label.get(), nullptr);
}

std::string fieldText(Widget field) {
    const XtTextPtr text(XmTextGetString(field));
    return text ? text.get() : "";
}

void showPath(Widget textField, const std::string& path) {
    XmTextFieldSetString(textField, const_cast<char*>(path.c_str()));
    XmTextFieldSetInsertionPosition(textField, XmTextFieldGetLastPosition(textField));
}

Dimension sizeOf(Widget widget, const char* resource) {
    Dimension size = 0;
    XtVaGetValues(widget, resource, &size, nullptr);
    return size;
}

Dimension preferredWidth(Widget widget) {
    XtWidgetGeometry wanted{};
    XtQueryGeometry(widget, nullptr, &wanted);
    return wanted.width;
}

Dimension preferredHeight(Widget widget) {
    XtWidgetGeometry wanted{};
    XtQueryGeometry(widget, nullptr, &wanted);
    return wanted.height;
}

void equalizeWidths(const std::vector<Widget>& widgets) {
    Dimension widest = 0;
    for (Widget widget : widgets) {
        widest = std::max(widest, preferredWidth(widget));
    }
    for (Widget widget : widgets) {
        XtVaSetValues(widget, XmNrecomputeSize, False, XmNwidth, widest, nullptr);
    }
}

std::vector<Widget> managedChildren(Widget manager) {
    WidgetList children = nullptr;
    Cardinal count = 0;
    XtVaGetValues(manager, XmNchildren, &children, XmNnumChildren, &count, nullptr);
    std::vector<Widget> managed(children, children + count);
    std::erase_if(managed, [](Widget child) { return XtIsManaged(child) == 0; });
    return managed;
}

std::vector<Widget> managedBelow(Widget manager) {
    std::vector<Widget> all;
    for (Widget child : managedChildren(manager)) {
        all.push_back(child);
        if (XtIsComposite(child)) {
            const std::vector<Widget> below = managedBelow(child);
            all.insert(all.end(), below.begin(), below.end());
        }
    }
    return all;
}

Attach& Attach::toForm(const char* attachment, const char* offsetName, int offset) {
    XtVaSetValues(child_, attachment, XmATTACH_FORM, offsetName, offset, nullptr);
    return *this;
}

Attach& Attach::toWidget(const char* attachment, const char* widgetName, const char* offsetName, Widget other,
                         int offset) {
    XtVaSetValues(child_, attachment, XmATTACH_WIDGET, widgetName, other, offsetName, offset, nullptr);
    return *this;
}

Attach& Attach::below(Widget other, int offset) {
    return toWidget(XmNtopAttachment, XmNtopWidget, XmNtopOffset, other, offset);
}

Attach& Attach::above(Widget other, int offset) {
    return toWidget(XmNbottomAttachment, XmNbottomWidget, XmNbottomOffset, other, offset);
}

Attach& Attach::rightOf(Widget other, int offset) {
    return toWidget(XmNleftAttachment, XmNleftWidget, XmNleftOffset, other, offset);
}

Attach& Attach::leftOf(Widget other, int offset) {
    return toWidget(XmNrightAttachment, XmNrightWidget, XmNrightOffset, other, offset);
}

Attach& Attach::levelWith(Widget other, int offset) {
    XtVaSetValues(child_, XmNtopAttachment, XmATTACH_OPPOSITE_WIDGET, XmNtopWidget, other, XmNtopOffset, offset,
                  nullptr);
    return *this;
}

Attach& Attach::span(int start, int width) {
    XtVaSetValues(child_, XmNleftAttachment, XmATTACH_FORM, XmNleftOffset, start, XmNrightAttachment,
                  XmATTACH_OPPOSITE_FORM, XmNrightOffset, -(start + width), nullptr);
    return *this;
}

Attach& Attach::strip(int height) {
    XtVaSetValues(child_, XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, 0, XmNbottomAttachment, XmATTACH_OPPOSITE_FORM,
                  XmNbottomOffset, -height, nullptr);
    return *this;
}

void pressButton(Widget button) {
    XEvent event{};
    event.xbutton.type = ButtonPress;
    event.xbutton.display = XtDisplayOfObject(button);
    event.xbutton.window = XtWindowOfObject(button);
    event.xbutton.time = XtLastTimestampProcessed(event.xbutton.display);
    if (XtIsWidget(button)) {
        XtCallActionProc(button, "ArmAndActivate", &event, nullptr, 0);
        return;
    }
    // A gadget has no actions of its own.
    XmPushButtonCallbackStruct pressed{XmCR_ACTIVATE, &event, 1};
    XtCallCallbacks(button, XmNactivateCallback, &pressed);
}
