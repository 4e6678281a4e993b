#include "setup/setup_form.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <Xm/TextF.h>
#include <odbcinst.h>

#include <algorithm>
#include <memory>
#include <new>
#include <type_traits>

#include "help/help_locator.h"
#include "motifutil/catalog_text.h"
#include "motifutil/message_dialog.h"
#include "motifutil/mnemonics.h"
#include "motifutil/modal_loop.h"
#include "motifutil/script_fonts.h"
#include "motifutil/shells.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"
#include "setup/about_form.h"
#include "setup/connection_test.h"
#include "setup/connection_test_box.h"
#include "setup/file_dsn_store.h"
#include "setup/hint_line.h"
#include "setup/setting_row.h"
#include "setup/setup_texts.h"

namespace {

// The share of the screen's height that the dialog takes before its rows scroll, in percent.
constexpr int kLargestShare = 85;
// The same of its width.
constexpr int kWidestShare = 90;
// What is seen of the rows at least, in pixels, however small the screen or the window.
constexpr int kLeastRows = 110;
// What is told of attributes that are left out: so many, so many bytes of each.
constexpr std::size_t kMostItemsTold = 8;
constexpr std::size_t kLongestItemTold = 60;

struct WidgetDestroyer {
    void operator()(Widget widget) const { XtDestroyWidget(widget); }
};
using WidgetPtr = std::unique_ptr<std::remove_pointer_t<Widget>, WidgetDestroyer>;

// The dialog while it is open. It belongs to its shell and goes with it, since callbacks may need it until then.
class SetupForm {
public:
    SetupForm(Widget shell, const SetupFormContent& content) : content_(content), shell_(shell) {}

    // Builds the dialog and runs it. False when it was abandoned for lack of memory.
    bool run();

private:
    void createFields();
    void createButtons();
    void createHint();
    void layOut();
    void setSizes();

    std::optional<SetupFailure> collect();
    std::optional<SetupFailure> collectSettings(Settings& changed);
    Settings typedSettings(const Settings& changed) const;
    ConnectionTest connectionTest(const Settings& changed) const;
    void accept();
    void test();
    bool takesNameOfAnother() const;
    void save();
    void finish();
    void report(const SetupFailure& failure);
    void showBox(unsigned long kind, const std::string& text);
    void tellOfWhatIsLeftOut();
    void focusOn(const std::string& key);

    static void okPressed(Widget widget, XtPointer form, XtPointer callData);
    static void cancelPressed(Widget widget, XtPointer form, XtPointer callData);
    static void testPressed(Widget widget, XtPointer form, XtPointer callData);
    static void aboutPressed(Widget widget, XtPointer form, XtPointer callData);
    static void helpPressed(Widget widget, XtPointer form, XtPointer callData);
    static void replaceAccepted(Widget widget, XtPointer form, XtPointer callData);
    static void resized(Widget widget, XtPointer form, XEvent* event, Boolean* continueToDispatch);

