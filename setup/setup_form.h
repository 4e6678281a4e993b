// The setup dialog. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <optional>
#include <string>
#include <vector>

#include "setup/data_source.h"
#include "setup/driver_properties.h"

struct SetupFormContent {
    std::string driver;
    std::string library;     // The driver's.
    std::string storedName;  // Empty for a new data source.
    std::string name;        // Proposed name.
    std::vector<DriverProperty> properties;
    bool hasFurtherSettings = false;  // Whether other keys can be edited in a field of their own.
    Settings stored;                  // What the file has of the data source.
    Settings shown;                   // All values, those of keys that have no row too.
    Settings pending;                 // Those of them that are to be stored when the user accepts them as they are.
};

// Shows the dialog over `parent`, stores what the user accepts, and returns when it is closed. Cancel stores nothing and is
// no failure. What can be mended is reported to the user, and the dialog stays; what is returned could not be shown.
std::optional<SetupFailure> runSetupForm(Widget parent, const SetupFormContent& content);
