#include "setup/setup_form.h"

#include <X11/cursorfont.h>
#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/ScrolledW.h>
#include <odbcinst.h>

#include <algorithm>
#include <memory>
#include <new>
#include <type_traits>

#include "help/help_locator.h"
#include "motifutil/catalog_text.h"
#include "motifutil/message_dialog.h"
#include "motifutil/modal_loop.h"
#include "motifutil/scrolling.h"
#include "motifutil/widgets.h"
#include "setup/about_form.h"
#include "setup/connection_test.h"
#include "setup/further_settings.h"
#include "setup/hint_line.h"
#include "setup/setting_row.h"
#include "setup/setup_texts.h"

namespace {

constexpr int kMargin = 16;
constexpr int kGap = 12;
constexpr int kRowGap = 6;
// What a scrolled window takes for itself in each direction.
constexpr int kFrame = 2;

// The share of the screen's height that the dialog takes before its rows scroll, in percent.
constexpr int kLargestShare = 70;
// What is seen of the rows at least, in pixels, however small the screen or the window.
constexpr int kLeastRows = 110;

struct WidgetDestroyer {
    void operator()(Widget widget) const { XtDestroyWidget(widget); }
};
using WidgetPtr = std::unique_ptr<std::remove_pointer_t<Widget>, WidgetDestroyer>;

// Shows what an exception in a callback means; none may pass through the toolkit.
template <typename Action>
void guarded(Widget dialogForm, Action action) {
    try {
        action();
    } catch (const std::bad_alloc&) {
        showOutOfMemoryError(dialogForm);
    }
}

// Shows a watch as the pointer over a window while it lives.
class BusyPointer {
public:
    explicit BusyPointer(Widget shell) : display_(XtDisplay(shell)), window_(XtWindow(shell)) {
        cursor_ = XCreateFontCursor(display_, XC_watch);
        XDefineCursor(display_, window_, cursor_);
        XFlush(display_);
    }
    ~BusyPointer() {
        XUndefineCursor(display_, window_);
        XFreeCursor(display_, cursor_);
    }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;

private:
    Display* display_;
    Window window_;
    Cursor cursor_;
};

// Makes a label as high as its field, so that their texts are level.
void keepLevel(Widget label, Widget field) {
    Attach(label).levelWith(field);
    XtVaSetValues(label, XmNbottomAttachment, XmATTACH_OPPOSITE_WIDGET, XmNbottomWidget, field, nullptr);
}

// The dialog while it is open. It belongs to its shell and goes with it, since callbacks may need it until then.
class SetupForm {
public:
    SetupForm(Widget shell, const SetupFormContent& content) : content_(content), shell_(shell) {}

    // Builds the dialog and runs it. False when it was abandoned for lack of memory.
    bool run();

private:
    void createFields();
    void createRows();
    void createButtons();
    void createHint();
    void layOut();
    void place(Widget label, Widget field, Widget above, int margin, bool stretched) const;
    static void placeAtEnd(Widget aside, Widget field, Widget above);
    void placeRows();
    void setSizes();
    void fitRows();
    std::vector<Widget> labels() const;

    bool hasRow(const std::string& key) const;
    std::optional<SetupFailure> collect();
    std::optional<SetupFailure> collectSettings(Settings& changed) const;
    Settings typedSettings(const Settings& changed) const;
    void accept();
    void test();
    void save();
    void finish();
    void report(const SetupFailure& failure);
    void showBox(unsigned long kind, const std::string& text);
    void focusOn(const std::string& key);

    static void okPressed(Widget widget, XtPointer form, XtPointer callData);
    static void cancelPressed(Widget widget, XtPointer form, XtPointer callData);
    static void testPressed(Widget widget, XtPointer form, XtPointer callData);
    static void aboutPressed(Widget widget, XtPointer form, XtPointer callData);
    static void helpPressed(Widget widget, XtPointer form, XtPointer callData);
    static void replaceAccepted(Widget widget, XtPointer form, XtPointer callData);
    static void hiddenFieldReached(Widget widget, XtPointer form, XtPointer callData);
    static void resized(Widget widget, XtPointer form, XEvent* event, Boolean* continueToDispatch);

