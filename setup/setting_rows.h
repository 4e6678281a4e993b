// The rows of the setup form, one for each setting, in a window that scrolls when there are many. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "setup/driver_properties.h"
#include "setup/further_settings.h"
#include "setup/hint_line.h"
#include "setup/setting_row.h"
#include "setup/settings.h"

// Which settings have rows, and what they show at first.
struct RowContent {
    std::vector<DriverProperty> properties;
    bool hasFurtherSettings = false;  // Whether other keys can be edited in a field of their own.
    Settings stored;                  // What the file has of the data source.
    Settings shown;                   // All values, those of keys that have no row too.
};

class SettingRows {
public:
    // Makes the window and the rows as children of the form `dialogForm`. It must live as long as they.
    SettingRows(Widget dialogForm, const RowContent& content);
    SettingRows(const SettingRows&) = delete;
    SettingRows& operator=(const SettingRows&) = delete;

    // What the dialog places: the strip of tabs, null when one page holds all rows, and below it the window around the
    // rows, with what that takes for itself in each direction, in pixels.
    Widget tabs() const noexcept { return tabs_; }
    Widget window() const noexcept { return window_; }
    static constexpr int kFrame = 2;
    // To be made equally wide with those of other rows before layOut().
    std::vector<Widget> labels() const;
    // Places the rows below one another. Fields stand behind the labels and grow with the window.
    void layOut();
    // The size that all rows need, in pixels; known after layOut().
    int width() const noexcept { return width_; }
    int height() const noexcept { return height_; }
    // Gives the window the size that shows this much of the rows. They scroll, and follow when the window is resized.
    void show(int width, int height);

    bool hasHelp() const;
    // Lets the line explain each setting while its row has the keyboard.
    void explainIn(HintLine& hint) const;

    // Adds what the rows change to `changed`, passwords that are not to be stored as deleted; or tells what is wrong.
    std::optional<SetupFailure> collect(Settings& changed);
    // Adds what is not to be stored: passwords, and what is of use for a test alone.
    void addUnstored(Settings& settings) const;
    // What can't be stored as it is typed, though a connection can be tried with it.
    std::optional<SetupFailure> checkStorable() const;

    // The field to mend the setting `key` in, whose page comes to the front: its row's, else the further settings; null
    // without either.
    Widget fieldFor(const std::string& key);

private:
    // The rows of one tab.
    struct Page {
        SettingRows* rows;
        SettingGroup group;
        Widget form;
        Widget tab;  // Null when it is the only one.
        int height;
    };

    void createWindow(Widget dialogForm);
    void createPages(Widget dialogForm);
    Widget formFor(const DriverProperty& property) const;
    void showPage(const Page& page);
    void bringToFront(Widget field);
    void createRows(const RowContent& content);
    void watchScrolling();
    bool hasRow(const std::string& key) const;
    std::optional<SetupFailure> furtherChanges(Settings& changed) const;
    bool isUnstoredPassword(const installer::Attribute& setting) const;
    void fit();

    static void tabChosen(Widget tab, XtPointer page, XtPointer callData);
    static void hiddenFieldReached(Widget window, XtPointer clientData, XtPointer callData);
    static void resized(Widget window, XtPointer rows, XEvent* event, Boolean* continueToDispatch);

    Widget tabs_ = nullptr;
    Widget window_ = nullptr;
    std::vector<Page> pages_;
    std::size_t front_ = 0;
    std::vector<DriverProperty> properties_;
    std::vector<std::unique_ptr<SettingRow>> rows_;
    std::unique_ptr<FurtherSettings> further_;
    int width_ = 0;
    int leastWidth_ = 1;
    int height_ = 0;
};

// Places a row in its form, `above` being the field that it stands below, null for the top, and `margin` its distance
// from the form's edges in pixels. Returns the lowest field of the row.
Widget placeRow(const SettingRow& row, Widget above, int margin);
