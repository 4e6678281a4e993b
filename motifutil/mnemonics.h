// Mnemonics: the letter of a button, a tab, a toggle or the label of a field that acts on it together with Alt, and is
// underlined. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <cstddef>
#include <optional>
#include <string>

#include "catalogs/message_numbers.h"

// The letter that the catalog has for the label with this number; empty when there is none.
[[nodiscard]] std::string mnemonicFor(Message::Number label);

// Whether a key types the character by itself, so that Alt can go with it.
[[nodiscard]] bool canBeMnemonic(wchar_t character);
// Where in a label its letter stands in parentheses, as languages have it whose words keys do not type: "追加(A)...".
[[nodiscard]] std::optional<std::size_t> bracketedLetter(const std::wstring& label);
// A label's words, without such a letter.
[[nodiscard]] std::string labelWords(const std::string& label);

// Gives a widget with a label its letter, as it stands in the label; one in parentheses is put there. A text that is
// not one letter of the label takes the letter away.
void setMnemonic(Widget labelled, const std::string& letter);
// The letter in lower case; 0 when there is none.
[[nodiscard]] wchar_t mnemonicOf(Widget labelled);

// Makes the letter of a label move the keyboard to `field`. Without one the label gets a free one when its window comes
// up (window_keys.h).
void leadTo(Widget label, Widget field, const std::string& letter = {});

// Underlines a letter that stands in the label; 0 takes it away.
void underline(Widget labelled, wchar_t letter);

// What the letter of a widget acts on: a button or a toggle itself, and a label's field; null for what takes no letter.
[[nodiscard]] Widget mnemonicTarget(Widget labelled);

// The characters of a label, as they stand there.
[[nodiscard]] std::wstring labelOf(Widget labelled);