    SetupFormContent content_;
    Widget shell_;
    Widget form_ = nullptr;
    Widget scrolledWindow_ = nullptr;
    Widget rowsForm_ = nullptr;
    Widget separator_ = nullptr;
    Widget btnTest_ = nullptr;
    Widget btnAbout_ = nullptr;
    Widget btnOk_ = nullptr;
    Widget btnCancel_ = nullptr;
    Widget btnHelp_ = nullptr;
    std::unique_ptr<HintLine> hint_;  // Null when the driver explains nothing.
    std::unique_ptr<SettingRow> name_;
    std::unique_ptr<SettingRow> description_;
    std::vector<std::unique_ptr<SettingRow>> rows_;
    std::unique_ptr<FurtherSettings> further_;
    int rowsHeight_ = 0;
    DataSourceChange change_;  // What the user accepted last.
    bool finished_ = false;
};

bool SetupForm::run() {
    ArgumentList arguments;
    arguments.set(XmNautoUnmanage, False).set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL);
    static char name[] = "FormSetup";
    form_ = XmCreateForm(shell_, name, arguments.data(), arguments.size());
    if (form_ == nullptr) {
        throw std::bad_alloc();
    }
    onWindowManagerClose(shell_, cancelPressed, this);
    XtAddCallback(form_, XmNhelpCallback, helpPressed, this);
    createFields();
    createRows();
    createButtons();
    createHint();
    layOut();
    XtVaSetValues(form_, XmNdefaultButton, btnOk_, XmNcancelButton, btnCancel_, XmNinitialFocus, name_->field(),
                  nullptr);
    setSizes();
    XtManageChild(form_);
    dialog_main_loop(shell_);
    XtUnmanageChild(form_);
    return finished_;
}

void SetupForm::createFields() {
    name_ = createTextRow(form_, "TxtDataSourceName", setupText(SetupMessage::kDataSourceName), content_.name);
    description_ = createTextRow(form_, "TxtDescription", setupText(SetupMessage::kDescription),
                                 valueOf(content_.shown, kDescriptionKey));
}

void SetupForm::createRows() {
    scrolledWindow_ = createScrolledWindow(form_, "scrWinSettings");
    rowsForm_ = createForm(scrolledWindow_, "FormSettings");
    XtVaSetValues(scrolledWindow_, XmNshadowThickness, 0, nullptr);
    // The rows belong to the dialog, whatever ground lists in scrolled windows have.
    Widget clipWindow = nullptr;
    Pixel ground = 0;
    XtVaGetValues(form_, XmNbackground, &ground, nullptr);
    XtVaGetValues(scrolledWindow_, XmNclipWindow, &clipWindow, nullptr);
    XtVaSetValues(clipWindow, XmNbackground, ground, nullptr);
    // It would grab Home, End and the page keys, which the fields in it need.
    XtUninstallTranslations(clipWindow);

    if (content_.hasFurtherSettings) {
        // A password never stands in plain text, so it can't stand among the further settings.
        for (const installer::Attribute& setting : content_.shown) {
            if (isPasswordKey(setting.key) && !hasRow(setting.key)) {
                content_.properties.push_back({setting.key, "", PropertyKind::kPassword, {}});
            }
        }
    }
    for (const DriverProperty& property : content_.properties) {
        const bool isInFile = !valueOf(content_.stored, property.key).empty();
        if (auto row = createSettingRow(rowsForm_, property, valueOf(content_.shown, property.key), isInFile)) {
            rows_.push_back(std::move(row));
        }
    }
    if (content_.hasFurtherSettings) {
        Settings further = content_.shown;
        std::erase_if(further, [this](const installer::Attribute& setting) { return hasRow(setting.key); });
        further_ = std::make_unique<FurtherSettings>(rowsForm_, further);
    }
    // Rows come into sight as they are reached, so the scroll bars need no keyboard.
    for (const char* which : {XmNverticalScrollBar, XmNhorizontalScrollBar}) {
        Widget scrollBar = nullptr;
        XtVaGetValues(scrolledWindow_, which, &scrollBar, nullptr);
        XtVaSetValues(scrollBar, XmNtraversalOn, False, nullptr);
    }
    XtAddCallback(scrolledWindow_, XmNtraverseObscuredCallback, hiddenFieldReached, this);
    XtAddEventHandler(scrolledWindow_, StructureNotifyMask, False, resized, this);
    scrollWithWheel(scrolledWindow_, rowsForm_);
    for (const auto& row : rows_) {
        scrollWithWheel(scrolledWindow_, row->label());
        scrollWithWheel(scrolledWindow_, row->focus());
        for (Widget widget : {row->aside(), row->toggle(), row->toggleHint()}) {
            if (widget != nullptr) {
                scrollWithWheel(scrolledWindow_, widget);
            }
        }
    }
}

