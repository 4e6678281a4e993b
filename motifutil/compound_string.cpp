#include "motifutil/compound_string.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "motifutil/characters.h"
#include "motifutil/script_fonts.h"

namespace {

// One line of characters that every font has, which takes a third of the time: most rows of long lists are such.
bool isSimple(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

// Whether a line may end between two characters neither of which is a blank. In East Asia it may nearly everywhere, but
// what closes or follows begins none, and what opens ends none.
bool canBreak(wchar_t before, wchar_t after) {
    constexpr std::wstring_view kNotFirst =
        L"、。，．・：；？！ー〜…‥々ゝゞヽヾ゛゜％」』）】〕〉》〗ぁぃぅぇぉっゃゅょゎァィゥェォッャュョヮヵヶ)]}.,:;?"
        L"!";
    constexpr std::wstring_view kNotLast = L"「『（【〔〈《〖([{";
    return (isEastAsian(before) || isEastAsian(after)) && before != L' ' &&
           kNotFirst.find(after) == std::wstring_view::npos && kNotLast.find(before) == std::wstring_view::npos;
}

}  // namespace

XmStringPtr compoundString(const std::string& text) {
    XmStringPtr result;
    if (isSimple(text)) {
        result.reset(XmStringCreate(const_cast<char*>(text.c_str()), const_cast<char*>(XmFONTLIST_DEFAULT_TAG)));
        if (!result) {
            throw std::bad_alloc();
        }
        return result;
    }
    for (FontRun& run : fontRuns(text)) {
        // By tag, not by rendition: Motif frees the names of renditions twice when it takes a text apart.
        XmString next = run.tag.empty() ? XmStringCreateLocalized(run.text.data())
                                        : XmStringCreate(run.text.data(), run.tag.data());
        if (next == nullptr) {
            throw std::bad_alloc();
        }
        result.reset(result ? XmStringConcatAndFree(result.release(), next) : next);
    }
    return result;
}

std::string plainText(XmString text) {
    // Not by XmStringUnparse: it leaves out the ends of lines and tabs, and frees twice what has a rendition of its
    // own.
    std::string plain;
    XmStringContext context = nullptr;
    if (XmStringInitContext(&context, text) == 0) {
        return plain;
    }
    unsigned int length = 0;
    XtPointer value = nullptr;
    XmStringComponentType type = XmSTRING_COMPONENT_END;
    while ((type = XmStringGetNextTriple(context, &length, &value)) != XmSTRING_COMPONENT_END) {
        const XtTextPtr owned(static_cast<char*>(value));
        if (type == XmSTRING_COMPONENT_TEXT || type == XmSTRING_COMPONENT_LOCALE_TEXT) {
            plain.append(owned.get(), length);
        } else if (type == XmSTRING_COMPONENT_SEPARATOR) {
            plain += '\n';
        } else if (type == XmSTRING_COMPONENT_TAB) {
            plain += '\t';
        }
    }
    XmStringFreeContext(context);
    return plain;
}

std::string wrapped(const std::string& text, XmRenderTable fonts, int most) {
    const std::vector<Character> characters = split(text);
    std::string result;
    std::string line;
    std::size_t lastBreak = std::string::npos;
    bool isQuoted = false;
    for (std::size_t at = 0; at < characters.size(); ++at) {
        line += characters[at].bytes;
        if (characters[at].value == L'\n') {
            result += line;
            line.clear();
            lastBreak = std::string::npos;
            continue;
        }
        isQuoted = isQuoted != (characters[at].value == L'"');
        const wchar_t next = at + 1 < characters.size() ? characters[at + 1].value : L'\n';
        const bool endsWord = next == L' ' || next == L'\n' || canBreak(characters[at].value, next);
        if (!endsWord) {
            continue;
        }
        if (lastBreak != std::string::npos && XmStringWidth(fonts, compoundString(line).get()) > most) {
            result += line.substr(0, lastBreak) + '\n';
            line.erase(0, lastBreak + (line[lastBreak] == ' ' ? 1 : 0));
            lastBreak = std::string::npos;
        }
        if (!isQuoted && next != L'\n') {
            lastBreak = line.size();
        }
    }
    return result + line;
}
