// Texts in scripts that the font of the window lacks, as names of data sources can be: Motif draws each text with one
// font, and shows boxes for what that has not. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <string>
#include <vector>

// Lets the texts of this shell and of all dialogs over it be completed by other fonts where its own lacks letters. Does
// nothing where that is no Xft font, or the locale's encoding is not UTF-8.
void completeFontsOf(Widget shell);

// A part of a text and the tag of the font to draw it with, empty for the shell's own.
struct FontRun {
    std::string text;
    std::string tag;
};

// The text in runs of one font each; one run without a tag for most texts.
[[nodiscard]] std::vector<FontRun> fontRuns(const std::string& text);

// Lets a widget draw the texts that were split until now: its shell may be older than one of them.
void giveFonts(Widget widget);

// Lets a text widget, which has one font, have one that draws all of its text, now and whenever that changes.
void followScripts(Widget text);
