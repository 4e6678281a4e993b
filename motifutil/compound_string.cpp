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