    SetupFormContent content_;
    Widget shell_;
    Widget form_ = nullptr;
    Widget separator_ = nullptr;
    Widget btnTest_ = nullptr;
    Widget btnAbout_ = nullptr;
    Widget btnOk_ = nullptr;
    Widget btnCancel_ = nullptr;
    Widget btnHelp_ = nullptr;
    std::unique_ptr<HintLine> hint_;  // Null when the driver explains nothing.
    std::unique_ptr<SettingRow> name_;
    std::unique_ptr<SettingRow> description_;
    std::unique_ptr<SettingRows> rows_;
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
    prepareShell(shell_, cancelPressed, this);
    completeFontsOf(shell_);
    serveKeys(shell_);
    XtAddCallback(form_, XmNhelpCallback, helpPressed, this);
    createFields();
    rows_ = std::make_unique<SettingRows>(form_, content_.rows);
    XtAddEventHandler(rows_->window(), StructureNotifyMask, False, resized, this);
    createButtons();
    createHint();
    layOut();
    XtVaSetValues(form_, XmNdefaultButton, btnOk_, XmNcancelButton, btnCancel_, XmNinitialFocus,
                  (content_.isFile ? description_ : name_)->field(), nullptr);
    setSizes();
    XtManageChild(form_);
    tellOfWhatIsLeftOut();
    dialog_main_loop(shell_);
    XtUnmanageChild(form_);
    return finished_;
}

void SetupForm::createFields() {
    if (content_.isFile) {
        name_ = createTextRow(form_, "TxtFileName", setupText(SetupMessage::kFileName), content_.name);
        Pixel ground = 0;
        XtVaGetValues(form_, XmNbackground, &ground, nullptr);
        XtVaSetValues(name_->field(), XmNeditable, False, XmNtraversalOn, False, XmNbackground, ground, nullptr);
        leadTo(name_->label(), nullptr);
        // The file's own name is what the person wants to see of a long path.
        XmTextFieldSetInsertionPosition(name_->field(), XmTextFieldGetLastPosition(name_->field()));
    } else {
        name_ = createTextRow(form_, "TxtDataSourceName", setupText(SetupMessage::kDataSourceName), content_.name);
        setMnemonic(name_->label(), setupMnemonic(SetupMessage::kDataSourceName));
    }
    description_ = createTextRow(form_, "TxtDescription", setupText(SetupMessage::kDescription),
                                 valueOf(content_.rows.shown, kDescriptionKey));
    setMnemonic(description_->label(), setupMnemonic(SetupMessage::kDescription));
}

void SetupForm::createButtons() {
    separator_ = createSeparator(form_, "Separator");
    btnTest_ = createPushButton(form_, "BtnTest", setupText(SetupMessage::kTest), testPressed, this);
    btnAbout_ = createPushButton(form_, "BtnAbout", setupText(SetupMessage::kAbout), aboutPressed, this);
    btnOk_ = createPushButton(form_, "BtnOK", Message::kOk, okPressed, this);
    btnCancel_ = createPushButton(form_, "BtnCancel", Message::kCancel, cancelPressed, this);
    btnHelp_ = createPushButton(form_, "BtnHelp", Message::kHelp, helpPressed, this);
    setMnemonic(btnTest_, setupMnemonic(SetupMessage::kTest));
    setMnemonic(btnAbout_, setupMnemonic(SetupMessage::kAbout));
    equalizeWidths({btnTest_, btnAbout_, btnOk_, btnCancel_, btnHelp_});
}

void SetupForm::createHint() {
    if (!rows_->hasHelp()) {
        return;
    }
    hint_ = std::make_unique<HintLine>(form_);
    rows_->explainIn(*hint_);
    for (Widget widget : {name_->focus(), description_->focus(), btnTest_, btnAbout_, btnOk_, btnCancel_, btnHelp_}) {
        hint_->explain(widget, {});
    }
}

// Labels have a column of their own, as wide as the widest.
void SetupForm::layOut() {
    std::vector<Widget> labels = rows_->labels();
    labels.insert(labels.end(), {name_->label(), description_->label()});
    equalizeWidths(labels);
    placeRow(*description_, placeRow(*name_, nullptr, kWindowMargin), kWindowMargin);
    rows_->layOut();
    Attach(btnTest_).leftForm(kWindowMargin).bottomForm(kWindowMargin);
    Attach(btnAbout_).rightOf(btnTest_, kWindowGap).bottomForm(kWindowMargin);
    Attach(btnHelp_).rightForm(kWindowMargin).bottomForm(kWindowMargin);
    Attach(btnCancel_).leftOf(btnHelp_, kWindowGap).bottomForm(kWindowMargin);
    Attach(btnOk_).leftOf(btnCancel_, kWindowGap).bottomForm(kWindowMargin);
    Attach(separator_).leftForm().rightForm().above(btnOk_, kWindowGap);
    if (hint_) {
        Attach(hint_->line()).leftForm(kWindowMargin).rightForm(kWindowMargin).above(separator_, kRowGap);
    }
    Widget above = description_->field();
    if (rows_->tabs() != nullptr) {
        Attach(rows_->tabs()).below(above, kWindowGap).leftForm(kWindowMargin);
        above = rows_->tabs();
    }
    Attach(rows_->window())
        .below(above, kRowGap)
        .leftForm(kWindowMargin)
        .rightForm(kWindowMargin - SettingRows::kFrame)
        .above(hint_ ? hint_->line() : separator_, hint_ ? kRowGap : kWindowGap);
}

// Gives the dialog the size that its rows need, up to a share of the screen's height.
void SetupForm::setSizes() {
    constexpr int kFrame = SettingRows::kFrame;
    const int around = preferredHeight(name_->field()) + preferredHeight(description_->field()) +
                       preferredHeight(btnOk_) + 2 * kWindowMargin + 2 * kRowGap + 2 * kWindowGap + kFrame +
                       (rows_->tabs() != nullptr ? preferredHeight(rows_->tabs()) + kWindowGap : 0) +
                       (hint_ ? preferredHeight(hint_->line()) + 2 * kRowGap - kWindowGap : 0);
    const int most = HeightOfScreen(XtScreen(form_)) * kLargestShare / 100 - around;
    const int widest = WidthOfScreen(XtScreen(form_)) * kWidestShare / 100;
    if (rows_->width() > widest) {
        // They are as wide as the rows.
        for (Widget field : {name_->field(), description_->field()}) {
            XtVaSetValues(field, XmNcolumns, 1, nullptr);
        }
    }
    const int width = std::max<int>(std::min(rows_->width(), widest), 5 * preferredWidth(btnOk_) + 6 * kWindowGap);
    rows_->show(width, std::min(rows_->height(), std::max(most, kLeastRows)));
    Dimension shown = 0;
    XtVaGetValues(rows_->window(), XmNwidth, &shown, nullptr);
    XtVaSetValues(shell_, XmNminWidth, shown + 2 * kWindowMargin, XmNminHeight,
                  around + std::min(rows_->height(), kLeastRows), nullptr);
}

// Takes what stands in the dialog as the change to be made, or tells what is wrong with it.
std::optional<SetupFailure> SetupForm::collect() {
    change_ = {content_.storedName, content_.stored, name_->value(), content_.driver, content_.pending};
    if (!content_.isFile && change_.name != change_.storedName) {
        if (std::optional<SetupFailure> failure = checkName(change_.name)) {
            failure->key = kNameKey;
            return failure;
        }
    }
    if (std::optional<SetupFailure> failure = rows_->checkStorable()) {
        return failure;
    }
    return collectSettings(change_.values);
}

// Adds what the fields change, or tells what is wrong with them.
std::optional<SetupFailure> SetupForm::collectSettings(Settings& changed) {
    if (description_->isChanged()) {
        setValue(changed, kDescriptionKey, description_->value());
    }
    return rows_->collect(changed);
}

// All settings as they stand in the dialog, with what is not to be stored.
Settings SetupForm::typedSettings(const Settings& changed) const {
    Settings settings = content_.rows.shown;
    for (const installer::Attribute& change : changed) {
        setValue(settings, change.key, change.value);
    }
    rows_->addUnstored(settings);
    return settings;
}

// What is to be tried: a file data source by its settings, as the driver manager hands them on, and one of the user by
// its name, as programs will.
ConnectionTest SetupForm::connectionTest(const Settings& changed) const {
    if (content_.isFile) {
        return {connectionString(content_.driver, typedSettings(changed))};
    }
    DataSourceChange change{content_.storedName, content_.stored, name_->value(), content_.driver, content_.pending};
    for (const installer::Attribute& setting : changed) {
        setValue(change.values, setting.key, setting.value);
    }
    Settings unstored;
    rows_->addUnstored(unstored);
    std::erase_if(unstored, [](const installer::Attribute& setting) { return setting.value.empty(); });
    return testOfDataSource(change.name, settingsAfter(change), unstored);
}

void SetupForm::test() {
    Settings changed;
    std::optional<SetupFailure> failure = collectSettings(changed);
    failure = failure ? failure : checkSettings(changed);
    if (failure) {
        report(*failure);
        return;
    }
    testConnectionFor(form_, connectionTest(changed), content_.library);
}

void SetupForm::accept() {
    if (const std::optional<SetupFailure> failure = collect()) {
        report(*failure);
        return;
    }
    if (!takesNameOfAnother()) {
        save();
        return;
    }
    Widget question =
        createMessageDialog(form_, kQuestionDialog, setupText(SetupMessage::kOverwriteQuestion, change_.name).data(),
                            catalogText(Message::kAnswerYes).data(), catalogText(Message::kAnswerNo).data(),
                            setupText(SetupMessage::kTitle, content_.driver).data());
    if (question != nullptr) {
        answerNoByReturn(question);
        XtAddCallback(question, XmNokCallback, replaceAccepted, this);
        XtManageChild(question);
    }
}

// Whether there is something else of the name that the data source is to have.
bool SetupForm::takesNameOfAnother() const {
    if (content_.isFile) {
        return change_.storedName.empty() && fileExists(change_.name);
    }
    return !installer::sameName(change_.name, change_.storedName) && dataSourceExists(change_.name);
}

void SetupForm::save() {
    const auto saved = content_.isFile ? saveFileDataSource : saveDataSource;
    if (const std::optional<SetupFailure> failure = saved(change_)) {
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

// Shows a box with one button.
void SetupForm::showBox(unsigned long kind, const std::string& text) {
    Widget box = createMessageDialog(form_, kind, std::string(text).data(), catalogText(Message::kOk).data(),
                                     std::string().data(), setupText(SetupMessage::kTitle, content_.driver).data());
    if (box != nullptr) {
        XtManageChild(box);
    }
}

void SetupForm::tellOfWhatIsLeftOut() {
    if (content_.leftOut.empty()) {
        return;
    }
    std::string items;
    for (std::size_t place = 0; place < content_.leftOut.size(); ++place) {
        if (place == kMostItemsTold) {
            items += "\n...";
            break;
        }
        items += "\n" + content_.leftOut[place].substr(0, kLongestItemTold);
    }
    showBox(kInformationDialog, setupText(SetupMessage::kLeftOut, items));
}

// Leaves the user in the field that has to be mended.
void SetupForm::focusOn(const std::string& key) {
    if (key.empty()) {
        return;
    }
    Widget field = rows_->fieldFor(key);
    if (installer::sameName(key, kDescriptionKey)) {
        field = description_->focus();
    } else if (field == nullptr || installer::sameName(key, kNameKey)) {
        field = name_->focus();
    }
    XmProcessTraversal(field, XmTRAVERSE_CURRENT);
}

void SetupForm::okPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    reportingLackOfMemory(self->form_, [self] { self->accept(); });
}

void SetupForm::cancelPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    static_cast<SetupForm*>(form)->finish();
}

void SetupForm::testPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    reportingLackOfMemory(self->form_, [self] { self->test(); });
}

void SetupForm::aboutPressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    reportingLackOfMemory(self->form_, [self] {
        describeForAbout(self->content_.library);
        XtManageChild(createAbtForm(self->form_));
    });
}

void SetupForm::helpPressed(Widget /*widget*/, XtPointer /*form*/, XtPointer /*callData*/) {
    showAdministratorHelp("setup");
}

void SetupForm::replaceAccepted(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    auto* self = static_cast<SetupForm*>(form);
    reportingLackOfMemory(self->form_, [self] { self->save(); });
}

void SetupForm::resized(Widget /*widget*/, XtPointer form, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that is first mapped may have had its size before it existed.
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        const auto* self = static_cast<SetupForm*>(form);
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
    showHelpTopic = showAdministratorHelp;
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
