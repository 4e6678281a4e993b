#include "setup/connection_test_box.h"

#include <X11/cursorfont.h>
#include <Xm/MessageB.h>
#include <Xm/Text.h>

#include <algorithm>
#include <new>
#include <utility>

#include "motifutil/catalog_text.h"
#include "motifutil/message_dialog.h"
#include "motifutil/widgets.h"
#include "setup/connection_test.h"
#include "setup/setup_texts.h"

namespace {

// A comfortable line, in characters, and the share of the screen that the text may take in each direction, in percent.
constexpr int kLineLength = 60;
constexpr int kLargestShare = 60;
// What a text takes for itself beside its lines, in pixels.
constexpr int kTextFrame = 20;

// Shows a watch as the pointer over a window while it lives.
class BusyPointer {
public:
    explicit BusyPointer(Widget shell) : display_(XtDisplay(shell)), window_(XtWindow(shell)) {
        cursor_ = XCreateFontCursor(display_, XC_watch);
        XDefineCursor(display_, window_, cursor_);
        XFlush(display_);
    }
    ~BusyPointer() {
        XUndefineCursor(display_, window_);
        XFreeCursor(display_, cursor_);
    }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;

private:
    Display* display_;
    Window window_;
    Cursor cursor_;
};

SetupMessage::Number headingOf(const ConnectionOutcome& outcome) {
    if (outcome.connected) {
        return SetupMessage::kTestSucceeded;
    }
    return outcome.diagnostics.empty() ? SetupMessage::kTestFailedSilently : SetupMessage::kTestFailed;
}

// Texts as wide and high as they are in a box.
class Measure {
public:
    explicit Measure(Widget box) {
        // The box's own table for texts is not the one that a text in it gets.
        XtVaGetValues(XtNameToWidget(box, "Message"), XmNrenderTable, &fonts_, nullptr);
    }
    int width(const std::string& text) const { return XmStringWidth(fonts_, compoundString(text).get()); }
    int lineHeight() const { return XmStringHeight(fonts_, compoundString("X").get()); }

    // How many lines a record takes when it is wrapped between words, and inside of words that are too long for a line.
    int wrappedLines(const std::string& record, int lineWidth) const {
        int lines = 1;
        std::size_t lineStart = 0;
        for (std::size_t wordStart = 0; wordStart < record.size();) {
            const std::size_t wordEnd = std::min(record.find(' ', wordStart), record.size());
            if (width(record.substr(lineStart, wordEnd - lineStart)) > lineWidth) {
                lines += 1 + width(record.substr(wordStart, wordEnd - wordStart)) / lineWidth;
                lineStart = wordStart;
            }
            wordStart = wordEnd + 1;
        }
        return lines;
    }

private:
    XmRenderTable fonts_ = nullptr;
};

// The records below the heading of a box: read only, to be marked and copied.
void addRecords(Widget box, const std::vector<std::string>& records) {
    const Measure measure(box);
    const int width = std::min(kLineLength * measure.width("n"), WidthOfScreen(XtScreen(box)) * kLargestShare / 100);
    const int mostLines = HeightOfScreen(XtScreen(box)) * kLargestShare / 100 / measure.lineHeight();
    std::string text;
    int lines = 0;
    for (const std::string& record : records) {
        text += (text.empty() ? "" : "\n") + record;
        lines += measure.wrappedLines(record, width);
    }
    ArgumentList arguments;
    arguments.set(XmNeditMode, XmMULTI_LINE_EDIT)
        .set(XmNeditable, False)
        .set(XmNcursorPositionVisible, False)
        .set(XmNrows, std::min(lines, mostLines))
        .set(XmNscrollHorizontal, False)
        .set(XmNscrollVertical, lines > mostLines)
        .set(XmNwordWrap, True)
        .set(XmNvalue, text.c_str());
    static char name[] = "TxtDiagnostics";
    Widget field = XmCreateScrolledText(box, name, arguments.data(), arguments.size());
    if (field == nullptr) {
        throw std::bad_alloc();
    }
    XtVaSetValues(field, XmNwidth, width + kTextFrame, nullptr);
    // What leaves the box leaves it from here too.
    overrideTranslations(field,
                         "<Key>osfCancel: activate()\n<Key>osfActivate: activate()\n<Key>Return: activate()\n"
                         "Shift<Key>Tab: prev-tab-group()\n<Key>Tab: next-tab-group()");
    XtManageChild(field);
}

void showOutcome(Widget parent, const ConnectionOutcome& outcome) {
    Widget box = createMessageDialog(parent, outcome.connected ? kInformationDialog : kErrorDialog,
                                     setupText(headingOf(outcome)).data(), catalogText(Message::kOk).data(),
                                     std::string().data(), setupText(SetupMessage::kTestTitle).data());
    if (box == nullptr) {
        return;
    }
    if (!outcome.diagnostics.empty()) {
        addRecords(box, outcome.diagnostics);
    }
    XtManageChild(box);
}

}  // namespace

void testConnectionFor(Widget parent, std::string connectionString) {
    ConnectionOutcome outcome;
    {
        Widget shell = parent;
        while (!XtIsShell(shell)) {
            shell = XtParent(shell);
        }
        const BusyPointer busy(shell);
        outcome = testConnection(std::move(connectionString));
    }
    showOutcome(parent, outcome);
}
