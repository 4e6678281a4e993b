#include "setup/setting_rows.h"

#include <Xm/Form.h>
#include <Xm/RowColumn.h>
#include <Xm/ScrolledW.h>
#include <Xm/ToggleB.h>
#include <odbcinst.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>

#include "motifutil/mnemonics.h"
#include "motifutil/scrolling.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"
#include "motifutil/window_keys.h"
#include "setup/setup_texts.h"

namespace {

// Makes a label as high as its field, so that their texts are level.
void keepLevel(Widget label, Widget field) {
    Attach(label).levelWith(field);
    XtVaSetValues(label, XmNbottomAttachment, XmATTACH_OPPOSITE_WIDGET, XmNbottomWidget, field, nullptr);
}

void placeBelow(Widget widget, Widget above, int margin) {
    if (above == nullptr) {
        Attach(widget).topForm(margin);
    } else {
        Attach(widget).below(above, kRowGap);
    }
}

void placeField(Widget label, Widget field, Widget above, int margin, bool stretched) {
    placeBelow(field, above, margin);
    Attach(field).rightOf(label, kWindowGap);
    if (stretched) {
        Attach(field).rightForm(margin);
    }
    // As high as the field, so that their texts are level. Nothing of it depends on the field, which depends on it: for
    // a form that is a circle, even if one is about widths and the other about heights.
    Dimension height = 0;
    XtVaGetValues(field, XmNheight, &height, nullptr);
    placeBelow(label, above, margin);
    Attach(label).leftForm(margin);
    XtVaSetValues(label, XmNrecomputeSize, False, XmNheight, height, nullptr);
}

// Puts a widget between a field and the end of its row. Of it too nothing may depend on the field.
void placeAtEnd(Widget companion, Widget field, Widget above, int margin) {
    placeBelow(companion, above, margin);
    Attach(companion).rightForm(margin);
    XtVaSetValues(companion, XmNrecomputeSize, False, XmNheight, preferredHeight(field), nullptr);
    Attach(field).leftOf(companion, kWindowGap);
}

// The file keeps no blanks at the ends, which a password may have.
bool isStorable(const SettingRow& row) {
    const std::string value = row.storedValue();
    return value == installer::trimmed(value);
}

// Two rows with the same words would be told apart by nobody: the driver's own names do.
void useKeysForEqualLabels(const std::vector<std::unique_ptr<SettingRow>>& rows) {
    for (const auto& row : rows) {
        const bool isAlone = std::none_of(rows.begin(), rows.end(), [&row](const auto& other) {
            return other != row && other->labelText() == row->labelText();
        });
        if (!isAlone) {
            row->rename(row->key());
        }
    }
}

}  // namespace

SettingRows::SettingRows(Widget dialogForm, const RowContent& content) : properties_(content.properties) {
    // A password never stands in plain text, so it can't stand among the further settings, and none is stored without
    // the person's seeing it.
    for (const installer::Attribute& setting : content.shown) {
        if (installer::isPasswordKey(setting.key) && !hasRow(setting.key)) {
            properties_.push_back({setting.key, "", PropertyKind::kPassword, {}});
        }
    }
    createPages(dialogForm);
    createRows(content);
    watchScrolling();
}

void SettingRows::createWindow(Widget dialogForm) {
    window_ = createScrolledWindow(dialogForm, "scrWinSettings");
    XtVaSetValues(window_, XmNshadowThickness, 0, nullptr);
    // The rows belong to the dialog, whatever ground lists in scrolled windows have.
    Widget clipWindow = nullptr;
    Pixel ground = 0;
    XtVaGetValues(dialogForm, XmNbackground, &ground, nullptr);
    XtVaGetValues(window_, XmNclipWindow, &clipWindow, nullptr);
    XtVaSetValues(clipWindow, XmNbackground, ground, nullptr);
    // It would grab Home, End and the page keys, which the fields in it need.
    XtUninstallTranslations(clipWindow);
}

