// The field for settings that have no row of their own: one "key=value" on each line. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <functional>
#include <optional>
#include <string>

#include "setup/settings.h"

class FurtherSettings {
public:
    // Makes label, field and hint as children of the form `parent`, and shows `settings`.
    FurtherSettings(Widget parent, const Settings& settings);
    FurtherSettings(const FurtherSettings&) = delete;
    FurtherSettings& operator=(const FurtherSettings&) = delete;

    Widget label() const noexcept { return label_; }
    // What the form places: the text with its scroll bars, and the line below it.
    Widget frame() const { return XtParent(text_); }
    Widget hint() const noexcept { return hint_; }
    // The widget that takes the keyboard.
    Widget focus() const noexcept { return text_; }

    // What differs from the settings that were shown first; a line that was deleted has an empty value. Or what is
    // wrong with a line, keys included for which `isTaken` is true.
    std::optional<SetupFailure> changes(const std::function<bool(const std::string&)>& isTaken,
                                        Settings& changed) const;

private:
    std::string text() const;

    Widget label_ = nullptr;
    Widget text_ = nullptr;
    Widget hint_ = nullptr;
    Settings initial_;
};
