// The line of the setup form that explains the field which has the keyboard. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <map>
#include <string>

class HintLine {
public:
    // Makes the line as a child of the form `parent`. It must live as long as the widgets it is told of.
    explicit HintLine(Widget parent);
    HintLine(const HintLine&) = delete;
    HintLine& operator=(const HintLine&) = delete;

    Widget line() const noexcept { return line_; }
    // What the line says while `widget` has the keyboard; empty text clears it.
    void explain(Widget widget, const std::string& text);
    // Cuts what it says to its present width, between words.
    void fit();

private:
    static void focused(Widget widget, XtPointer self, XEvent* event, Boolean* continueToDispatch);

    Widget line_ = nullptr;
    std::map<Widget, std::string> texts_;
    std::string text_;
};