void SetupForm::createButtons() {
    separator_ = createSeparator(form_, "Separator");
    btnTest_ = createPushButton(form_, "BtnTest", setupText(SetupMessage::kTest), testPressed, this);
    btnAbout_ = createPushButton(form_, "BtnAbout", setupText(SetupMessage::kAbout), aboutPressed, this);
    btnOk_ = createPushButton(form_, "BtnOK", Message::kOk, okPressed, this);
    btnCancel_ = createPushButton(form_, "BtnCancel", Message::kCancel, cancelPressed, this);
    btnHelp_ = createPushButton(form_, "BtnHelp", Message::kHelp, helpPressed, this);
    equalizeWidths({btnTest_, btnAbout_, btnOk_, btnCancel_, btnHelp_});
}

void SetupForm::createHint() {
    if (std::all_of(rows_.begin(), rows_.end(), [](const auto& row) { return row->help().empty(); })) {
        return;
    }
    hint_ = std::make_unique<HintLine>(form_);
    for (const auto& row : rows_) {
        for (Widget widget : {row->focus(), row->aside(), row->toggle()}) {
            if (widget != nullptr) {
                hint_->explain(widget, row->help());
            }
        }
    }
    for (Widget widget : {name_->focus(), description_->focus(), btnTest_, btnAbout_, btnOk_, btnCancel_, btnHelp_}) {
        hint_->explain(widget, {});
    }
}

std::vector<Widget> SetupForm::labels() const {
    std::vector<Widget> labels{name_->label(), description_->label()};
    for (const auto& row : rows_) {
        labels.push_back(row->label());
    }
    if (further_) {
        labels.push_back(further_->label());
    }
    return labels;
}

// Labels have a column of their own, as wide as the widest; fields stand behind it and grow with the window.
void SetupForm::layOut() {
    equalizeWidths(labels());
    place(name_->label(), name_->field(), nullptr, kMargin, true);
    place(description_->label(), description_->field(), name_->field(), kMargin, true);
    placeRows();
    Attach(btnTest_).leftForm(kMargin).bottomForm(kMargin);
    Attach(btnAbout_).rightOf(btnTest_, kGap).bottomForm(kMargin);
    Attach(btnHelp_).rightForm(kMargin).bottomForm(kMargin);
    Attach(btnCancel_).leftOf(btnHelp_, kGap).bottomForm(kMargin);
    Attach(btnOk_).leftOf(btnCancel_, kGap).bottomForm(kMargin);
    Attach(separator_).leftForm().rightForm().above(btnOk_, kGap);
    if (hint_) {
        Attach(hint_->line()).leftForm(kMargin).rightForm(kMargin).above(separator_, kRowGap);
    }
    Attach(scrolledWindow_)
        .below(description_->field(), kRowGap)
        .leftForm(kMargin)
        .rightForm(kMargin - kFrame)
        .above(hint_ ? hint_->line() : separator_, hint_ ? kRowGap : kGap);
}

