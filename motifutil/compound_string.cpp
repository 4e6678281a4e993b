#include "motifutil/compound_string.h"

#include <algorithm>
#include <new>

#include "motifutil/script_fonts.h"

namespace {

// One line of characters that every font has, which takes a third of the time: most rows of long lists are such.
bool isSimple(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
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
    std::string result = text;
    std::size_t lineStart = 0;
    std::size_t lastBlank = std::string::npos;
    bool isQuoted = false;
    for (std::size_t at = 0; at < result.size(); ++at) {
        if (result[at] == '\n') {
            lineStart = at + 1;
            lastBlank = std::string::npos;
        }
        isQuoted = isQuoted != (result[at] == '"');
        const bool endsWord = at + 1 == result.size() || result[at + 1] == ' ' || result[at + 1] == '\n';
        if (!endsWord) {
            continue;
        }
        const std::string line = result.substr(lineStart, at + 1 - lineStart);
        if (lastBlank != std::string::npos && XmStringWidth(fonts, compoundString(line).get()) > most) {
            result[lastBlank] = '\n';
            lineStart = lastBlank + 1;
            lastBlank = std::string::npos;
        }
        if (!isQuoted && at + 1 < result.size() && result[at + 1] == ' ') {
            lastBlank = at + 1;
        }
    }
    return result;
}
