#include "setup/setting_row.h"

#include <Xm/ComboBox.h>
#include <Xm/Label.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>
#include <string_view>
#include <vector>

#include "installer/configuration.h"
#include "motifutil/message_dialog.h"
#include "motifutil/mnemonics.h"
#include "motifutil/script_fonts.h"
#include "motifutil/text_verifiers.h"
#include "motifutil/widgets.h"
#include "setup/path_chooser.h"
#include "setup/setting_words.h"
#include "setup/settings.h"
#include "setup/setup_texts.h"

namespace {

constexpr short kTextColumns = 42;
// What a text may take of the screen's width at first, in percent: a label stands before it, and a button may behind.
constexpr int kWidestText = 45;
constexpr short kChoiceColumns = 16;
constexpr int kMostVisibleChoices = 10;

// A name that resource files can refer to: dots and blanks have a meaning there.
std::string widgetName(const char* prefix, const std::string& key, const char* suffix = "") {
    std::string name = prefix + key + suffix;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char byte) { return byte < 0x80 && std::isalnum(byte) == 0; }, '_');
    return name;
}

// A field as wide as most values are, or as there is room for.
Widget createField(Widget parent, const std::string& name) {
    Widget field = createTextField(parent, name.c_str());
    XtVaSetValues(field, XmNcolumns, kTextColumns, nullptr);
    const int most = WidthOfScreen(XtScreen(field)) * kWidestText / 100;
    if (const int wanted = preferredWidth(field); wanted > most) {
        XtVaSetValues(field, XmNcolumns, static_cast<short>(kTextColumns * most / wanted), nullptr);
    }
    return field;
}

class TextRow : public SettingRow {
public:
    TextRow(Widget parent, const std::string& key, const std::string& fieldName, const std::string& value)
        : SettingRow(parent, key) {
        field_ = createField(parent, fieldName);
        XmTextFieldSetString(field_, const_cast<char*>(value.c_str()));
        filled();
    }
    std::string value() const override { return installer::trimmed(fieldText(field_)); }
};

// What the person sees as the dialog: the form whose parent is a shell.
Widget dialogAround(Widget widget) {
    while (!XtIsShell(XtParent(widget))) {
        widget = XtParent(widget);
    }
    return widget;
}

// A path, with a button that opens a dialog to choose it in.
class FileRow : public TextRow {
public:
    FileRow(Widget parent, const std::string& key, const std::string& value)
        : TextRow(parent, key, widgetName("Txt", key), value) {
        companion_ =
            createPushButton(parent, widgetName("Btn", key, "Browse").c_str(), Message::kBrowse, browse, field_);
        // A button in a line with fields is not much higher than they are.
        XtVaSetValues(companion_, XmNmarginHeight, 1, nullptr);
    }

private:
    static void browse(Widget button, XtPointer field, XtPointer /*callData*/) {
        reportingLackOfMemory(dialogAround(button), [field] { choosePath(static_cast<Widget>(field)); });
    }
};

// A password that the driver reads as it would a part of an address: "%" and two digits stand for a byte, "+" for a
// blank.
std::string percentDecoded(const std::string& text) {
    std::string decoded;
    for (std::size_t place = 0; place < text.size(); ++place) {
        const bool isCode = text[place] == '%' && place + 2 < text.size() &&
                            std::isxdigit(text[place + 1] & 0xFF) != 0 && std::isxdigit(text[place + 2] & 0xFF) != 0;
        if (isCode) {
            decoded += static_cast<char>(std::stoi(text.substr(place + 1, 2), nullptr, 16));
            place += 2;
        } else {
            decoded += text[place] == '+' ? ' ' : text[place];
        }
    }
    return decoded;
}

std::string percentEncoded(const std::string& text) {
    // Braces are a quotation to the driver, within which it decodes nothing.
    constexpr std::string_view kEncoded = "%+ {}";
    std::string encoded;
    for (const char byte : text) {
        char code[] = "%00";
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned int>(byte & 0xFF));
        encoded += kEncoded.find(byte) != std::string_view::npos ? code : std::string(1, byte);
    }
    return encoded;
}