// One page for a few rows, else one for each group that has any. Further settings stand on the last.
void SettingRows::createPages(Widget dialogForm) {
    constexpr std::ptrdiff_t kMostRowsOfOnePage = 12;
    struct Tab {
        SettingGroup group;
        const char* name;
        SetupMessage::Number text;
    };
    constexpr std::array<Tab, 3> kTabs{{{SettingGroup::kGeneral, "TabGeneral", SetupMessage::kTabGeneral},
                                        {SettingGroup::kSecurity, "TabSecurity", SetupMessage::kTabSecurity},
                                        {SettingGroup::kAdvanced, "TabAdvanced", SetupMessage::kTabAdvanced}}};
    const auto isShown = [](const DriverProperty& property) { return property.kind != PropertyKind::kHidden; };
    if (std::count_if(properties_.begin(), properties_.end(), isShown) <= kMostRowsOfOnePage) {
        createWindow(dialogForm);
        pages_ = {{this, SettingGroup::kGeneral, createForm(window_, "FormSettings"), nullptr, 0}};
        return;
    }
    // Before the window, since the keyboard reaches them in this order.
    ArgumentList arguments;
    arguments.set(XmNorientation, XmHORIZONTAL).set(XmNmarginWidth, 0).set(XmNmarginHeight, 0).set(XmNspacing, 0);
    static char name[] = "TabsSettings";
    tabs_ = XmCreateRadioBox(dialogForm, name, arguments.data(), arguments.size());
    if (tabs_ == nullptr) {
        throw std::bad_alloc();
    }
    createWindow(dialogForm);
    // The callbacks of the tabs point to the pages, which so must not move.
    pages_.reserve(kTabs.size());
    for (const Tab& tab : kTabs) {
        if (std::none_of(properties_.begin(), properties_.end(), [&](const DriverProperty& property) {
                return isShown(property) && groupOf(property) == tab.group;
            })) {
            continue;
        }
        Widget button = createToggleButton(tabs_, tab.name, setupText(tab.text));
        setMnemonic(button, setupMnemonic(tab.text));
        XtVaSetValues(button, XmNnavigationType, XmNONE, XmNindicatorOn, XmINDICATOR_NONE, XmNshadowThickness, 1,
                      XmNmarginWidth, kWindowGap, nullptr);
        pages_.push_back({this, tab.group, createForm(window_, "FormSettings"), button, 0});
        XtAddCallback(button, XmNvalueChangedCallback, tabChosen, &pages_.back());
        if (pages_.size() > 1) {
            XtUnmanageChild(pages_.back().form);
        }
    }
    XtManageChild(tabs_);
    XmToggleButtonSetState(pages_.front().tab, True, False);
    XtVaSetValues(window_, XmNworkWindow, pages_.front().form, nullptr);
}

Widget SettingRows::formFor(const DriverProperty& property) const {
    const auto page = std::find_if(pages_.begin(), pages_.end(),
                                   [&property](const Page& other) { return other.group == groupOf(property); });
    return page == pages_.end() ? pages_.front().form : page->form;
}

void SettingRows::showPage(const Page& page) {
    const auto place = static_cast<std::size_t>(&page - pages_.data());
    if (place == front_) {
        return;
    }
    XtUnmanageChild(pages_[front_].form);
    front_ = place;
    XtVaSetValues(window_, XmNworkWindow, page.form, nullptr);
    XtManageChild(page.form);
    for (const Page& other : pages_) {
        XmToggleButtonSetState(other.tab, &other == &page, False);
    }
    serveNewcomers(XtParent(XtParent(window_)));
    fit();
}

// Shows the page that the field stands on.
void SettingRows::bringToFront(Widget field) {
    for (const Page& page : pages_) {
        Widget form = field;
        while (form != nullptr && form != page.form) {
            form = XtParent(form);
        }
        if (form != nullptr) {
            showPage(page);
        }
    }
}

void SettingRows::tabChosen(Widget tab, XtPointer page, XtPointer /*callData*/) {
    if (XmToggleButtonGetState(tab) != 0) {
        const auto* chosen = static_cast<const Page*>(page);
        chosen->rows->showPage(*chosen);
        focusFirst(chosen->form);
    }
}

void SettingRows::createRows(const RowContent& content) {
    for (const DriverProperty& property : properties_) {
        const bool isInFile = !valueOf(content.stored, property.key).empty();
        if (auto row = createSettingRow(formFor(property), property, valueOf(content.shown, property.key), isInFile)) {
            rows_.push_back(std::move(row));
        }
    }
    useKeysForEqualLabels(rows_);
    if (content.hasFurtherSettings) {
        Settings further = content.shown;
        std::erase_if(further, [this](const installer::Attribute& setting) { return hasRow(setting.key); });
        further_ = std::make_unique<FurtherSettings>(pages_.back().form, further);
    }
}

