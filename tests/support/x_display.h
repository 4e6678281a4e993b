// An X server for a test, and what a person does at it: real key strokes and mouse clicks (XTest).
#pragma once

// Before X11, whose macros (None, Bool) it can not bear.
#include <gtest/gtest.h>

#include <X11/Xlib.h>

#include <chrono>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/program.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

// A server of its own with a window manager, named by DISPLAY as long as this object lives.
class XServer {
public:
    XServer();

private:
    TemporaryFolder folder_;
    ScopedEnvironment environment_{};
    // Asked politely, the server removes its lock file; the window manager spins for ever once its server has gone, so
    // it is killed, and first.
    Program server_;
    std::unique_ptr<Program> manager_;
};

// Where a window is on the screen.
struct Place {
    Window window;
    int x, y, width, height;
};

// A key that is pressed, several times perhaps, or a text that is typed.
struct Input {
    Input(KeySym pressed, int count = 1) : key(pressed), times(count) {}
    Input(std::string typed) : text(std::move(typed)) {}
    Input(const char* typed) : text(typed) {}
    KeySym key = NoSymbol;
    int times = 0;
    std::string text;
};
using Inputs = std::initializer_list<Input>;

// The person at the display, on a connection of their own. X errors of this connection are ignored, since windows go
// while one looks at them; those of any other fail the test.
class XPerson {
public:
    XPerson();
    ~XPerson();
    XPerson(const XPerson&) = delete;
    XPerson& operator=(const XPerson&) = delete;

    // Presses and releases a key, with a modifier held down. Keys that the keyboard lacks are put on it.
    void key(KeySym symbol, KeySym modifier = NoSymbol);
    void type(std::string_view text);
    void enter(Inputs inputs);
    // Clicks at a place on the screen. Clicks of two calls never make a double click.
    void click(int x, int y, int times = 1);
    void click(const Place& place) { click(place.x + place.width / 2, place.y + place.height / 2); }

    // The windows on screen with this title: dialogs (that belong to another window) or main windows.
    std::vector<Window> windows(const std::string& title, bool dialogs);
    bool isVisible(Window window);
    bool hasFocus(Window window);
    unsigned long pixel(Window window, int x, int y);

private:
    std::vector<Window> children(Window window);

    Display* display_;
    std::chrono::steady_clock::time_point lastClick_{};
};