// The password goes into the file only when the person says so: everything else that reads the file could read it too.
class PasswordRow : public SettingRow {
public:
    PasswordRow(Widget parent, const DriverProperty& property, const std::string& value, bool isInFile)
        : SettingRow(parent, property.key), isPercentEncoded_(property.isPercentEncoded) {
        const std::string& key = property.key;
        field_ = createField(parent, widgetName("Txt", key));
        // First the verifier: the field itself never sees the password, not even the stored one.
        XtAddCallback(field_, XmNmodifyVerifyCallback, checkPassword, static_cast<XtPointer>(&password_));
        std::string shown = isPercentEncoded_ ? percentDecoded(value) : value;
        XmTextFieldSetString(field_, shown.data());
        explicit_bzero(shown.data(), shown.size());
        if (!property.isNeverStored) {
            toggle_ =
                createToggleButton(parent, widgetName("TglSave", key).c_str(), setupText(SetupMessage::kSavePassword));
            setMnemonic(toggle_, setupMnemonic(SetupMessage::kSavePassword));
            XmToggleButtonSetState(toggle_, isInFile ? True : False, False);
            toggleHint_ = createLabel(parent, "LblSavePasswordHint", std::string());
            XmRenderTable fonts = nullptr;
            XtVaGetValues(toggleHint_, XmNrenderTable, &fonts, nullptr);
            setLabel(toggleHint_, wrapped(setupText(SetupMessage::kSavePasswordHint), fonts, preferredWidth(field_)));
        }
        filled();
    }
    ~PasswordRow() override {
        if (password_ != nullptr) {
            explicit_bzero(password_, std::strlen(password_));
            XtFree(password_);
        }
    }
    // Blanks included: whoever types a blank into a password means it.
    std::string value() const override { return password_ != nullptr ? password_ : ""; }
    std::string storedValue() const override { return isPercentEncoded_ ? percentEncoded(value()) : value(); }
    bool isStored() const override { return toggle_ != nullptr && XmToggleButtonGetState(toggle_) != 0; }

private:
    bool isPercentEncoded_;
    char* password_ = nullptr;
};

// A value that is shown and can't be changed.
class FixedRow : public SettingRow {
public:
    FixedRow(Widget parent, const std::string& key, const std::string& value) : SettingRow(parent, key), value_(value) {
        initial_ = value;
        field_ = createLabel(parent, widgetName("Txt", key).c_str(), value);
        XtVaSetValues(field_, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
    }
    std::string value() const override { return value_; }

private:
    std::string value_;
};

// A field with a list of choices that drops down from it. Both kinds of choice rows are made of it: an option menu
// would do for one, but Motif 2.3.8 ends the process at the first arrow key in one that the keyboard opened over this
// dialog.
class ChoiceRow : public SettingRow {
public:
    bool isStretched() const override { return false; }
    Widget focus() const noexcept override { return text_; }

protected:
    // `type` is XmDROP_DOWN_COMBO_BOX, whose field can be typed into, or XmDROP_DOWN_LIST.
    ChoiceRow(Widget parent, const std::string& key, unsigned char type, const std::vector<std::string>& choices)
        : SettingRow(parent, key) {
        std::vector<XmStringPtr> owned;
        std::vector<XmString> items;
        for (const std::string& choice : choices) {
            owned.push_back(compoundString(choice));
            items.push_back(owned.back().get());
        }
        const int count = static_cast<int>(items.size());
        ArgumentList arguments;
        arguments.set(XmNcomboBoxType, type)
            .set(XmNitems, items.data())
            .set(XmNitemCount, count)
            .set(XmNvisibleItemCount, std::min(count, kMostVisibleChoices))
            .set(XmNcolumns, kChoiceColumns)
            .set(XmNpositionMode, XmONE_BASED)
            .set(XmNmatchBehavior, type == XmDROP_DOWN_LIST ? int{XmQUICK_NAVIGATE} : int{XmNONE});
        field_ = XmCreateComboBox(parent, widgetName("Opt", key).data(), arguments.data(), arguments.size());
        if (field_ == nullptr) {
            throw std::bad_alloc();
        }
        XtVaGetValues(field_, XmNtextField, &text_, nullptr);
        removeFrame();
        XtManageChild(field_);
        hideIdleCursor(text_);
        followScripts(text_);
    }