void SetupForm::placeRows() {
    Widget above = nullptr;
    for (const auto& row : rows_) {
        place(row->label(), row->field(), above, 0, row->isStretched());
        if (row->aside() != nullptr && row->isStretched()) {
            placeAtEnd(row->aside(), row->field(), above);
        } else if (row->aside() != nullptr) {
            Attach(row->aside()).rightOf(row->field(), kGap);
            keepLevel(row->aside(), row->field());
        }
        above = row->field();
        if (row->toggle() != nullptr) {
            Attach(row->toggle()).below(above, 0).rightOf(row->label(), kGap);
            Attach(row->toggleHint()).rightOf(row->toggle(), kGap);
            keepLevel(row->toggleHint(), row->toggle());
            above = row->toggle();
        }
    }
    if (further_) {
        place(further_->label(), further_->frame(), above, 0, true);
        XtVaSetValues(further_->label(), XmNbottomAttachment, XmATTACH_NONE, nullptr);
        // In line with the fields above: in line with its own, it and its field would depend on each other.
        XtVaSetValues(further_->hint(), XmNleftAttachment, XmATTACH_OPPOSITE_WIDGET, XmNleftWidget, above, nullptr);
        Attach(further_->hint()).below(further_->frame(), 0);
    }
}

// Puts a widget between a field and the end of its row. The field's width depends on it, so nothing of it may depend on the
// field: for a form that is a circle, even if one is about widths and the other about heights.
void SetupForm::placeAtEnd(Widget aside, Widget field, Widget above) {
    if (above == nullptr) {
        Attach(aside).topForm();
    } else {
        Attach(aside).below(above, kRowGap);
    }
    Attach(aside).rightForm();
    XtVaSetValues(aside, XmNrecomputeSize, False, XmNheight, preferredHeight(field), nullptr);
    Attach(field).leftOf(aside, kGap);
}

void SetupForm::place(Widget label, Widget field, Widget above, int margin, bool stretched) const {
    if (above == nullptr) {
        Attach(field).topForm(margin);
    } else {
        Attach(field).below(above, kRowGap);
    }
    Attach(field).rightOf(label, kGap);
    if (stretched) {
        Attach(field).rightForm(margin);
    }
    Attach(label).leftForm(margin);
    keepLevel(label, field);
}

// Gives the dialog the size that its rows need, up to a share of the screen's height.
void SetupForm::setSizes() {
    const int around = preferredHeight(name_->field()) + preferredHeight(description_->field()) +
                       preferredHeight(btnOk_) + 2 * kMargin + 2 * kRowGap + 2 * kGap + kFrame +
                       (hint_ ? preferredHeight(hint_->line()) + 2 * kRowGap - kGap : 0);
    rowsHeight_ = preferredHeight(rowsForm_);
    const int most = HeightOfScreen(XtScreen(form_)) * kLargestShare / 100 - around;
    const int height = std::min(rowsHeight_, std::max(most, kLeastRows));
    int width = std::max<int>(preferredWidth(rowsForm_), 5 * preferredWidth(btnOk_) + 6 * kGap);
    if (height < rowsHeight_) {
        Widget scrollBar = nullptr;
        XtVaGetValues(scrolledWindow_, XmNverticalScrollBar, &scrollBar, nullptr);
        width += preferredWidth(scrollBar);
    }
    XtVaSetValues(rowsForm_, XmNresizePolicy, XmRESIZE_NONE, nullptr);
    if (further_) {
        // Only now that the form has been measured: the further settings take what the window has to spare.
        XtVaSetValues(further_->hint(), XmNtopAttachment, XmATTACH_NONE, nullptr);
        Attach(further_->hint()).bottomForm();
        Attach(further_->frame()).bottomForm(preferredHeight(further_->hint()));
    }
    XtVaSetValues(scrolledWindow_, XmNwidth, width + kFrame, XmNheight, height + kFrame, nullptr);
    XtVaSetValues(shell_, XmNminWidth, width + kFrame + 2 * kMargin, XmNminHeight,
                  around + std::min(rowsHeight_, kLeastRows), nullptr);
}

// Lets the rows have the width of the window, and its height where that is more than they need.
void SetupForm::fitRows() {
    XtVaSetValues(rowsForm_, XmNwidth, static_cast<Dimension>(std::max(viewWidth(scrolledWindow_), 1)), XmNheight,
                  static_cast<Dimension>(std::max(viewHeight(scrolledWindow_), rowsHeight_)), nullptr);
}

