#include "setup/setting_row.h"

#include <Xm/ComboBox.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/PushBG.h>
#include <Xm/RowColumn.h>
#include <Xm/TextF.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <new>
#include <vector>

#include "installer/configuration.h"
#include "motifutil/text_verifiers.h"
#include "motifutil/widgets.h"
#include "setup/data_source.h"
#include "setup/setup_texts.h"

namespace {

constexpr short kTextColumns = 36;
constexpr short kComboColumns = 16;
constexpr int kMostVisibleChoices = 10;

// A name that resource files can refer to: dots and blanks have a meaning there.
std::string widgetName(const char* prefix, const std::string& key) {
    std::string name = prefix + key;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char byte) { return byte < 0x80 && std::isalnum(byte) == 0; }, '_');
    return name;
}

// Drivers name their settings for files; the common ones read better in words.
std::string labelText(const std::string& key) {
    struct Label {
        const char* key;
        SetupMessage::Number text;
    };
    constexpr std::array<Label, 9> kLabels{{{"Database", SetupMessage::kDatabase},
                                            {"Server", SetupMessage::kServer},
                                            {"Servername", SetupMessage::kServer},
                                            {"Port", SetupMessage::kPort},
                                            {"UID", SetupMessage::kUser},
                                            {"User", SetupMessage::kUser},
                                            {"Username", SetupMessage::kUser},
                                            {"PWD", SetupMessage::kPassword},
                                            {"Password", SetupMessage::kPassword}}};
    const auto* known = std::find_if(kLabels.begin(), kLabels.end(),
                                     [&key](const Label& label) { return installer::sameName(label.key, key); });
    return known == kLabels.end() ? key : setupText(known->text);
}

std::string fieldText(Widget textField) {
    const XtTextPtr text(XmTextFieldGetString(textField));
    return text ? std::string(text.get()) : std::string();
}

class TextRow : public SettingRow {
public:
    TextRow(Widget parent, const std::string& key, const std::string& fieldName, const std::string& value)
        : SettingRow(parent, key) {
        field_ = createTextField(parent, fieldName.c_str());
        XtVaSetValues(field_, XmNcolumns, kTextColumns, nullptr);
        XmTextFieldSetString(field_, const_cast<char*>(value.c_str()));
        filled();
    }
    std::string value() const override { return trimmed(fieldText(field_)); }
};

class PasswordRow : public SettingRow {
public:
    PasswordRow(Widget parent, const std::string& key, const std::string& value) : SettingRow(parent, key) {
        field_ = createTextField(parent, widgetName("Txt", key).c_str());
        XtVaSetValues(field_, XmNcolumns, kTextColumns, nullptr);
        // First the verifier: the field itself never sees the password, not even the stored one.
        XtAddCallback(field_, XmNmodifyVerifyCallback, checkPassword, static_cast<XtPointer>(&password_));
        XmTextFieldSetString(field_, const_cast<char*>(value.c_str()));
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

private:
    char* password_ = nullptr;
};

// A value that is shown and can't be changed.
class FixedRow : public SettingRow {
public:
    FixedRow(Widget parent, const std::string& key, const std::string& value) : SettingRow(parent, key), value_(value) {
        field_ = createLabel(parent, widgetName("Txt", key).c_str(), value);
        XtVaSetValues(field_, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
        filled();
    }
    std::string value() const override { return value_; }

private:
    std::string value_;
};

// A field with a list of choices below it.
class ComboRow : public SettingRow {
public:
    ComboRow(Widget parent, const DriverProperty& property, const std::string& value)
        : SettingRow(parent, property.key) {
        std::vector<XmStringPtr> owned;
        std::vector<XmString> items;
        for (const std::string& choice : property.choices) {
            owned.push_back(compoundString(choice));
            items.push_back(owned.back().get());
        }
        const int count = static_cast<int>(items.size());
        ArgumentList arguments;
        arguments.set(XmNcomboBoxType, XmDROP_DOWN_COMBO_BOX)
            .set(XmNitems, items.data())
            .set(XmNitemCount, count)
            .set(XmNvisibleItemCount, std::min(count, kMostVisibleChoices))
            .set(XmNcolumns, kComboColumns)
            .set(XmNpositionMode, XmONE_BASED);
        field_ = XmCreateComboBox(parent, widgetName("Opt", property.key).data(), arguments.data(), arguments.size());
        if (field_ == nullptr) {
            throw std::bad_alloc();
        }
        XtVaGetValues(field_, XmNtextField, &text_, nullptr);
        removeFrame();
        XtManageChild(field_);
        XmTextFieldSetString(text_, const_cast<char*>(value.c_str()));
        hideIdleCursor(text_);
        // An empty field says nothing of what the driver does then.
        if (!property.defaultValue.empty()) {
            hint_ = createLabel(parent, widgetName("LblDefault", property.key).c_str(),
                                setupText(SetupMessage::kDefaultHint, property.defaultValue));
        }
        filled();
    }
    bool isStretched() const override { return false; }
    Widget focus() const override { return text_; }
    std::string value() const override { return trimmed(fieldText(text_)); }

private:
    // The frames of text and list are enough. The box hands whatever it is given on to them, so they get theirs back.
    void removeFrame() {
        Widget list = nullptr;
        XtVaGetValues(field_, XmNlist, &list, nullptr);
        Dimension shadow = 0;
        Dimension marginWidth = 0;
        Dimension marginHeight = 0;
        XtVaGetValues(text_, XmNshadowThickness, &shadow, XmNmarginWidth, &marginWidth, XmNmarginHeight, &marginHeight,
                      nullptr);
        XtVaSetValues(field_, XmNshadowThickness, 0, XmNmarginWidth, 0, XmNmarginHeight, 0, nullptr);
        XtVaSetValues(text_, XmNshadowThickness, shadow, XmNmarginWidth, marginWidth, XmNmarginHeight, marginHeight,
                      nullptr);
        XtVaSetValues(list, XmNshadowThickness, shadow, nullptr);
        // The box draws the highlight for its text, which asks for no room for it.
        Dimension highlight = 0;
        XtVaGetValues(field_, XmNhighlightThickness, &highlight, nullptr);
        XtVaSetValues(field_, XmNheight, preferredHeight(text_) + 2 * highlight, nullptr);
    }