void SettingRows::watchScrolling() {
    // Rows come into sight as they are reached, so the scroll bars need no keyboard.
    for (const char* which : {XmNverticalScrollBar, XmNhorizontalScrollBar}) {
        Widget scrollBar = nullptr;
        XtVaGetValues(window_, which, &scrollBar, nullptr);
        XtVaSetValues(scrollBar, XmNtraversalOn, False, nullptr);
    }
    XtAddCallback(window_, XmNtraverseObscuredCallback, hiddenFieldReached, nullptr);
    XtAddEventHandler(window_, StructureNotifyMask, False, resized, this);
    for (const Page& page : pages_) {
        scrollWithWheel(window_, page.form);
    }
    for (const auto& row : rows_) {
        for (Widget widget : {row->label(), row->focus(), row->companion(), row->toggle(), row->toggleHint()}) {
            if (widget != nullptr) {
                scrollWithWheel(window_, widget);
            }
        }
    }
}

std::vector<Widget> SettingRows::labels() const {
    std::vector<Widget> labels;
    for (const auto& row : rows_) {
        labels.push_back(row->label());
    }
    if (further_) {
        labels.push_back(further_->label());
    }
    return labels;
}

Widget placeRow(const SettingRow& row, Widget above, int margin) {
    placeField(row.label(), row.field(), above, margin, row.isStretched());
    if (row.companion() != nullptr && row.isStretched()) {
        placeAtEnd(row.companion(), row.field(), above, margin);
    } else if (row.companion() != nullptr) {
        Attach(row.companion()).rightOf(row.field(), kWindowGap);
        keepLevel(row.companion(), row.field());
    }
    if (row.toggle() == nullptr) {
        return row.field();
    }
    Attach(row.toggle()).below(row.field(), 0).rightOf(row.label(), kWindowGap);
    Attach(row.toggleHint()).below(row.toggle(), 0).rightOf(row.label(), kWindowGap);
    return row.toggleHint();
}

void SettingRows::layOut() {
    std::vector<Widget> lowest(pages_.size(), nullptr);
    for (const auto& row : rows_) {
        for (std::size_t place = 0; place < pages_.size(); ++place) {
            if (XtParent(row->label()) == pages_[place].form) {
                lowest[place] = placeRow(*row, lowest[place], 0);
            }
        }
    }
    if (further_) {
        Widget above = lowest.back();
        const auto labelHeight = static_cast<Dimension>(preferredHeight(further_->label()));
        placeField(further_->label(), further_->frame(), above, 0, true);
        XtVaSetValues(further_->label(), XmNheight, labelHeight, nullptr);
        // In line with the fields by way of the label: if it were by a field, they would depend on each other.
        Attach(further_->hint()).below(further_->frame(), 0).rightOf(further_->label(), kWindowGap);
    }
    for (Page& page : pages_) {
        page.height = preferredHeight(page.form);
        height_ = std::max(height_, page.height);
        width_ = std::max<int>(width_, preferredWidth(page.form));
    }
}

void SettingRows::show(int width, int height) {
    for (const Page& page : pages_) {
        XtVaSetValues(page.form, XmNresizePolicy, XmRESIZE_NONE, nullptr);
    }
    if (further_) {
        // Only now that the form has been measured: the further settings take what the window has to spare.
        XtVaSetValues(further_->hint(), XmNtopAttachment, XmATTACH_NONE, nullptr);
        Attach(further_->hint()).bottomForm();
        Attach(further_->frame()).bottomForm(preferredHeight(further_->hint()));
    }
    leastWidth_ = width < width_ ? width_ : 1;
    if (height < height_) {
        Widget scrollBar = nullptr;
        XtVaGetValues(window_, XmNverticalScrollBar, &scrollBar, nullptr);
        width += preferredWidth(scrollBar);
    }
    XtVaSetValues(window_, XmNwidth, width + kFrame, XmNheight, height + kFrame, nullptr);
}

// Lets the rows have the width of the window, unless the screen was too narrow for them, and its height where that is
// more than they need.
void SettingRows::fit() {
    const Page& page = pages_[front_];
    XtVaSetValues(page.form, XmNwidth, static_cast<Dimension>(std::max(viewWidth(window_), leastWidth_)), XmNheight,
                  static_cast<Dimension>(std::max(viewHeight(window_), page.height)), nullptr);
}

