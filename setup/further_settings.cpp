#include "setup/further_settings.h"

#include <Xm/Text.h>
#include <odbcinst.h>

#include <string_view>

#include "motifutil/mnemonics.h"
#include "motifutil/widgets.h"
#include "setup/setup_texts.h"

namespace {

constexpr short kRows = 5;
constexpr short kColumns = 36;

// The settings that the lines of `text` name, or what is wrong with them.
std::optional<SetupFailure> parseLines(std::string_view text, Settings& settings) {
    const auto wrong = [](SetupMessage::Number message, const std::string& subject) {
        return SetupFailure{ODBC_ERROR_INVALID_KEYWORD_VALUE, setupText(message, subject), subject};
    };
    SettingIndex index(settings);
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string line = installer::trimmed(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty()) {
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) {
            return wrong(SetupMessage::kNotKeyAndValue, line);
        }
        const std::string key = installer::trimmed(line.substr(0, equals));
        if (!index.add(key)) {
            return wrong(SetupMessage::kKeyTwice, key);
        }
        settings.push_back({key, installer::trimmed(line.substr(equals + 1))});
    }
    return std::nullopt;
}

}  // namespace

FurtherSettings::FurtherSettings(Widget parent, const Settings& settings) {
    label_ = createLabel(parent, "LblFurtherSettings", setupText(SetupMessage::kFurtherSettings));
    XtVaSetValues(label_, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
    text_ = createScrolledText(parent, "TxtFurtherSettings", kRows, kColumns);
    leadTo(label_, text_, setupMnemonic(SetupMessage::kFurtherSettings));
    // A scrolled window asks for no room of its own before it is seen.
    XtVaSetValues(frame(), XmNheight, preferredHeight(text_), nullptr);
    hint_ = createLabel(parent, "LblFurtherSettingsHint", setupText(SetupMessage::kFurtherSettingsHint));

    std::string lines;
    for (const installer::Attribute& setting : settings) {
        lines += setting.key + "=" + setting.value + "\n";
    }
    XmTextSetString(text_, lines.data());
    parseLines(text(), initial_);
}

std::optional<SetupFailure> FurtherSettings::changes(const std::function<bool(const std::string&)>& isTaken,
                                                     Settings& changed) const {
    Settings now;
    if (std::optional<SetupFailure> failure = parseLines(text(), now)) {
        return failure;
    }
    const SettingIndex initially(initial_);
    for (const installer::Attribute& setting : now) {
        const std::optional<std::size_t> before = initially.find(setting.key);
        if (!before && isTaken(setting.key)) {
            return SetupFailure{ODBC_ERROR_INVALID_KEYWORD_VALUE, setupText(SetupMessage::kKeyHasField, setting.key),
                                setting.key};
        }
        if (!before || initial_[*before].value != setting.value) {
            setValue(changed, setting.key, setting.value);
        }
    }
    const SettingIndex stillThere(now);
    for (const installer::Attribute& setting : initial_) {
        if (!stillThere.find(setting.key)) {
            setValue(changed, setting.key, {});
        }
    }
    return std::nullopt;
}

std::string FurtherSettings::text() const {
    return fieldText(text_);
}
