// Tests of the setup dialog over the administrator's window, used by keyboard.
#pragma once

#include "tests/support/window_test.h"

#include <algorithm>
#include <utility>

class SetupDialogTest : public WindowTest {
protected:
    // Opens the dialog, does the steps while it runs an event loop of its own inside of the click, and checks that they
    // end it.
    static void inDialog(const std::function<void()>& steps, Widget button = BtnConfigure) {
        inDialog(steps, [button] { click(button); });
    }
    static void inDialog(const std::function<void()>& steps, const std::function<void()>& open) {
        Steps = steps;
        wait();
        open();
        XtRemoveTimeOut(Timer);
        EXPECT_FALSE(Steps) << "no dialog";
    }
    // All that follow wait until the dialog, or the box over it, has the keyboard.
    static void enter(Inputs inputs) {
        for (const Input& input : inputs) {
            waitForDialog();
            person().enter({input});
        }
    }
    static void press(const std::string& button) {
        waitForDialog();
        click(inForm("." + button));
    }
    static std::string field(const std::string& name) {
        waitForDialog();
        Widget widget = inForm("*" + name);
        return widget == nullptr ? "(none)" : textOf(widget);
    }
    static void moveTo(const std::string& name) {
        waitForDialog();
        XmProcessTraversal(inForm("*" + name), XmTRAVERSE_CURRENT);
    }
    // The message over the dialog.
    static std::string message() {
        if (!waitFor([] { return topBox() == XtNameToWidget(ShODBCAdmin, "*FormSetup*dialog"); })) {
            return "(none)";
        }
        waitForDialog();
        std::string line = stringOf(topBox(), XmNmessageString);
        if (Widget records = XtNameToWidget(topBox(), "*TxtDiagnostics")) {
            line += "\n" + textOf(records);
        }
        std::replace(line.begin(), line.end(), '\n', ' ');
        return line;
    }
    static void expectMessage(const std::string& text) {
        EXPECT_NE(message().find(text), std::string::npos) << message();
    }
    static Widget inForm(const std::string& path) { return child(ShODBCAdmin, "vhsetup23.FormSetup" + path); }

private:
    // The dialog or the box over it; null when it is not open.
    static Widget topBox() {
        for (const char* name : {"*dialog", "*fileDialog", "*FormAbout", ""}) {
            Widget box = XtNameToWidget(ShODBCAdmin, (std::string("vhsetup23.FormSetup") + name).c_str());
            if (box != nullptr && XtIsManaged(box)) {
                return box;
            }
        }
        return nullptr;
    }
    static void waitForDialog() {
        EXPECT_TRUE(waitUntil([] {
            settle();
            return isUp(topBox());
        }));
    }
    static void wait() { Timer = XtAppAddTimeOut(app_context, 100, takeSteps, nullptr); }
    static void takeSteps(XtPointer /*clientData*/, XtIntervalId* /*timer*/) {
        if (topBox() != nullptr) {
            if (Steps) {
                std::exchange(Steps, nullptr)();
                settle();
            } else {
                ADD_FAILURE() << "the dialog stays";
                pressButton(inForm(".BtnCancel"));
            }
            // Only an event makes the loop look whether it is over.
            person().key(XK_Shift_L);
        }
        wait();
    }

    static inline std::function<void()> Steps;
    static inline XtIntervalId Timer;
};
