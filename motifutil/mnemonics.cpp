#include "motifutil/mnemonics.h"

#include <Xm/Label.h>
#include <Xm/LabelG.h>
#include <Xm/PushB.h>
#include <Xm/PushBG.h>
#include <Xm/ToggleB.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwctype>
#include <utility>

#include "motifutil/catalog_text.h"
#include "motifutil/characters.h"
#include "motifutil/compound_string.h"

namespace {

// Labels and their letters.
using Pair = std::pair<Message::Number, Message::Number>;
constexpr std::array<Pair, 39> kLetters{{
    {Message::kOk, Message::kOkLetter},
    {Message::kCancel, Message::kCancelLetter},
    {Message::kApply, Message::kApplyLetter},
    {Message::kHelp, Message::kHelpLetter},
    {Message::kAnswerYes, Message::kAnswerYesLetter},
    {Message::kAnswerNo, Message::kAnswerNoLetter},
    {Message::kSetupErrorOk, Message::kSetupErrorOkLetter},
    {Message::kUserDsnTab, Message::kUserDsnTabLetter},
    {Message::kFileDsnTab, Message::kFileDsnTabLetter},
    {Message::kDriversTab, Message::kDriversTabLetter},
    {Message::kTracingTab, Message::kTracingTabLetter},
    {Message::kAboutTab, Message::kAboutTabLetter},
    {Message::kUserDsnHeading, Message::kUserDsnHeadingLetter},
    {Message::kAdd, Message::kAddLetter},
    {Message::kRemove, Message::kRemoveLetter},
    {Message::kConfigure, Message::kConfigureLetter},
    {Message::kFileDsnAdd, Message::kFileDsnAddLetter},
    {Message::kFileDsnRemove, Message::kFileDsnRemoveLetter},
    {Message::kFileDsnConfigure, Message::kFileDsnConfigureLetter},
    {Message::kSetDirectory, Message::kSetDirectoryLetter},
    {Message::kFileSelection, Message::kFileSelectionLetter},
    {Message::kFileList, Message::kFileListLetter},
    {Message::kDirectoryList, Message::kDirectoryListLetter},
    {Message::kFilter, Message::kFilterLetter},
    {Message::kDriversHeading, Message::kDriversHeadingLetter},
    {Message::kAboutHeading, Message::kAboutHeadingLetter},
    {Message::kEnableTracing, Message::kEnableTracingLetter},
    {Message::kTraceFile, Message::kTraceFileLetter},
    {Message::kTraceLibrary, Message::kTraceLibraryLetter},
    {Message::kBrowse, Message::kBrowseLetter},
    {Message::kAdvanced, Message::kAdvancedLetter},
    {Message::kNext, Message::kNextLetter},
    {Message::kBack, Message::kBackLetter},
    {Message::kFinish, Message::kFinishLetter},
    {Message::kChooserHeading, Message::kChooserHeadingLetter},
    {Message::kFileNameHeading, Message::kFileNameHeadingLetter},
    {Message::kSummaryHeading, Message::kSummaryHeadingLetter},
    {Message::kAdvancedHeading, Message::kAdvancedHeadingLetter},
    {Message::kVerifyConnection, Message::kVerifyConnectionLetter},
}};

bool isButton(Widget widget) {
    return XmIsPushButton(widget) || XmIsPushButtonGadget(widget) || XmIsToggleButton(widget);
}

// The keys of Latin 1 have the numbers of their characters, all others have them from here on.
constexpr KeySym kBehindLatin1Keys = 0x100;
constexpr KeySym kUnicodeKeys = 0x1000000;
constexpr KeySym kBehindAscii = 0x80;

// Underlines the letter by a rendition of its own, and nothing for 0: Motif underlines the letters of ASCII alone.
void mark(Widget labelled, wchar_t letter) {
    static char tag[] = "mnemonic";
    const std::wstring label = labelOf(labelled);
    const std::size_t place = std::min(label.find(letter), label.size());
    XmStringPtr text = compoundString(bytesOf(label.substr(0, place)));
    if (place < label.size()) {
        const XmStringPtr marked(XmStringCreate(bytesOf(label.substr(place, 1)).data(), tag));
        const XmStringPtr rest = compoundString(bytesOf(label.substr(place + 1)));
        text.reset(XmStringConcatAndFree(text.release(), XmStringConcat(marked.get(), rest.get())));
        XmRenderTable table = nullptr;
        XtVaGetValues(labelled, XmNrenderTable, &table, nullptr);
        ArgumentList arguments;
        arguments.set(XmNunderlineType, XmSINGLE_LINE);
        XmRendition rendition = XmRenditionCreate(labelled, tag, arguments.data(), arguments.size());
        table = XmRenderTableAddRenditions(XmRenderTableCopy(table, nullptr, 0), &rendition, 1, XmMERGE_REPLACE);
        XtVaSetValues(labelled, XmNrenderTable, table, nullptr);
        XmRenditionFree(rendition);
        XmRenderTableFree(table);
    }
    XtVaSetValues(labelled, XmNlabelString, text.get(), nullptr);
}

}  // namespace

