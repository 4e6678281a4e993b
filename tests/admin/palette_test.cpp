// Colours of users that come to this program are their terminal's as often as not.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "admin/palette.h"

namespace {

// The contrast ratio of the Web Content Accessibility Guidelines 2.1, of which 4.5 is asked for text.
double luminance(const Rgb& colour) {
    const auto part = [](int value) {
        const double share = value / 255.0;
        return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(colour.red) + 0.7152 * part(colour.green) + 0.0722 * part(colour.blue);
}
double contrast(const Rgb& a, const Rgb& b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

TEST(PaletteTest, TextCanBeReadEverywhereWhateverOfTheTwoColoursIsTheUsers) {
    const std::pair<std::optional<Rgb>, std::optional<Rgb>> users[] = {
        {{}, {}},
        {Rgb{0, 0, 0}, {}},
        {{}, Rgb{255, 255, 255}},
        {Rgb{0x23, 0x29, 0x2e}, Rgb{0xe1, 0xe6, 0xea}},  // dark.ad
        {Rgb{0, 0, 0}, Rgb{0, 255, 0}},
        {Rgb{255, 255, 224}, {}},
        {{}, Rgb{0, 0, 139}},
    };
    for (const auto& [ground, ink] : users) {
        const Palette palette = paletteOf(ground, ink);
        EXPECT_EQ(palette.ground, ground.value_or(palette.ground));
        EXPECT_EQ(palette.ink, ink.value_or(palette.ink));
        for (const Rgb& behind : {palette.ground, palette.field, palette.header, palette.selection}) {
            EXPECT_GE(contrast(palette.ink, behind), 4.5) << luminance(palette.ground);
        }
        EXPECT_GE(contrast(palette.accent, palette.ground), 3);
    }
}

}  // namespace
