// One line of the setup form: a label and the field of one setting. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <string>

#include "setup/driver_properties.h"

// Passwords have no text outside of this type and the settings themselves: it is wiped when it goes.
class SettingRow {
public:
    virtual ~SettingRow() = default;
    SettingRow(const SettingRow&) = delete;
    SettingRow& operator=(const SettingRow&) = delete;

    const std::string& key() const noexcept { return key_; }
    // For the form to place. The field is filled already.
    Widget label() const noexcept { return label_; }
    Widget field() const noexcept { return field_; }
    // What belongs to the field and stands on its right, a word or a button; null when there is none.
    Widget companion() const noexcept { return companion_; }
    // Further lines below the field: a choice, and a word of it below that; null when there is none.
    Widget toggle() const noexcept { return toggle_; }
    Widget toggleHint() const noexcept { return toggleHint_; }
    // The label in words, with the key as the file has it, and what the driver says of the setting: one line; empty
    // when there is nothing to be said.
    const std::string& help() const noexcept { return help_; }
    std::string labelText() const;
    // Changes the label, which then gets any letter.
    void rename(const std::string& label);
    // Whether the field grows with the window.
    virtual bool isStretched() const { return true; }
    // The widget inside of the field that takes the keyboard.
    virtual Widget focus() const noexcept { return field_; }

    // What stands in the field, without blanks around it.
    virtual std::string value() const = 0;
    // The same as the file has it.
    virtual std::string storedValue() const { return value(); }
    // Whether it is to be stored; what is not is deleted from the data source.
    virtual bool isStored() const { return true; }
    // Whether the file is left alone with it, whatever stands in the field.
    bool isNeverStored() const noexcept { return isNeverStored_; }
    // Whether it is another than at first. What a field can't show exactly counts as unchanged while nobody touches it.
    bool isChanged() const { return value() != initial_; }

protected:
    SettingRow(Widget parent, std::string key);
    // Says behind the field what the driver does without a value, when that is known.
    void tellDefault(Widget parent, const DriverProperty& property);
    // To be called by each kind whose field takes the keyboard when it is filled.
    void filled();

    std::string key_;
    Widget label_ = nullptr;
    Widget field_ = nullptr;
    Widget companion_ = nullptr;
    Widget toggle_ = nullptr;
    Widget toggleHint_ = nullptr;
    std::string initial_;

private:
    friend std::unique_ptr<SettingRow> createSettingRow(Widget, const DriverProperty&, const std::string&, bool);

    // Lets the help tell the key, where the label is another.
    void nameKey();

    std::string help_;
    bool isNeverStored_ = false;
};

// Makes label and field as children of the form `parent`, named "Lbl", "Txt" or "Opt" and the key. The row must live as
// long as its widgets. `isInFile` tells whether the data source has a value of the setting already. Null for a hidden
// property.
std::unique_ptr<SettingRow> createSettingRow(Widget parent, const DriverProperty& property, const std::string& value,
                                             bool isInFile);

// A row of plain text with a label of the caller's and a field of the given name.
std::unique_ptr<SettingRow> createTextRow(Widget parent, const std::string& fieldName, const std::string& label,
                                          const std::string& value);
