#include "motifutil/compound_string.h"

#include <array>
#include <new>

#include "motifutil/script_fonts.h"

XmStringPtr compoundString(const std::string& text) {
    XmStringPtr result;
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
    // Without a mapping Motif leaves the ends of lines, and tabs, out.
    static char newline[] = "\n";
    static char tab[] = "\t";
    const XmStringPtr separator(XmStringSeparatorCreate());
    const XmStringPtr tabulator(XmStringComponentCreate(XmSTRING_COMPONENT_TAB, 0, nullptr));
    const auto mapping = [](char* pattern, XmString substitute) {
        ArgumentList arguments;
        arguments.set(XmNpattern, pattern).set(XmNsubstitute, substitute).set(XmNincludeStatus, XmINSERT);
        return XmParseMappingCreate(arguments.data(), arguments.size());
    };
    std::array mappings{mapping(newline, separator.get()), mapping(tab, tabulator.get())};
    const XtTextPtr plain(static_cast<char*>(XmStringUnparse(text, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT,
                                                             mappings.data(), mappings.size(), XmOUTPUT_ALL)));
    for (XmParseMapping each : mappings) {
        XmParseMappingFree(each);
    }
    return plain ? std::string(plain.get()) : std::string();
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
