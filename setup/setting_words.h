// What stands before the field of a setting: drivers name their settings for files, which read better in words.
#pragma once

#include <string>
#include <vector>

#include "catalogs/message_numbers.h"

// The words for a setting by its key: a text of ours for the common ones, else the parts of the key as words
// ("MaxVarcharSize" is "Max varchar size").
[[nodiscard]] std::string wordsOf(const std::string& key);

// The letter of these words that acts on the field; empty when any may.
[[nodiscard]] std::string letterOf(const std::string& key);

// Whether the choices are those of a switch: "0" and "1", or "No" and "Yes".
[[nodiscard]] bool isSwitch(const std::vector<std::string>& choices);

// The word for one of a switch's choices.
[[nodiscard]] std::string switchWord(const std::string& choice);
