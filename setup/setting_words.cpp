#include "setup/setting_words.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "installer/configuration.h"
#include "setup/setup_texts.h"

namespace {

struct Label {
    const char* key;
    SetupMessage::Number text;
};
constexpr Label kLabels[] = {
    {"Database", SetupMessage::kDatabase},
    {"Server", SetupMessage::kServer},
    {"Servername", SetupMessage::kServer},
    {"Port", SetupMessage::kPort},
    {"UID", SetupMessage::kUser},
    {"User", SetupMessage::kUser},
    {"Username", SetupMessage::kUser},
    {"PWD", SetupMessage::kPassword},
    {"Password", SetupMessage::kPassword},
    {"Timeout", SetupMessage::kLabelTimeout},
    {"FKSupport", SetupMessage::kLabelForeignKeys},
    {"StepAPI", SetupMessage::kLabelStepApi},
    {"ShortNames", SetupMessage::kLabelShortNames},
    {"SyncPragma", SetupMessage::kLabelSynchronization},
    {"JournalMode", SetupMessage::kLabelJournalMode},
    {"BigInt", SetupMessage::kLabelBigIntegers},
    {"Socket", SetupMessage::kLabelSocket},
    {"Charset", SetupMessage::kLabelCharacterSet},
    {"ClientCharset", SetupMessage::kLabelCharacterSet},
    {"SSLmode", SetupMessage::kLabelEncryption},
    {"Encryption", SetupMessage::kLabelEncryption},
    {"ForceTLS", SetupMessage::kLabelRequireEncryption},
    {"SSLVerify", SetupMessage::kLabelCheckCertificate},
    {"SSLCA", SetupMessage::kLabelAuthorities},
    {"SSLCert", SetupMessage::kLabelClientCertificate},
    {"SSLKey", SetupMessage::kLabelClientKey},
    {"TDS_Version", SetupMessage::kLabelProtocolVersion},
};

const Label* find(const std::string& key) {
    const auto* const found = std::find_if(std::begin(kLabels), std::end(kLabels),
                                           [&key](const Label& label) { return installer::sameName(label.key, key); });
    return found == std::end(kLabels) ? nullptr : found;
}

bool isUpper(char byte) {
    return std::isupper(byte & 0xFF) != 0;
}

// Whether a word begins at this place: behind a small letter a capital, and the last of several before a small one.
bool beginsWord(const std::string& key, std::size_t place) {
    const bool follows = place > 0 && !isUpper(key[place - 1]) && std::isalnum(key[place - 1] & 0xFF) != 0;
    const bool ends =
        place > 0 && isUpper(key[place - 1]) && place + 1 < key.size() && std::islower(key[place + 1] & 0xFF) != 0;
    return isUpper(key[place]) && (follows || ends);
}

}  // namespace

std::string wordsOf(const std::string& key) {
    if (const Label* label = find(key)) {
        return setupText(label->text);
    }
    std::string words;
    for (std::size_t place = 0; place < key.size(); ++place) {
        if (beginsWord(key, place)) {
            words += ' ';
        }
        const bool isAbbreviation = place + 1 < key.size() && isUpper(key[place + 1]);
        const bool isInside = !words.empty() && words.back() == ' ' && isUpper(key[place]) && !isAbbreviation;
        words += key[place] == '_' ? ' ' : isInside ? static_cast<char>(std::tolower(key[place] & 0xFF)) : key[place];
    }
    return words;
}

std::string letterOf(const std::string& key) {
    const Label* label = find(key);
    return label == nullptr ? std::string() : setupMnemonic(label->text);
}

bool isSwitch(const std::vector<std::string>& choices) {
    const auto isOf = [&choices](const char* off, const char* on) {
        return choices.size() == 2 && ((installer::sameName(choices[0], off) && installer::sameName(choices[1], on)) ||
                                       (installer::sameName(choices[0], on) && installer::sameName(choices[1], off)));
    };
    return isOf("0", "1") || isOf("No", "Yes");
}

std::string switchWord(const std::string& choice) {
    return setupText(choice == "1" || installer::sameName(choice, "Yes") ? SetupMessage::kYes : SetupMessage::kNo);
}
