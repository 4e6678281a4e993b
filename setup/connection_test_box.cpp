#include "setup/connection_test_box.h"

#include <Xm/MessageB.h>
#include <Xm/Text.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <memory>
#include <new>
#include <sstream>
#include <utility>

#include "installer/configuration.h"
#include "installer/debian_packages.h"
#include "kvlib/text.h"
#include "motifutil/catalog_text.h"
#include "motifutil/icons.h"
#include "motifutil/message_dialog.h"
#include "motifutil/message_icons.h"
#include "motifutil/mnemonics.h"
#include "motifutil/shells.h"
#include "motifutil/widgets.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"
#include "setup/connection_test.h"
#include "setup/driver_files.h"
#include "setup/setup_texts.h"

namespace {

// A comfortable line, in characters, and the share of the screen that the text may take in each direction, in percent.
constexpr int kLineLength = 60;
constexpr int kLargestShare = 60;
// What a text takes for itself beside its lines, in pixels.
constexpr int kTextFrame = 20;
// How long a connection may take, in seconds.
constexpr long kPatience = 30;

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

// A line without what no text widget takes: it would end there.
std::string displayable(std::string line) {
    std::replace_if(
        line.begin(), line.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; }, ' ');
    std::u16string text = toUtf16(line, kCPLocale);
    std::replace(text.begin(), text.end(), u'\uFFFD', u'?');
    return fromUtf16(text, kCPLocale);
}

