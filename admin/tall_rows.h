// Tables with more rows than a window of X can be high (32,767 pixels; X11 protocol, CreateWindow). Their lists are as
// high as what is seen of them and stay in sight, while the form around them is as high as can be: where the window
// around the form is scrolled to says which rows the lists show. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <vector>

// How many rows a list can have and still be as high as all of them.
int mostRows(Widget list);

// The lists of a table, from left to right, and the scrolled window around them.
struct TableRows {
    Widget window;
    std::vector<Widget> lists;

    // Whether there are more than their lists could be high.
    bool areTooMany() const;

    // For those alone:
    // Gives the lists the height of what is seen, and returns that of the form.
    int arrange() const;
    // The first row in sight, before arrange(), and the same row again afterwards.
    int top() const;
    void showAgain(int top) const;
    // Shows the rows that the window is scrolled to. Call it whenever it was.
    void show() const;
    // Scrolls as far as it takes to show the row at `position`, from 1.
    void reveal(int position) const;

private:
    int visible() const;
    void showFrom(int top) const;
};
