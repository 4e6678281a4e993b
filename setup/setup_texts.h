// The setup library's own texts. GUI thread only, like everything in this folder.
#pragma once

#include <nl_types.h>

#include <string>

#include "catalogs/message_numbers.h"

// Opens the catalogs of this library and of the shared dialogs while it lives, those that lie in the install directory
// of the program that loaded us. Texts of a catalog that is missing are their numbers.
class SetupCatalogs {
public:
    SetupCatalogs();
    ~SetupCatalogs();
    SetupCatalogs(const SetupCatalogs&) = delete;
    SetupCatalogs& operator=(const SetupCatalogs&) = delete;
};

// The text with this number; `subject` takes the place of "%1" in it, `second` that of "%2".
std::string setupText(SetupMessage::Number number, const std::string& subject = {}, const std::string& second = {});

// The letter that acts on the label with this number (motifutil/mnemonics.h).
std::string setupMnemonic(SetupMessage::Number label);
