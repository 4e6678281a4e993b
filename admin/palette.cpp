#include "admin/palette.h"

#include <X11/Xresource.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

namespace {

constexpr Rgb kBlack{0, 0, 0};
constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kLightGround{0xec, 0xef, 0xf1};
constexpr Rgb kDarkInk{0x1f, 0x2a, 0x33};
constexpr Rgb kDarkGround{0x23, 0x29, 0x2e};
constexpr Rgb kLightInk{0xe1, 0xe6, 0xea};
constexpr Rgb kAccent{0x2f, 0x6d, 0xb5};
constexpr Rgb kAccentOnDark{0x6f, 0xa8, 0xe6};

// What lies `share` of the way from one colour to the other.
Rgb mix(const Rgb& from, const Rgb& to, double share) {
    const auto part = [share](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return {part(from.red, to.red), part(from.green, to.green), part(from.blue, to.blue)};
}

// How light it looks, from 0 to 255 (the weights of ITU-R BT.601).
double lightness(const Rgb& colour) {
    return 0.299 * colour.red + 0.587 * colour.green + 0.114 * colour.blue;
}

bool isLight(const Rgb& colour) {
    return lightness(colour) >= 128;
}

// The user's colour for all widgets of this program.
std::optional<Rgb> usersColour(Display* connection, const std::string& program, const std::string& name,
                               const std::string& className) {
    char* type = nullptr;
    XrmValue value{};
    XColor colour{};
    if (XrmGetResource(XtDatabase(connection), (program + "." + name).c_str(),
                       ("ODBC Administrator." + className).c_str(), &type, &value) == 0 ||
        XParseColor(connection, DefaultColormap(connection, DefaultScreen(connection)),
                    static_cast<const char*>(value.addr), &colour) == 0) {
        return std::nullopt;
    }
    return Rgb{colour.red >> 8, colour.green >> 8, colour.blue >> 8};
}

std::pair<std::optional<Rgb>, std::optional<Rgb>> usersColours(Display* connection, const char* program) {
    return {usersColour(connection, program, "background", "Background"),
            usersColour(connection, program, "foreground", "Foreground")};
}

// What has an ink of its own when the user says so, and then a ground for it.
enum Kind { kWindow, kTextField, kText, kList, kKinds };
constexpr const char* kClasses[kKinds] = {"", "XmTextField", "XmText", "XmList"};

struct Use {
    const char* resource;
    Rgb Palette::*part;
    Kind kind = kWindow;
};
constexpr Use kUses[] = {
    {"*background", &Palette::ground},
    {"*foreground", &Palette::ink},
    {"*highlightColor", &Palette::accent},
    {"*highlightBackground", &Palette::ground},
    {"*XmTextField.background", &Palette::field, kTextField},
    {"*XmText.background", &Palette::field, kText},
    {"*XmList.background", &Palette::field, kList},
    {"*ClipWindow.background", &Palette::field, kList},
    {"*XmList.selectColor", &Palette::selection, kList},
    {"*XmToggleButton.selectColor", &Palette::accent},
    // The tab in front, under its words.
    {"*TabsSettings*selectColor", &Palette::selection},
    {"*XmScrollBar.troughColor", &Palette::trough},
    {"*TabManager.backPageBackground", &Palette::ground},
    {"*TabManager.backPageForeground", &Palette::frame},
    // Tables and their headers.
    {"*FormLists.background", &Palette::field, kList},
    {"*FrmTable.background", &Palette::field, kList},
    {"*frmLists.background", &Palette::field, kList},
    {"*FormAboutLists.background", &Palette::field, kList},
    {"*FormLabels*background", &Palette::header},
    {"*frmLabel*background", &Palette::header},
    {"*FormAboutLabels*background", &Palette::header},
    {"*ScrWinLabels.background", &Palette::header},
    {"*scrolledWin1.background", &Palette::header},
    {"*scrWinDPLabel.background", &Palette::header},
    {"*ScrAboutLabels.background", &Palette::header},
    {"*ScrWinLabels.topShadowColor", &Palette::line},
    {"*scrolledWin1.topShadowColor", &Palette::line},
    {"*scrWinDPLabel.topShadowColor", &Palette::line},
    {"*ScrAboutLabels.topShadowColor", &Palette::line},
    {"*ScrWinLabels.bottomShadowColor", &Palette::line},
    {"*scrolledWin1.bottomShadowColor", &Palette::line},
    {"*scrWinDPLabel.bottomShadowColor", &Palette::line},
    {"*ScrAboutLabels.bottomShadowColor", &Palette::line},
    // Explanations are text of the page.
    {"*TxtODBCDesc.background", &Palette::ground},
    {"*TxtFDDesc.background", &Palette::ground},
    {"*TxtDriversDesc.background", &Palette::ground},
    {"*TxtTraceDesc.background", &Palette::ground},
    {"*TxtAboutDesc.background", &Palette::ground},
    {"*TxtODBCDesc.foreground", &Palette::ink},
    {"*TxtFDDesc.foreground", &Palette::ink},
    {"*TxtDriversDesc.foreground", &Palette::ink},
    {"*TxtTraceDesc.foreground", &Palette::ink},
    {"*TxtAboutDesc.foreground", &Palette::ink},
};

}  // namespace

Palette paletteOf(std::optional<Rgb> ground, std::optional<Rgb> ink) {
    if (!ground) {
        ground = ink && isLight(*ink) ? kDarkGround : kLightGround;
    }
    if (!ink) {
        ink = isLight(*ground) ? kDarkInk : kLightInk;
    }
    // Fields stand out away from the ink, so that it can be read on them as well.
    const bool isDark = lightness(*ink) > lightness(*ground);
    Palette palette;
    palette.ground = *ground;
    palette.ink = *ink;
    palette.field = isDark ? mix(*ground, kBlack, 0.3) : kWhite;
    palette.header = mix(*ground, *ink, 0.055);
    palette.trough = mix(*ground, *ink, 0.075);
    palette.line = mix(*ground, *ink, 0.2);
    palette.frame = mix(*ground, *ink, 0.3);
    palette.accent = isDark ? kAccentOnDark : kAccent;
    palette.selection = mix(palette.field, palette.accent, isDark ? 0.35 : 0.22);
    return palette;
}

void setPalette(Display* connection) {
    char* programName = nullptr;
    char* unused = nullptr;
    XtGetApplicationNameAndClass(connection, &programName, &unused);
    const auto colours = usersColours(connection, programName);
    // What is set for this program alone would win over what is set for a kind of widget of any program.
    constexpr const char* kAnyOtherProgram = "-";
    const std::string prefix = colours == usersColours(connection, kAnyOtherProgram) ? "" : programName;
    std::array<Palette, kKinds> palettes;
    palettes.fill(paletteOf(colours.first, colours.second));
    for (const Kind kind : {kTextField, kText, kList}) {
        const auto ink =
            usersColour(connection, programName, "x.foreground", std::string(kClasses[kind]) + ".Foreground");
        if (ink && ink != colours.second) {
            palettes[kind] = paletteOf(std::nullopt, ink);
        }
    }
    std::string lines;
    for (const Use& use : kUses) {
        const Rgb& colour = palettes[use.kind].*use.part;
        char text[8];
        std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.red & 255, colour.green & 255, colour.blue & 255);
        lines.append(prefix).append(use.resource).append(": ").append(text).append("\n");
    }
    XrmDatabase users = XtDatabase(connection);
    XrmCombineDatabase(XrmGetStringDatabase(lines.c_str()), &users, False);
}