    Widget text_ = nullptr;
};

// An option menu. Its first entry leaves the setting to the driver, and a stored value that the driver does not offer is one
// more entry, so that it is not lost.
class MenuRow : public SettingRow {
public:
    MenuRow(Widget parent, const DriverProperty& property, const std::string& value)
        : SettingRow(parent, property.key), values_{""} {
        values_.insert(values_.end(), property.choices.begin(), property.choices.end());
        auto selected = std::find_if(values_.begin(), values_.end(), [&value](const std::string& choice) {
            return installer::sameName(choice, value);
        });
        if (selected == values_.end()) {
            selected = values_.insert(values_.end(), value);
        }
        const auto index = selected - values_.begin();

        Widget menu = XmCreatePulldownMenu(parent, widgetName("Menu", property.key).data(), nullptr, 0);
        for (const std::string& choice : values_) {
            buttons_.push_back(createEntry(menu, choice));
        }
        const XmStringPtr noLabel = compoundString("");
        ArgumentList arguments;
        arguments.set(XmNsubMenuId, menu)
            .set(XmNmenuHistory, buttons_[static_cast<std::size_t>(index)])
            .set(XmNlabelString, noLabel.get())
            .set(XmNmarginWidth, 0)
            .set(XmNmarginHeight, 0)
            .set(XmNspacing, 0);
        field_ = XmCreateOptionMenu(parent, widgetName("Opt", property.key).data(), arguments.data(), arguments.size());
        if (field_ == nullptr) {
            throw std::bad_alloc();
        }
        XtUnmanageChild(XmOptionLabelGadget(field_));
        XtManageChild(field_);
        filled();
    }
    bool isStretched() const override { return false; }
    std::string value() const override {
        Widget chosen = nullptr;
        XtVaGetValues(field_, XmNmenuHistory, &chosen, nullptr);
        const auto found = std::find(buttons_.begin(), buttons_.end(), chosen);
        return found == buttons_.end() ? std::string() : values_[static_cast<std::size_t>(found - buttons_.begin())];
    }

private:
    Widget createEntry(Widget menu, const std::string& choice) {
        const std::string text = choice.empty() ? setupText(SetupMessage::kDriverDefault) : choice;
        const XmStringPtr label = compoundString(text);
        ArgumentList arguments;
        arguments.set(XmNlabelString, label.get());
        // The first letter or digit that no entry above has.
        const auto mnemonic = std::find_if(text.begin(), text.end(), [this](unsigned char byte) {
            return byte < 0x80 && std::isalnum(byte) != 0 &&
                   mnemonics_.find(static_cast<char>(std::tolower(byte))) == std::string::npos;
        });
        if (mnemonic != text.end()) {
            mnemonics_.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(*mnemonic))));
            arguments.set(XmNmnemonic, static_cast<KeySym>(static_cast<unsigned char>(*mnemonic)));
        }
        Widget button =
            XmCreatePushButtonGadget(menu, widgetName("Choice", choice).data(), arguments.data(), arguments.size());
        XtManageChild(button);
        return button;
    }

    std::vector<std::string> values_;
    std::vector<Widget> buttons_;
    std::string mnemonics_;
};

}  // namespace

SettingRow::SettingRow(Widget parent, std::string key) : key_(std::move(key)) {
    label_ = createLabel(parent, widgetName("Lbl", key_).c_str(), labelText(key_));
    XtVaSetValues(label_, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
}

std::unique_ptr<SettingRow> createSettingRow(Widget parent, const DriverProperty& property, const std::string& value) {
    switch (property.kind) {
        case PropertyKind::kText:
            return std::make_unique<TextRow>(parent, property.key, widgetName("Txt", property.key), value);
        case PropertyKind::kPassword:
            return std::make_unique<PasswordRow>(parent, property.key, value);
        case PropertyKind::kMenu:
            return std::make_unique<MenuRow>(parent, property, value);
        case PropertyKind::kCombo:
            return std::make_unique<ComboRow>(parent, property, value);
        case PropertyKind::kFixed:
            return std::make_unique<FixedRow>(parent, property.key, value.empty() ? property.defaultValue : value);
        case PropertyKind::kHidden:
            break;
    }
    return nullptr;
}

std::unique_ptr<SettingRow> createTextRow(Widget parent, const std::string& fieldName, const std::string& label,
                                          const std::string& value) {
    auto row = std::make_unique<TextRow>(parent, label, fieldName, value);
    setLabel(row->label(), label);
    return row;
}