    Widget text_ = nullptr;

private:
    // One frame, around the text, is enough, and one around the list. The box hands whatever it is given on to them.
    void removeFrame() {
        Widget list = nullptr;
        XtVaGetValues(field_, XmNlist, &list, nullptr);
        giveFonts(list);
        Dimension shadow = 0;
        Dimension marginWidth = 0;
        Dimension marginHeight = 0;
        XtVaGetValues(field_, XmNshadowThickness, &shadow, nullptr);
        XtVaGetValues(text_, XmNmarginWidth, &marginWidth, XmNmarginHeight, &marginHeight, nullptr);
        // The box draws its arrow in the colours of a relief, in which it looks switched off.
        Pixel ink = 0;
        XtVaGetValues(field_, XmNforeground, &ink, nullptr);
        XtVaSetValues(field_, XmNshadowThickness, 0, XmNmarginWidth, 0, XmNmarginHeight, 0, XmNtopShadowColor, ink,
                      XmNbottomShadowColor, ink, nullptr);
        XtVaSetValues(text_, XmNshadowThickness, shadow, XmNmarginWidth, marginWidth, XmNmarginHeight, marginHeight,
                      nullptr);
        XtVaSetValues(list, XmNshadowThickness, shadow, nullptr);
        // The box draws the highlight for its text, which asks for no room for it.
        Dimension highlight = 0;
        XtVaGetValues(field_, XmNhighlightThickness, &highlight, nullptr);
        XtVaSetValues(field_, XmNheight, preferredHeight(text_) + 2 * highlight, nullptr);
    }
};

// Choices behind the one that leaves the setting to the driver.
std::vector<std::string> withDriverDefault(const std::vector<std::string>& choices) {
    std::vector<std::string> all{setupText(SetupMessage::kDriverDefault)};
    std::copy_if(choices.begin(), choices.end(), std::back_inserter(all),
                 [](const std::string& choice) { return !choice.empty(); });
    return all;
}

// Text, with choices to pick from.
class ComboRow : public ChoiceRow {
public:
    ComboRow(Widget parent, const DriverProperty& property, const std::string& value)
        : ChoiceRow(parent, property.key, XmDROP_DOWN_COMBO_BOX, withDriverDefault(property.choices)) {
        XmTextFieldSetString(text_, const_cast<char*>(value.c_str()));
        tellDefault(parent, property);
        filled();
    }
    std::string value() const override {
        const std::string text = installer::trimmed(fieldText(text_));
        return text == setupText(SetupMessage::kDriverDefault) ? std::string() : text;
    }
};

// One of the choices. The first leaves the setting to the driver, and a stored value that the driver does not offer is
// one more, so that it is not lost.
class MenuRow : public ChoiceRow {
public:
    MenuRow(Widget parent, const DriverProperty& property, const std::string& value)
        : MenuRow(parent, property.key, allValues(property, value), value, isSwitch(property.choices)) {
        tellDefault(parent, property);
    }
    std::string value() const override {
        int position = 0;
        XtVaGetValues(field_, XmNselectedPosition, &position, nullptr);
        return position < 1 ? std::string() : values_[static_cast<std::size_t>(position - 1)];
    }

private:
    using Values = std::vector<std::string>;

    MenuRow(Widget parent, const std::string& key, const Values& values, const std::string& value, bool isSwitched)
        : ChoiceRow(parent, key, XmDROP_DOWN_LIST, labels(values, isSwitched)), values_(values) {
        XtVaSetValues(field_, XmNselectedPosition, static_cast<int>(positionOf(value, values)) + 1, nullptr);
        filled();
    }
    static Values allValues(const DriverProperty& property, const std::string& value) {
        Values values{""};
        std::copy_if(property.choices.begin(), property.choices.end(), std::back_inserter(values),
                     [](const std::string& choice) { return !choice.empty(); });
        if (positionOf(value, values) == values.size()) {
            values.push_back(value);
        }
        return values;
    }
    // A value that is stored, and is none of a switch's, stays as it stands.
    static Values labels(const Values& values, bool isSwitched) {
        Values labels = withDriverDefault(values);
        if (isSwitched) {
            std::transform(labels.begin() + 1, labels.begin() + 3, labels.begin() + 1, switchWord);
        }
        return labels;
    }
    static std::size_t positionOf(const std::string& value, const Values& values) {
        const auto found = std::find_if(values.begin(), values.end(), [&value](const std::string& other) {
            return installer::sameName(other, value);
        });
        return static_cast<std::size_t>(found - values.begin());
    }