std::string mnemonicFor(Message::Number label) {
    const auto* letter =
        std::find_if(kLetters.begin(), kLetters.end(), [label](const Pair& pair) { return pair.first == label; });
    return letter == kLetters.end() ? std::string() : catalogText(letter->second);
}

void underline(Widget labelled, wchar_t letter) {
    const KeySym character = static_cast<std::uint32_t>(letter);
    if (character >= kBehindAscii || mnemonicOf(labelled) >= static_cast<wchar_t>(kBehindAscii)) {
        mark(labelled, character >= kBehindAscii ? letter : L'\0');
    }
    XtVaSetValues(labelled, XmNmnemonic, character < kBehindLatin1Keys ? character : kUnicodeKeys + character, nullptr);
}

std::wstring labelOf(Widget labelled) {
    XmString text = nullptr;
    XtVaGetValues(labelled, XmNlabelString, &text, nullptr);
    const XmStringPtr owned(text);
    return charactersOf(plainText(text));
}

bool canBeMnemonic(wchar_t character) {
    return !isEastAsian(character) && std::iswalnum(static_cast<std::wint_t>(character)) != 0;
}

std::optional<std::size_t> bracketedLetter(const std::wstring& label) {
    // Elsewhere it may be a unit.
    if (std::none_of(label.begin(), label.end(), isEastAsian)) {
        return {};
    }
    const auto isLatinCapital = [](wchar_t character) { return character >= L'A' && character <= L'Z'; };
    for (std::size_t place = 2; place + 1 < label.size(); ++place) {
        if (label[place - 1] == L'(' && isLatinCapital(label[place]) && label[place + 1] == L')' &&
            label[place - 2] != L' ') {
            return place;
        }
    }
    return {};
}

std::string labelWords(const std::string& label) {
    std::wstring words = charactersOf(label);
    if (const std::optional<std::size_t> place = bracketedLetter(words)) {
        words.erase(*place - 1, 3);
    }
    return bytesOf(words);
}

void setMnemonic(Widget labelled, const std::string& letter) {
    const std::wstring characters = charactersOf(letter);
    std::wstring label = labelOf(labelled);
    if (const auto place = bracketedLetter(label); place && characters.size() == 1 && label[*place] != characters[0]) {
        label[*place] = characters[0];
        XtVaSetValues(labelled, XmNlabelString, compoundString(bytesOf(label)).get(), nullptr);
    }
    const bool isLetter = characters.size() == 1 && label.find(characters) != std::wstring::npos;
    underline(labelled, isLetter ? characters.front() : L'\0');
}

wchar_t mnemonicOf(Widget labelled) {
    KeySym key = 0;
    XtVaGetValues(labelled, XmNmnemonic, &key, nullptr);
    return lowerCase(static_cast<wchar_t>(key >= kUnicodeKeys ? key - kUnicodeKeys : key));
}

void leadTo(Widget label, Widget field, const std::string& letter) {
    XtVaSetValues(label, XmNuserData, field, nullptr);
    setMnemonic(label, letter);
}

Widget mnemonicTarget(Widget labelled) {
    if (isButton(labelled)) {
        return labelled;
    }
    XtPointer field = nullptr;
    if (XmIsLabel(labelled) || XmIsLabelGadget(labelled)) {
        XtVaGetValues(labelled, XmNuserData, &field, nullptr);
    }
    return static_cast<Widget>(field);
}
