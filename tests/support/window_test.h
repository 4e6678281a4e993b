// Tests of the administrator's windows: they are built in the test's own process and used by keyboard and mouse.
#pragma once

#include "tests/support/x_display.h"
// Before this line nothing of X11. What follows is the window with its pages, and what reads their widgets.
#include <X11/keysym.h>
#include <Xm/List.h>
#include <Xm/Text.h>

#include <functional>
#include <string>
#include <vector>

#include "admin/about_page.h"
#include "admin/driver_chooser.h"
#include "admin/drivers_page.h"
#include "admin/file_dsn_page.h"
#include "admin/file_dsn_wizard.h"
#include "admin/file_name_screen.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/main_window.h"
#include "admin/trace_page.h"
#include "admin/user_dsn_page.h"
#include "motifutil/catalog_text.h"
#include "motifutil/widgets.h"
#include "tests/support/odbc_files.h"

// Each test has a configuration of its own, with the one driver "Recorder", whose setup library writes down its calls,
// and after open() a main window of its own.
class WindowTest : public testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    // Builds and shows the main window as the program does at its start.
    void open();
    // The same with this text in the user's file.
    void openWith(const std::string& dataSources);

    static XPerson& person();
    // Lets the windows work until `condition` holds; false when it never does.
    static bool waitFor(const std::function<bool()>& condition);
    // Lets the windows work until nothing is left to do.
    static void settle();

    // The widget below `top`, by name or path; fails the test when there is none.
    static Widget child(Widget top, const std::string& path);
    static bool isVisible(Widget widget);
    // The place of a widget or gadget on the screen.
    static Place placeOf(Widget widget);
    // What a label, a button, a text or a text field shows.
    static std::string textOf(Widget widget);
    // A compound string among its resources, as plain text.
    static std::string stringOf(Widget widget, const char* resource);
    // Whether this box, if there is one, has the keyboard; waitUntilUp() waits until it has and keeps it.
    static bool isUp(Widget box);
    static bool waitUntilUp(const Widget& box);
    // Presses a button, and checks that this box comes up.
    static void clickFor(Widget button, const Widget& box);

    // All of these wait until the windows have done what there is to do; keys wait for the box that is to get them.
    static void click(Widget widget);
    static void clickRow(Widget list, int row, int times = 1);
    static void key(KeySym symbol, KeySym modifier = NoSymbol);
    static void type(std::string_view text);

    static std::vector<std::string> rows(Widget list);
    // Checks that all that is in sight of a window and acts, or that one types into, has a letter of its label, alone.
    static void expectLetters(Widget window);
    // Checks that no label or button in sight of a window is cut off.
    static void expectWhole(Widget window);

    // The text of the box that is up; "(no dialog)" when none comes.
    static std::string dialogText();
    // Presses a button ("OK", "Cancel") of the box that is up, waits until it is gone and returns its text.
    static std::string answer(const char* button);
    // Checks that a box comes up whose text begins so, and presses OK.
    static void expectReport(Message::Number text);

    // What the recording setup library was called with since the last time.
    std::string calls() const;
    // One call as it is recorded.
    static std::string call(int request, const std::string& driver, const std::string& attributes = "null",
                            const std::string& path = "");

    OdbcFiles files;

private:
    static void waitForKeyboard();

    ScopedEnvironment record_{{"VH_TEST_RECORD", files.path("record")}, {"VH_TEST_RESULT", {}}};
};
