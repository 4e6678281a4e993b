#include "motifutil/font_size.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "motifutil/compound_string.h"
#include "motifutil/shells.h"

namespace {

int lineHeight(XmRenderTable fonts) {
    return fonts == nullptr ? 0 : XmStringHeight(fonts, compoundString("X").get());
}

// The font with this tag, smaller; null when it is no font that comes in any size.
XmRendition shrunk(Widget widget, XmRenderTable fonts, XmStringTag tag, int height) {
    XmRendition whole = XmRenderTableGetRendition(fonts, tag);
    unsigned char type = XmFONT_IS_FONT;
    char* name = nullptr;
    int size = 0;
    Arg arguments[3];
    XtSetArg(arguments[0], const_cast<char*>(XmNfontType), &type);
    XtSetArg(arguments[1], const_cast<char*>(XmNfontName), &name);
    XtSetArg(arguments[2], const_cast<char*>(XmNfontSize), &size);
    XmRenditionRetrieve(whole, arguments, XtNumber(arguments));
    XmRendition smaller = nullptr;
    if (type == XmFONT_IS_XFT) {
        XtSetArg(arguments[0], const_cast<char*>(XmNfontType), type);
        XtSetArg(arguments[1], const_cast<char*>(XmNfontName), name);
        XtSetArg(arguments[2], const_cast<char*>(XmNfontSize), size * height / std::max(lineHeight(fonts), 1));
        smaller = XmRenditionCreate(widget, tag, arguments, XtNumber(arguments));
    }
    XmRenditionFree(whole);
    return smaller;
}

}  // namespace

int scaled(Widget widget, int pixels) {
    constexpr int kLineHeight = 17;
    XmRenderTable fonts = nullptr;
    XtVaGetValues(shellOf(widget), XmNlabelRenderTable, &fonts, nullptr);
    const int height = lineHeight(fonts);
    return height == 0 ? pixels : pixels * height / kLineHeight;
}

void fitLetters(Widget label, int height) {
    XmRenderTable fonts = nullptr;
    XtVaGetValues(label, XmNrenderTable, &fonts, nullptr);
    if (lineHeight(fonts) <= height) {
        return;
    }
    XmStringTag* tags = nullptr;
    const int count = XmRenderTableGetTags(fonts, &tags);
    // Kept for good, as the window's own font is, with the fonts of scripts that came up until now.
    static std::map<std::pair<int, int>, XmRenderTable> known;
    XmRenderTable& smaller = known[{height, count}];
    const bool isNew = smaller == nullptr;
    for (int i = 0; i < count; ++i) {
        if (XmRendition font = isNew ? shrunk(label, fonts, tags[i], height) : nullptr; font != nullptr) {
            smaller = XmRenderTableAddRenditions(smaller, &font, 1, XmMERGE_REPLACE);
            XmRenditionFree(font);
        }
        XtFree(tags[i]);
    }
    XtFree(reinterpret_cast<char*>(tags));
    if (smaller != nullptr) {
        XtVaSetValues(label, XmNrenderTable, smaller, nullptr);
    }
}