    Values values_;
};

}  // namespace

SettingRow::SettingRow(Widget parent, std::string key) : key_(std::move(key)) {
    label_ = createLabel(parent, widgetName("Lbl", key_).c_str(), wordsOf(key_));
    XtVaSetValues(label_, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
}

void SettingRow::filled() {
    initial_ = value();
    leadTo(label_, focus(), letterOf(key_));
}

void SettingRow::rename(const std::string& label) {
    setLabel(label_, label);
    if (!XmIsLabel(field_)) {
        leadTo(label_, focus());
    }
}

void SettingRow::nameKey() {
    const std::string words = labelWords(labelText());
    if (!installer::sameName(words, key_)) {
        // The words stand before the field; the line has little room.
        help_ = help_.empty() ? setupText(SetupMessage::kHintKey, words, key_)
                              : setupText(SetupMessage::kHintKeyHelp, key_, help_);
    }
}

std::string SettingRow::labelText() const {
    XmString text = nullptr;
    XtVaGetValues(label_, XmNlabelString, &text, nullptr);
    return plainText(XmStringPtr(text).get());
}

void SettingRow::tellDefault(Widget parent, const DriverProperty& property) {
    // An empty field says nothing of what the driver does then.
    if (!property.defaultValue.empty()) {
        const std::string shown =
            isSwitch(property.choices) ? switchWord(property.defaultValue) : property.defaultValue;
        companion_ =
            createLabel(parent, widgetName("LblDefault", key_).c_str(), setupText(SetupMessage::kDefaultHint, shown));
    }
}

std::unique_ptr<SettingRow> createSettingRow(Widget parent, const DriverProperty& property, const std::string& value,
                                             bool isInFile) {
    std::unique_ptr<SettingRow> row;
    switch (property.kind) {
        case PropertyKind::kText:
            row = std::make_unique<TextRow>(parent, property.key, widgetName("Txt", property.key), value);
            break;
        case PropertyKind::kPassword:
            row = std::make_unique<PasswordRow>(parent, property, value, isInFile);
            break;
        case PropertyKind::kFile:
            row = std::make_unique<FileRow>(parent, property.key, value);
            break;
        case PropertyKind::kMenu:
            row = std::make_unique<MenuRow>(parent, property, value);
            break;
        case PropertyKind::kCombo:
            // There is nothing else to be typed where a switch is meant.
            if (isSwitch(property.choices)) {
                row = std::make_unique<MenuRow>(parent, property, value);
            } else {
                row = std::make_unique<ComboRow>(parent, property, value);
            }
            break;
        case PropertyKind::kFixed:
            row = std::make_unique<FixedRow>(parent, property.key, value.empty() ? property.defaultValue : value);
            break;
        case PropertyKind::kHidden:
            return nullptr;
    }
    if (!property.label.empty()) {
        row->rename(property.label);
    }
    row->help_ = property.help;
    // A field that grows with the window has no room behind it, as a list of choices has.
    if (property.kind == PropertyKind::kText && !property.defaultValue.empty()) {
        row->help_ += (row->help_.empty() ? "" : " ") + setupText(SetupMessage::kDefaultHint, property.defaultValue);
    }
    row->isNeverStored_ = property.isNeverStored;
    row->nameKey();
    return row;
}

std::unique_ptr<SettingRow> createTextRow(Widget parent, const std::string& fieldName, const std::string& label,
                                          const std::string& value) {
    auto row = std::make_unique<TextRow>(parent, label, fieldName, value);
    setLabel(row->label(), label);
    return row;
}