bool SettingRows::hasHelp() const {
    return std::any_of(rows_.begin(), rows_.end(), [](const auto& row) { return !row->help().empty(); });
}

void SettingRows::explainIn(HintLine& hint) const {
    for (const auto& row : rows_) {
        for (Widget widget : {row->focus(), row->companion(), row->toggle()}) {
            if (widget != nullptr) {
                hint.explain(widget, row->help());
            }
        }
    }
}

bool SettingRows::hasRow(const std::string& key) const {
    using installer::sameName;
    return sameName(key, kDescriptionKey) || sameName(key, kNameKey) || sameName(key, kDriverKey) ||
           std::any_of(properties_.begin(), properties_.end(),
                       [&key](const DriverProperty& property) { return sameName(property.key, key); });
}

std::optional<SetupFailure> SettingRows::collect(Settings& changed) {
    for (const auto& row : rows_) {
        if (row->isNeverStored()) {
            // Whoever opened the dialog may have proposed a value.
            std::erase_if(changed, [&row](const auto& change) { return installer::sameName(change.key, row->key()); });
        } else if (!row->isStored()) {
            setValue(changed, row->key(), {});
        } else if (row->isChanged()) {
            setValue(changed, row->key(), row->storedValue());
        }
    }
    Settings more;
    std::optional<SetupFailure> failure = furtherChanges(more);
    for (const installer::Attribute& setting : more) {
        setValue(changed, setting.key, isUnstoredPassword(setting) ? std::string() : setting.value);
    }
    if (failure) {
        // A row may have the same key, but the line is what has to be mended.
        failure->key.clear();
        bringToFront(further_->focus());
        XmProcessTraversal(further_->focus(), XmTRAVERSE_CURRENT);
    }
    return failure;
}

std::optional<SetupFailure> SettingRows::furtherChanges(Settings& changed) const {
    return further_ ? further_->changes([this](const std::string& key) { return hasRow(key); }, changed) : std::nullopt;
}

// Whether it is a password under another name, which is saved when the others are.
bool SettingRows::isUnstoredPassword(const installer::Attribute& setting) const {
    return installer::isPasswordKey(setting.key) && std::none_of(rows_.begin(), rows_.end(), [](const auto& row) {
               return row->toggle() != nullptr && row->isStored();
           });
}

void SettingRows::addUnstored(Settings& settings) const {
    for (const auto& row : rows_) {
        if (!row->isStored() || row->isNeverStored() || !isStorable(*row)) {
            setValue(settings, row->key(), row->storedValue());
        }
    }
    Settings more;
    if (!furtherChanges(more)) {
        for (const installer::Attribute& setting : more) {
            if (isUnstoredPassword(setting)) {
                setValue(settings, setting.key, setting.value);
            }
        }
    }
}

std::optional<SetupFailure> SettingRows::checkStorable() const {
    for (const auto& row : rows_) {
        if (row->isStored() && row->isChanged() && !isStorable(*row)) {
            return SetupFailure{ODBC_ERROR_INVALID_KEYWORD_VALUE, setupText(SetupMessage::kPasswordBlanks), row->key()};
        }
    }
    return std::nullopt;
}

Widget SettingRows::fieldFor(const std::string& key) {
    const auto row = std::find_if(rows_.begin(), rows_.end(),
                                  [&key](const auto& other) { return installer::sameName(other->key(), key); });
    Widget field = further_ ? further_->focus() : nullptr;
    if (row != rows_.end()) {
        field = (*row)->focus();
    }
    if (field != nullptr) {
        bringToFront(field);
    }
    return field;
}

void SettingRows::hiddenFieldReached(Widget window, XtPointer /*clientData*/, XtPointer callData) {
    XmScrollVisible(window, static_cast<XmTraverseObscuredCallbackStruct*>(callData)->traversal_destination, kRowGap,
                    kRowGap);
}

void SettingRows::resized(Widget /*window*/, XtPointer rows, XEvent* event, Boolean* /*continueToDispatch*/) {
    // A window that is first mapped may have had its size before it existed.
    if (event->type == ConfigureNotify || event->type == MapNotify) {
        static_cast<SettingRows*>(rows)->fit();
    }
}