// The records below the heading of a box: read only, to be marked and copied.
void addRecords(Widget box, const std::vector<std::string>& records) {
    const Measure measure(box);
    const int width = std::min(kLineLength * measure.width("n"), WidthOfScreen(XtScreen(box)) * kLargestShare / 100);
    const int mostLines = HeightOfScreen(XtScreen(box)) * kLargestShare / 100 / measure.lineHeight();
    std::string text;
    int lines = 0;
    for (const std::string& given : records) {
        const std::string record = displayable(given);
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
    overrideTranslations(field, "<Key>osfCancel: activate()\n<Key>osfActivate: activate()\n<Key>Return: activate()");
    XtManageChild(field);
}

std::string headingOf(const ConnectionOutcome& outcome, const std::string& library) {
    if (outcome.connected) {
        const std::string works = setupText(SetupMessage::kTestSucceeded);
        return outcome.server.empty() ? works : works + "\n" + setupText(SetupMessage::kTestServer, outcome.server);
    }
    if (!outcome.crash.empty()) {
        return setupText(SetupMessage::kTestCrashed, outcome.crash);
    }
    if (!isDriverInstalled(library)) {
        std::string missing = setupText(SetupMessage::kDriverNotInstalled, library);
        if (const std::string package = installer::packageOf(library); !package.empty()) {
            missing += "\n" + setupText(SetupMessage::kDriverPackage, package);
        }
        if (const std::string other = installer::driverInsteadOf(library); !other.empty()) {
            missing += "\n" + setupText(SetupMessage::kOtherDriver, other);
        }
        return missing;
    }
    return setupText(outcome.diagnostics.empty() ? SetupMessage::kTestFailedSilently : SetupMessage::kTestFailed);
}

// What is shown below the heading: with the lines that the driver printed.
std::vector<std::string> withPrinted(std::vector<std::string> records, const std::string& printed) {
    if (!installer::trimmed(printed).empty()) {
        records.push_back(setupText(SetupMessage::kDriverPrinted));
        std::istringstream lines(printed);
        for (std::string line; std::getline(lines, line);) {
            records.push_back(line);
        }
    }
    return records;
}

Widget createBox(Widget parent, unsigned long kind, std::string text) {
    return createMessageDialog(parent, kind, text.data(), catalogText(Message::kOk).data(), std::string().data(),
                               setupText(SetupMessage::kTestTitle).data());
}

void showBox(Widget parent, unsigned long kind, const std::string& heading, const std::vector<std::string>& records) {
    Widget box = createBox(parent, kind, heading);
    if (box == nullptr) {
        return;
    }
    setHelpTopic(box, "test");
    if (!records.empty()) {
        addRecords(box, records);
    }
    XtManageChild(box);
}

// The box while the connection is tried. It belongs to its widget and goes with it. Xt destroys what a timer gives up
// only when the dialog below has ended, so a timer sends the box an event, in which it goes at once.
class WaitingBox {
public:
    WaitingBox(Widget parent, const ConnectionTest& test, std::string library)
        : parent_(parent), library_(std::move(library)), attempt_(std::make_unique<ConnectionAttempt>(test)) {
        createBox();
        XtAddCallback(box_, XmNokCallback, waitOn, this);
        XtAddCallback(box_, XmNcancelCallback, cancelled, this);
        XtAddCallback(box_, XmNdestroyCallback, destroyed, this);
        prepareShell(XtParent(box_), cancelled, this);
        XtAddEventHandler(box_, NoEventMask, True, eventCame, this);
        look();
        XtManageChild(box_);
    }
    WaitingBox(const WaitingBox&) = delete;
    WaitingBox& operator=(const WaitingBox&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    ~WaitingBox() { end(); }

    void createBox() {
        const XmStringPtr waitOnLabel = compoundString(setupText(SetupMessage::kWaitOn));
        const XmStringPtr cancelLabel = compoundString(catalogText(Message::kCancel));
        const std::string title = setupText(SetupMessage::kTestTitle);
        ArgumentList arguments;
        arguments.set(XmNokLabelString, waitOnLabel.get())
            .set(XmNcancelLabelString, cancelLabel.get())
            .set(XmNdefaultButtonType, XmDIALOG_CANCEL_BUTTON)
            .set(XmNautoUnmanage, False)
            .set(XmNtitle, title.c_str())
            .set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL);
        static char name[] = "connecting";
        box_ = XmCreateInformationDialog(parent_, name, arguments.data(), arguments.size());
        if (box_ == nullptr) {
            throw std::bad_alloc();
        }
        setIcon(box_, XmNsymbolPixmap, createIconPixmap(box_, kInformationIcon));
        XtUnmanageChild(XtNameToWidget(box_, "Help"));
        setMnemonic(XtNameToWidget(box_, "OK"), setupMnemonic(SetupMessage::kWaitOn));
        setMnemonic(XtNameToWidget(box_, "Cancel"), mnemonicFor(Message::kCancel));
        serveKeys(XtParent(box_));
        setHelpTopic(box_, "test");
    }
    // Lets the process end and the box go from the screen.
    void end() {
        attempt_.reset();
        if (timer_ != 0) {
            XtRemoveTimeOut(std::exchange(timer_, 0));
        }
    }
    void leave() {
        end();
        XtUnmanageChild(box_);
        XtDestroyWidget(box_);
    }
    void look() {
        constexpr unsigned long kPause = 50;  // milliseconds
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start_).count();
        if (const std::optional<ConnectionOutcome> outcome = attempt_->outcome()) {
            leave();
            showBox(parent_, outcome->connected ? kInformationDialog : kErrorDialog, headingOf(*outcome, library_),
                    withPrinted(outcome->diagnostics, outcome->printed));
        } else if (!isEndless_ && seconds >= kPatience) {
            const std::vector<std::string> records = withPrinted({}, attempt_->printed());
            leave();
            showBox(parent_, kErrorDialog, setupText(SetupMessage::kNoAnswer), records);
        } else {
            showText(setupText(isEndless_ ? SetupMessage::kConnectingOn : SetupMessage::kConnecting,
                               std::to_string(seconds)));
            timer_ = XtAppAddTimeOut(XtWidgetToApplicationContext(parent_), kPause, timeCame, this);
        }
    }
    void showText(const std::string& text) {
        if (text != std::exchange(shown_, text)) {
            XtVaSetValues(box_, XmNmessageString, compoundString(text).get(), nullptr);
        }
    }

    static void timeCame(XtPointer box, XtIntervalId* /*timer*/) {
        auto* self = static_cast<WaitingBox*>(box);
        self->timer_ = 0;
        XClientMessageEvent event{};
        event.type = ClientMessage;
        event.window = XtWindow(self->box_);
        event.format = 32;
        XSendEvent(XtDisplay(self->box_), event.window, False, NoEventMask, reinterpret_cast<XEvent*>(&event));
    }
    static void eventCame(Widget /*widget*/, XtPointer box, XEvent* event, Boolean* /*continueToDispatch*/) {
        auto* self = static_cast<WaitingBox*>(box);
        if (event->type == ClientMessage && self->attempt_) {
            reportingLackOfMemory(self->parent_, [self] { self->look(); });
        }
    }
    static void waitOn(Widget /*widget*/, XtPointer box, XtPointer /*callData*/) {
        auto* self = static_cast<WaitingBox*>(box);
        self->isEndless_ = true;
        XtSetSensitive(XtNameToWidget(self->box_, "OK"), False);
    }
    static void cancelled(Widget /*widget*/, XtPointer box, XtPointer /*callData*/) {
        static_cast<WaitingBox*>(box)->leave();
    }
    static void destroyed(Widget /*widget*/, XtPointer box, XtPointer /*callData*/) {
        delete static_cast<WaitingBox*>(box);
    }

    Widget parent_;
    std::string library_;
    std::unique_ptr<ConnectionAttempt> attempt_;
    Clock::time_point start_ = Clock::now();
    Widget box_ = nullptr;
    XtIntervalId timer_ = 0;
    std::string shown_;
    bool isEndless_ = false;
};

}  // namespace

void testConnectionFor(Widget parent, const ConnectionTest& test, const std::string& library) {
    // It deletes itself.
    new WaitingBox(parent, test, library);
}
