#include "motifutil/compound_string.h"

#include <new>

XmStringPtr compoundString(const std::string& text) {
    XmStringPtr result(XmStringCreateLocalized(const_cast<char*>(text.c_str())));
    if (!result) {
        throw std::bad_alloc();
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