bool SetupForm::hasRow(const std::string& key) const {
    return installer::sameName(key, kDescriptionKey) || installer::sameName(key, kNameKey) ||
           installer::sameName(key, kDriverKey) ||
           std::any_of(content_.properties.begin(), content_.properties.end(),
                       [&key](const DriverProperty& property) { return installer::sameName(property.key, key); });
}

// Takes what stands in the dialog as the change to be made, or tells what is wrong with it.
std::optional<SetupFailure> SetupForm::collect() {
    change_ = {content_.storedName, name_->value(), content_.driver, content_.pending};
    if (change_.name != change_.storedName) {
        if (std::optional<SetupFailure> failure = checkName(change_.name)) {
            failure->key = kNameKey;
            return failure;
        }
    }
    return collectSettings(change_.values);
}

// Adds what the fields change, or tells what is wrong with them.
std::optional<SetupFailure> SetupForm::collectSettings(Settings& changed) const {
    if (description_->isChanged()) {
        setValue(changed, kDescriptionKey, description_->value());
    }
    for (const auto& row : rows_) {
        if (!row->isStored()) {
            setValue(changed, row->key(), {});
        } else if (row->isChanged()) {
            if (row->value() != trimmed(row->value())) {
                return SetupFailure{ODBC_ERROR_INVALID_KEYWORD_VALUE, setupText(SetupMessage::kPasswordBlanks),
                                    row->key()};
            }
            setValue(changed, row->key(), row->value());
        }
    }
    if (further_) {
        std::optional<SetupFailure> failure =
            further_->changes([this](const std::string& key) { return hasRow(key); }, changed);
        if (failure) {
            // A row may have the same key, but the line is what has to be mended.
            failure->key.clear();
            XmProcessTraversal(further_->focus(), XmTRAVERSE_CURRENT);
        }
        return failure;
    }
    return std::nullopt;
}

// All settings as they stand in the dialog, with what is not to be stored.
Settings SetupForm::typedSettings(const Settings& changed) const {
    Settings settings = content_.shown;
    for (const installer::Attribute& change : changed) {
        setValue(settings, change.key, change.value);
    }
    for (const auto& row : rows_) {
        if (!row->isStored()) {
            setValue(settings, row->key(), row->value());
        }
    }
    return settings;
}

void SetupForm::test() {
    Settings changed;
    if (const std::optional<SetupFailure> failure = collectSettings(changed)) {
        report(*failure);
        return;
    }
    ConnectionOutcome outcome;
    {
        const BusyPointer busy(shell_);
        outcome = testConnection(connectionString(content_.driver, typedSettings(changed)));
    }
    SetupMessage::Number text = SetupMessage::kTestSucceeded;
    if (!outcome.connected) {
        text = outcome.diagnostics.empty() ? SetupMessage::kTestFailedSilently : SetupMessage::kTestFailed;
    }
    const std::string lines = outcome.diagnostics.empty() ? "" : "\n\n" + outcome.diagnostics;
    showBox(outcome.connected ? kInformationDialog : kErrorDialog, setupText(text) + lines);
}

void SetupForm::accept() {
    if (const std::optional<SetupFailure> failure = collect()) {
        report(*failure);
        return;
    }
    installer::forgetCachedValues();
    const bool takesName = !installer::sameName(change_.name, change_.storedName);
    if (!takesName || !dataSourceExists(change_.name)) {
        save();
        return;
    }
    Widget question =
        createMessageDialog(form_, kQuestionDialog, setupText(SetupMessage::kOverwriteQuestion, change_.name).c_str(),
                            catalogText(Message::kAnswerYes).c_str(), catalogText(Message::kAnswerNo).c_str(),
                            setupText(SetupMessage::kTitle, content_.driver).c_str());
    if (question != nullptr) {
        XtAddCallback(question, XmNokCallback, replaceAccepted, this);
        XtManageChild(question);
    }
}

