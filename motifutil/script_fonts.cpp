#include "motifutil/script_fonts.h"

#include <X11/Xft/Xft.h>
#include <Xm/Text.h>
#include <langinfo.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>

#include "motifutil/characters.h"

namespace {

struct PatternDeleter {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using PatternPtr = std::unique_ptr<FcPattern, PatternDeleter>;

struct CharSetDeleter {
    void operator()(FcCharSet* set) const { FcCharSetDestroy(set); }
};
using CharSetPtr = std::unique_ptr<FcCharSet, CharSetDeleter>;

// The fonts of the shell whose texts are completed. The tables grow while the program runs, and stay.
struct Fonts {
    Widget shell = nullptr;
    XftFont* own = nullptr;
    int size = 0;
    XmRenderTable table = nullptr;            // The shell's own font and those that complete it.
    std::map<std::string, std::string> tags;  // By family.
    std::map<std::string, XmRenderTable> whole;
    std::map<wchar_t, std::string> known;  // The tags of characters, empty where no font has them.
};

Fonts& fonts() {
    static Fonts instance;
    return instance;
}

bool isOwn(wchar_t character) {
    constexpr wchar_t kLastOfAscii = 0x7f;
    return character <= kLastOfAscii ||
           XftCharExists(XtDisplay(fonts().shell), fonts().own, static_cast<FcChar32>(character)) != 0;
}

// The family of the font that fontconfig would take for these characters; empty when none has the first of them.
std::string familyFor(const std::vector<wchar_t>& characters) {
    const PatternPtr wanted(FcPatternCreate());
    const CharSetPtr set(FcCharSetCreate());
    for (const wchar_t character : characters) {
        FcCharSetAddChar(set.get(), static_cast<FcChar32>(character));
    }
    FcPatternAddCharSet(wanted.get(), FC_CHARSET, set.get());
    FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>("Sans"));
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    XftDefaultSubstitute(XtDisplay(fonts().shell), DefaultScreen(XtDisplay(fonts().shell)), wanted.get());
    FcResult result = FcResultMatch;
    const PatternPtr found(FcFontMatch(nullptr, wanted.get(), &result));
    FcCharSet* has = nullptr;
    FcChar8* family = nullptr;
    const bool isGood = found && FcPatternGetCharSet(found.get(), FC_CHARSET, 0, &has) == FcResultMatch &&
                        FcCharSetHasChar(has, static_cast<FcChar32>(characters.front())) != 0 &&
                        FcPatternGetString(found.get(), FC_FAMILY, 0, &family) == FcResultMatch;
    return isGood ? reinterpret_cast<const char*>(family) : "";
}

// The table `table`, which is used up, and this family under `tag`.
XmRenderTable withFamily(XmRenderTable table, const char* tag, const std::string& family) {
    Arg arguments[3];
    XtSetArg(arguments[0], const_cast<char*>(XmNfontType), XmFONT_IS_XFT);
    XtSetArg(arguments[1], const_cast<char*>(XmNfontName), family.c_str());
    XtSetArg(arguments[2], const_cast<char*>(XmNfontSize), fonts().size);
    XmRendition rendition = XmRenditionCreate(fonts().shell, const_cast<char*>(tag), arguments, XtNumber(arguments));
    XmRenderTable result = XmRenderTableAddRenditions(table, &rendition, 1, XmMERGE_REPLACE);
    XmRenditionFree(rendition);
    return result;
}

// For text widgets: a table with this family alone, kept for good.
XmRenderTable tableOf(const std::string& family) {
    XmRenderTable& table = fonts().whole[family];
    if (table == nullptr) {
        static char defaultTag[] = "";
        table = withFamily(nullptr, defaultTag, family);
    }
    return table;
}

// The tag of the font that has this character; empty for the shell's own, also where nothing has it.
std::string tagFor(wchar_t character) {
    const auto [place, isNew] = fonts().known.try_emplace(character);
    if (!isNew) {
        return place->second;
    }
    const std::string family = familyFor({character});
    if (family.empty()) {
        return "";
    }
    Fonts& all = fonts();
    std::string& tag = all.tags[family];
    if (tag.empty()) {
        tag = "script" + std::to_string(all.tags.size());
        all.table = withFamily(all.table, tag.c_str(), family);
        XtVaSetValues(all.shell, XmNbuttonRenderTable, all.table, XmNlabelRenderTable, all.table, nullptr);
    }
    place->second = tag;
    return tag;
}

// Changes the font of a text widget to one that draws all of its text; `family` is that of the font it has, empty for
// the shell's own.
void choose(Widget text, XtPointer family, XtPointer /*callData*/) {
    std::vector<wchar_t> lacking;
    char* content = XmTextGetString(text);
    for (const auto& [character, bytes] : split(content == nullptr ? "" : content)) {
        if (!isOwn(character)) {
            lacking.push_back(character);
        }
    }
    XtFree(content);
    const std::string wanted = lacking.empty() ? "" : familyFor(lacking);
    if (wanted != *static_cast<std::string*>(family)) {
        *static_cast<std::string*>(family) = wanted;
        XtVaSetValues(text, XmNrenderTable, wanted.empty() ? fonts().table : tableOf(wanted), nullptr);
    }
}

void forgetFamily(Widget /*text*/, XtPointer family, XtPointer /*callData*/) {
    delete static_cast<std::string*>(family);
}

void forgetShell(Widget shell, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (fonts().shell == shell) {
        fonts().shell = nullptr;
    }
}

}  // namespace

