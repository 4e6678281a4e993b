// The setup dialog. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <optional>
#include <string>
#include <vector>

#include "setup/setting_rows.h"
#include "setup/settings.h"

struct SetupFormContent {
    std::string driver;
    std::string library;               // The driver's.
    bool isFile = false;               // A file data source, whose name is its path and can't be changed.
    std::string storedName;            // Empty for a new data source.
    Settings stored;                   // All keys that it has, "Driver" included.
    std::string name;                  // Proposed name.
    std::vector<std::string> leftOut;  // Attributes that were given and can't be stored: the user is told of them.
    RowContent rows;
    Settings pending;  // Those of the values shown that are to be stored when the user accepts them as they are.
};

// Shows the dialog over `parent`, stores what the user accepts, and returns when it is closed. Cancel stores nothing
// and is no failure. What can be mended is reported to the user, and the dialog stays; what is returned could not be
// shown.
[[nodiscard]] std::optional<SetupFailure> runSetupForm(Widget parent, const SetupFormContent& content);