void SetupForm::save() {
    if (const std::optional<SetupFailure> failure = saveDataSource(change_)) {
        report(*failure);
        return;
    }
    finish();
}

void SetupForm::finish() {
    finished_ = true;
    exit_dialog_loop();
}

void SetupForm::report(const SetupFailure& failure) {
    focusOn(failure.key);
    showBox(kErrorDialog, failure.text);
}

void SetupForm::showBox(unsigned long kind, const std::string& text) {
    Widget box = createMessageDialog(form_, kind, text.c_str(), catalogText(Message::kOk).c_str(), "",
                                     setupText(SetupMessage::kTitle, content_.driver).c_str());
    if (box != nullptr) {
        XtManageChild(box);
    }
}

// Leaves the user in the field that has to be mended.
void SetupForm::focusOn(const std::string& key) {
    if (key.empty()) {
        return;
    }
    const auto row = std::find_if(rows_.begin(), rows_.end(),
                                  [&key](const auto& other) { return installer::sameName(other->key(), key); });
    Widget field = further_ ? further_->focus() : name_->focus();
    if (row != rows_.end()) {
        field = (*row)->focus();
    } else if (installer::sameName(key, kNameKey)) {
        field = name_->focus();
    } else if (installer::sameName(key, kDescriptionKey)) {
        field = description_->focus();
    }
    XmProcessTraversal(field, XmTRAVERSE_CURRENT);
}

void SetupForm::okPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    guarded(self->form_, [self] { self->accept(); });
}

void SetupForm::cancelPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    static_cast<SetupForm*>(form)->finish();
}

void SetupForm::testPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    guarded(self->form_, [self] { self->test(); });
}

void SetupForm::aboutPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    guarded(self->form_, [self] {
        describeForAbout(self->content_.library);
        XtManageChild(createAbtForm(self->form_));
    });
}

void SetupForm::helpPressed(Widget /*widget*/, XtPointer /*form*/, XtPointer /*callData*/) {
    kvDisplayHelp(reinterpret_cast<const unsigned char*>("Administrator"),
                  reinterpret_cast<const unsigned char*>("setup"));
}

void SetupForm::replaceAccepted(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    guarded(self->form_, [self] { self->save(); });
}

void SetupForm::hiddenFieldReached(Widget scrolledWindow, XtPointer /*form*/, XtPointer callData) {
    XmScrollVisible(scrolledWindow, static_cast<XmTraverseObscuredCallbackStruct*>(callData)->traversal_destination,
                    kRowGap, kRowGap);
}

void SetupForm::resized(Widget /*widget*/, XtPointer form, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that is first mapped may have had its size before it existed.
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        auto* self = static_cast<SetupForm*>(form);
        self->fitRows();
        if (self->hint_) {
            self->hint_->fit();
        }
    }
}

void deleteForm(Widget /*shell*/, XtPointer form, XtPointer /*callData*/) {
    delete static_cast<SetupForm*>(form);
}

}  // namespace

std::optional<SetupFailure> runSetupForm(Widget parent, const SetupFormContent& content) {
    // Loops do not nest, so a second dialog would be gone at once.
    if (current_shell != nullptr) {
        return SetupFailure{ODBC_ERROR_REQUEST_FAILED, setupText(SetupMessage::kAlreadyOpen), {}};
    }
    const std::string title = setupText(SetupMessage::kTitle, content.driver);
    ArgumentList arguments;
    arguments.set(XmNtitle, title.c_str());
    static char name[] = "vhsetup23";
    const WidgetPtr shell(XmCreateDialogShell(parent, name, arguments.data(), arguments.size()));
    if (!shell) {
        throw std::bad_alloc();
    }
    auto owned = std::make_unique<SetupForm>(shell.get(), content);
    SetupForm* form = owned.get();
    XtAddCallback(shell.get(), XmNdestroyCallback, deleteForm, owned.release());
    if (!form->run()) {
        return SetupFailure{ODBC_ERROR_OUT_OF_MEM, setupText(SetupMessage::kNoMemory), {}};
    }
    return std::nullopt;
}