void completeFontsOf(Widget shell) {
    XmRenderTable table = nullptr;
    XtVaGetValues(shell, XmNlabelRenderTable, &table, nullptr);
    if (table == nullptr || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) {
        return;
    }
    XmStringTag* tags = nullptr;
    const int count = XmRenderTableGetTags(table, &tags);
    XmRendition rendition = count > 0 ? XmRenderTableGetRendition(table, tags[0]) : nullptr;
    for (int i = 0; i < count; ++i) {
        XtFree(tags[i]);
    }
    XtFree(reinterpret_cast<char*>(tags));
    if (rendition == nullptr) {
        return;
    }
    Fonts& all = fonts();
    all = Fonts();
    Arg arguments[2];
    XtSetArg(arguments[0], const_cast<char*>(XmNxftFont), &all.own);
    XtSetArg(arguments[1], const_cast<char*>(XmNfontSize), &all.size);
    XmRenditionRetrieve(rendition, arguments, XtNumber(arguments));
    XmRenditionFree(rendition);
    if (all.own != nullptr) {
        all.shell = shell;
        all.table = XmRenderTableCopy(table, nullptr, 0);
        XtAddCallback(shell, XmNdestroyCallback, forgetShell, nullptr);
    }
}

std::vector<FontRun> fontRuns(const std::string& text) {
    const auto isBeyondAscii = [](char byte) { return static_cast<signed char>(byte) < 0; };
    if (fonts().shell == nullptr || std::none_of(text.begin(), text.end(), isBeyondAscii)) {
        return {{text, ""}};
    }
    std::vector<FontRun> runs{{"", ""}};
    for (const auto& [character, bytes] : split(text)) {
        const std::string tag = isOwn(character) ? "" : tagFor(character);
        if (tag != runs.back().tag) {
            runs.push_back({"", tag});
        }
        runs.back().text += bytes;
    }
    return runs;
}

void giveFonts(Widget widget) {
    if (fonts().shell != nullptr && !fonts().tags.empty()) {
        XtVaSetValues(widget, XmNrenderTable, fonts().table, nullptr);
    }
}

void followScripts(Widget text) {
    if (fonts().shell != nullptr) {
        auto* family = new std::string();
        XtAddCallback(text, XmNvalueChangedCallback, choose, family);
        XtAddCallback(text, XmNdestroyCallback, forgetFamily, family);
        choose(text, family, nullptr);
    }
}
