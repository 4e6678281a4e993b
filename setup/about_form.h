// The About form of the setup dialog. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <string>

// Fills the About information (motifutil/component_version.h) for the library at `path`, or for this library when that
// one can't be loaded or has no version to tell: asking it would end the process.
void describeForAbout(const std::string& path);

// Makes the form that shows the About information, unmanaged, as a dialog over `parent`, and keeps it in `frmabout`
// (motifutil/icons.h) while it exists: a second one replaces the first. It destroys itself when the person closes it.
Widget createAbtForm(Widget parent);
