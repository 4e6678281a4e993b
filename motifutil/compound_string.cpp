#include "motifutil/compound_string.h"

#include <array>
#include <new>

XmStringPtr compoundString(const std::string& text) {
    XmStringPtr result(XmStringCreateLocalized(const_cast<char*>(text.c_str())));
    if (!result) {
        throw std::bad_alloc();
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
