// The setup dialog over the administrator's window, used by keyboard.
#include "tests/support/window_test.h"
// Not before: X11 and the test library do not bear each other.
#include <X11/keysym.h>
#include <Xm/Text.h>
#include <sys/stat.h>

#include <algorithm>
#include <deque>

#include "admin/driver_chooser.h"
#include "admin/file_dsn_page.h"
#include "admin/file_dsn_wizard.h"
#include "admin/globals.h"
#include "admin/main_window.h"
#include "admin/user_dsn_page.h"
#include "motifutil/catalog_text.h"
#include "motifutil/message_dialog.h"
#include "motifutil/widgets.h"
#include "tests/support/recording_browser.h"

namespace {

constexpr std::size_t kLongRecord = 400;
constexpr const char* kForm = "vhsetup23.FormSetup";

class SetupFormTest : public WindowTest {
protected:
    // What the person does while a dialog is up that runs an event loop of its own, inside of the click that opened it:
    // timers run in that loop too. Each step waits until nothing moved for a moment.
    class Script {
    public:
        Script() { wait(); }
        ~Script() {
            EXPECT_TRUE(steps_.empty()) << steps_.size() << " steps were not taken";
            if (!steps_.empty()) {
                XtRemoveTimeOut(timer_);
            }
        }
        Script(const Script&) = delete;
        Script& operator=(const Script&) = delete;

        Script& then(const std::function<void()>& step) {
            steps_.push_back(step);
            return *this;
        }
        Script& key(KeySym symbol, KeySym modifier) {
            return then([symbol, modifier] { person().key(symbol, modifier); });
        }
        // Each key, and each text, is a step.
        Script& enter(Inputs inputs) {
            for (const Input& input : inputs) {
                for (int i = 0; i < input.times; ++i) {
                    then([input] { person().key(input.key); });
                }
                if (!input.text.empty()) {
                    then([input] { person().type(input.text); });
                }
            }
            return *this;
        }
        Script& press(const std::string& button) {
            return then([button] { person().click(placeOf(child(ShODBCAdmin, std::string(kForm) + "." + button))); });
        }

    private:
        void wait() { timer_ = XtAppAddTimeOut(app_context, 20, tick, this); }
        static void tick(XtPointer self, XtIntervalId* /*timer*/) { static_cast<Script*>(self)->tick(); }
        void tick() {
            XSync(display, False);
            quietTicks_ = (XtAppPending(app_context) & XtIMXEvent) != 0 ? 0 : quietTicks_ + 1;
            if (quietTicks_ > 3 && isReady()) {
                const std::function<void()> step = steps_.front();
                steps_.pop_front();
                quietTicks_ = ticks_ = 0;
                step();
            } else if (++ticks_ > kPatienceSeconds * 50) {
                // Ends the dialog, lest the test hang.
                ADD_FAILURE() << "stuck with " << steps_.size() << " steps to take";
                steps_.clear();
                if (Widget cancel = XtNameToWidget(ShODBCAdmin, "vhsetup23.FormSetup.BtnCancel")) {
                    pressButton(cancel);
                }
            }
            if (!steps_.empty()) {
                wait();
            }
        }
        // Whether the dialog, or a box over it, has the keyboard.
        static bool isReady() {
            Widget form = XtNameToWidget(ShODBCAdmin, kForm);
            if (form == nullptr || !XtIsManaged(form)) {
                return false;
            }
            Widget top = form;
            for (const char* name : {"*dialog", "*fileDialog", "*FormAbout"}) {
                Widget box = XtNameToWidget(form, name);
                top = box != nullptr && XtIsManaged(box) ? box : top;
            }
            return isUp(top);
        }

        std::deque<std::function<void()>> steps_;
        XtIntervalId timer_ = 0;
        int quietTicks_ = 0;
        int ticks_ = 0;
    };

    SetupFormTest() {
        files.write(OdbcFiles::kDrivers,
                    "[Talker]\nDriver=" VH_TEST_TALKING_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Silent]\nDriver=/none.so\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Working]\nDriver=" VH_TEST_SQLITE_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Tds]\nDriver=" VH_TEST_FREETDS_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY "\n");
    }
    void openOnFirst(const std::string& dataSources) {
        openWith(dataSources);
        clickRow(LstUName, 1);
    }
    static std::string field(const std::string& name) {
        Widget widget = child(ShODBCAdmin, std::string(kForm) + "*" + name);
        return widget == nullptr ? "(none)" : textOf(widget);
    }
    static void moveTo(const std::string& name) {
        XmProcessTraversal(child(ShODBCAdmin, std::string(kForm) + "*" + name), XmTRAVERSE_CURRENT);
    }
    // The message over the dialog.
    static std::string message() {
        Widget box = XtNameToWidget(ShODBCAdmin, (std::string(kForm) + "*dialog").c_str());
        if (box == nullptr || !XtIsManaged(box)) {
            return "(none)";
        }
        XmString text = nullptr;
        XtVaGetValues(box, XmNmessageString, &text, nullptr);
        std::string line = plainText(XmStringPtr(text).get());
        if (Widget records = XtNameToWidget(box, "*TxtDiagnostics")) {
            line += "\n" + textOf(records);
        }
        std::replace(line.begin(), line.end(), '\n', ' ');
        return line;
    }
};

// With a comment, which any write would drop.
constexpr const char* kTalker =
    "# mine\n[ODBC Data "
    "Sources]\nA=Talker\nB=Talker\n\n[A]\nDriver=Talker\nDatabase=/a\nMode=odd\nPassword=geheim\nUnknown=1\n\n"
    "[B]\nDriver=Talker\nX=1\n";

TEST_F(SetupFormTest, OkWithoutAChangeAndEscapeAfterOneLeaveTheFileAlone) {
    openOnFirst(kTalker);
    {
        Script script;
        script
            .then([] {
                EXPECT_EQ(field("TxtDataSourceName"), "A");
                EXPECT_EQ(field("TxtDatabase"), "/a");
                EXPECT_EQ(field("TxtPassword"), "******");
            })
            .enter({XK_Return});
        click(BtnConfigure);
    }
    Script script;
    script.enter({XK_End, "bc", XK_Tab, "text", XK_Escape});
    click(BtnConfigure);
    EXPECT_EQ(files.read(OdbcFiles::kUser), kTalker);
}

TEST_F(SetupFormTest, WhatIsTypedAndChosenIsStoredAndTheRestKept) {
    openOnFirst(kTalker);
    Script script;
    script
        .enter({XK_Tab, "My text", XK_Tab, XK_End, "bc ", XK_Tab})
        // The list of choices, the first of which leaves the setting to the driver, and the one that can be typed into.
        .enter({XK_Tab, {XK_Up, 4}, XK_Tab, "own", XK_Tab, XK_Home, "xy", XK_Delete})
        .then([] { EXPECT_EQ(field("TxtPassword"), "*******"); })
        .enter({XK_Return});
    click(BtnConfigure);
    EXPECT_EQ(files.section("A"),
              "Driver=Talker|Database=/abc|Password=xyeheim|Unknown=1|Description=My text|Level=own");
    EXPECT_EQ(files.section("B"), "Driver=Talker|X=1");
}

TEST_F(SetupFormTest, ARenamedDataSourceKeepsItsKeysAndReplacesAnotherOnlyWhenAllowed) {
    openOnFirst(kTalker);
    const std::string question = "A data source named \"B\" is already there. Replace it and all its settings?";
    Script script;
    script.enter({XK_BackSpace, XK_Delete, "a;b", XK_Return})
        .then([] { EXPECT_NE(message().find("\"a;b\" cannot be the name"), std::string::npos) << message(); })
        .enter({XK_Return, {XK_BackSpace, 3}, "B", XK_Return})
        .then([question] { EXPECT_EQ(message(), question); })
        .enter({XK_Escape})
        .then([this] { EXPECT_EQ(files.read(OdbcFiles::kUser), kTalker); })
        .enter({XK_Return})
        .then([question] { EXPECT_EQ(message(), question); })
        .enter({XK_Return});
    click(BtnConfigure);
    EXPECT_EQ(files.section("ODBC Data Sources"), "B=Talker");
    EXPECT_EQ(files.section("A"), "(none)");
    EXPECT_EQ(files.section("B"), "Driver=Talker|Database=/a|Mode=odd|Password=geheim|Unknown=1");
}

TEST_F(SetupFormTest, ANameMayChangeItsCase) {
    openOnFirst(kTalker);
    Script script;
    script.enter({XK_Delete, "a", XK_Return});
    click(BtnConfigure);
    EXPECT_EQ(files.section("ODBC Data Sources"), "B=Talker|a=Talker");
    EXPECT_EQ(files.section("a"), "Driver=Talker|Database=/a|Mode=odd|Password=geheim|Unknown=1");
}

TEST_F(SetupFormTest, ANewDataSourceStoresWhatTheDriverProposes) {
    openOnFirst(kTalker);
    click(BtnAdd);
    clickRow(LstDPName, 2);
    Script script;
    script.enter({XK_Return})
        .then([] { EXPECT_EQ(message(), "Type a name for the data source."); })
        .enter({XK_Return, "New", XK_Return});
    click(BtnFinish);
    EXPECT_EQ(files.section("New"), "Driver=Talker|Mode=write|Token=h1");
    EXPECT_EQ(files.section("ODBC Data Sources"), "A=Talker|B=Talker|New=Talker");
}

TEST_F(SetupFormTest, ADriverThatCanNotTellGetsCommonRowsAndFurtherSettings) {
    openOnFirst(
        "[ODBC Data Sources]\nS=Silent\nT=Silent\n\n[S]\nDriver=Silent\nServer=h\nPWD=p\nSSLPassword=q\nKeep=k = "
        "v\nEdit=1\nGone=2\n");
    Script script;
    script
        .then([] {
            EXPECT_EQ(field("TxtServer"), "h");
            EXPECT_EQ(field("TxtPWD"), "*");
            EXPECT_EQ(field("TxtSSLPassword"), "*");
            EXPECT_EQ(field("TxtFurtherSettings"), "Keep=k = v\nEdit=1\nGone=2\n");
        })
        .enter({{XK_Tab, 10}, XK_Down, XK_End, "23", XK_Down, {XK_BackSpace, 6}, "uid=x", {XK_Tab, 3}, XK_Return})
        .then([] { EXPECT_NE(message().find("\"uid\" has a field of its own"), std::string::npos) << message(); })
        .enter({XK_Return, XK_Home, {XK_Delete, 3}, "New", {XK_Tab, 3}, XK_Return});
    click(BtnConfigure);
    EXPECT_EQ(files.section("S"), "Driver=Silent|Server=h|PWD=p|SSLPassword=q|Keep=k = v|Edit=123|New=x");
}

TEST_F(SetupFormTest, ADriverOfAServerTakesALoginThatItDoesNotDescribe) {
    openOnFirst("[ODBC Data Sources]\nA=Tds\nB=Working\n\n[A]\nDriver=Tds\nPWD=p\n\n[B]\nDriver=Working\n");
    {
        Script script;
        script
            .then([] {
                EXPECT_EQ(field("LblServername") + field("LblServer"), "ServernameServer");
                EXPECT_EQ(field("LblUID"), "User");
                EXPECT_EQ(field("TxtPWD"), "*");
                moveTo("TxtUID");
            })
            .enter({"me", XK_Return});
        click(BtnConfigure);
    }
    EXPECT_EQ(files.section("A"), "Driver=Tds|PWD=p|UID=me");
    clickRow(LstUName, 2);
    Script script;
    script.then([] { EXPECT_EQ(XtNameToWidget(ShODBCAdmin, "*TxtUID"), nullptr); }).enter({XK_Escape});
    click(BtnConfigure);
}

TEST_F(SetupFormTest, RowsBeyondTheScreenScrollIntoSightAsTheyAreReached) {
    openOnFirst(kTalker);
    const auto isInSight = [](const std::string& name) {
        const Place row = placeOf(child(ShODBCAdmin, std::string(kForm) + "*" + name));
        const Place window = placeOf(child(ShODBCAdmin, std::string(kForm) + ".scrWinSettings"));
        return row.y >= window.y && row.y + row.height <= window.y + window.height;
    };
    Script script;
    script
        .then([isInSight] {
            EXPECT_LE(placeOf(child(ShODBCAdmin, kForm)).height, 768 * 3 / 4);
            EXPECT_TRUE(isInSight("TxtDatabase"));
            EXPECT_FALSE(isInSight("TxtMany30"));
        })
        .enter({{XK_Tab, 37}})
        .then([isInSight] {
            EXPECT_TRUE(isInSight("TxtMany30"));
            EXPECT_FALSE(isInSight("TxtDatabase"));
        })
        .enter({"last", XK_Tab, "12"})
        .then([] {
            EXPECT_EQ(field("TxtRelease"), "r5");
            EXPECT_EQ(field("TxtPin"), "**");
        })
        .enter({XK_Tab, XK_space, {XK_Tab, 6}, "C", XK_Return});
    click(BtnConfigure);
    EXPECT_EQ(files.section("CA"), "Driver=Talker|Database=/a|Mode=odd|Password=geheim|Unknown=1|Many30=last|Pin=12");
}

TEST_F(SetupFormTest, AStoredPasswordGoesWhenItIsNoLongerWanted) {
    openOnFirst("[ODBC Data Sources]\nA=Talker\nB=Talker\n\n[A]\nDriver=Talker\nPassword=geheim\n");
    Script script;
    script.enter({{XK_Tab, 7}, XK_space, XK_Return});
    click(BtnConfigure);
    EXPECT_EQ(files.section("A"), "Driver=Talker");
}

TEST_F(SetupFormTest, AFileDataSourceIsTriedAndChangedInItsOwnFile) {
    const std::string before = "[ODBC]\nDRIVER={Talker}\nFILEDSN=/elsewhere.dsn\nUnknown=1\n";
    const std::string path = files.write("a.dsn", before);
    open();
    click(TbFileDSN);
    clickRow(child(FSelect, "*ItemsList"), 1);
    struct Case {
        bool saved;
        const char* added;
        mode_t mode;
    };
    for (const Case& now : {Case{false, "Description=Books\nDatabase=/b\n", 0644},
                            Case{true, "Description=Books\nDatabase=/b\nPassword=geheim\n", 0600}}) {
        Script script;
        script.then([&path] { EXPECT_EQ(field("TxtFileName"), path); })
            .enter({now.saved ? "" : "Books", XK_Tab, now.saved ? "" : "/b", {XK_Tab, 4}, "geheim"})
            .enter({XK_Tab, {XK_space, now.saved ? 1 : 0}})
            .press("BtnTest")
            .then([] {
                EXPECT_EQ(message(),
                          "The connection could not be made. 08001: No such server 01000: 0 "
                          "DRIVER={Talker};Unknown=1;Database=/b;Password=geheim;");
            })
            .enter({XK_Escape})
            .press("BtnOK");
        click(BtnFDConfigure);
        EXPECT_EQ(files.read("a.dsn"), before + now.added + "\n");
        struct stat status {};
        stat(path.c_str(), &status);
        EXPECT_EQ(status.st_mode & 0777, now.mode);
    }
}

TEST_F(SetupFormTest, TestShowsAllThatTheDriverSaysOfWhatIsTypedAndStoresNothing) {
    const std::string before =
        "[ODBC Data Sources]\nA=Talker\nB=Talker\n\n[A]\nDriver=Talker\nUnknown=1\nDescription=x\nSAVEFILE=/y\n";
    openOnFirst(before);
    Script script;
    // The password is to be saved, which such a one can't be; but it can be tried.
    script.enter({{XK_Tab, 2}, "/a;(b)}", {XK_Tab, 4}, "p ", XK_Tab, XK_space})
        .press("BtnTest")
        .then([] {
            EXPECT_EQ(message(),
                      "The connection could not be made. 08001: No such server 01000: 0 "
                      "DRIVER={Talker};Unknown=1;Database={/a;(b)}}};Password={p };");
        })
        .enter({XK_Escape})
        .press("BtnOK")
        .then([] { EXPECT_NE(message().find("cannot begin or end with a blank"), std::string::npos) << message(); })
        .enter({XK_Return})
        .then([] { moveTo("TxtDatabase"); })
        .enter({XK_End, "many"})
        .press("BtnTest")
        .then([] {
            const std::string all = message();
            std::string last;
            for (int i = 2; i < 30; ++i) {
                last += "01000: once more ";
            }
            EXPECT_TRUE(all.ends_with(last + "01000: " + std::string(kLongRecord, 'x') + " the end")) << all;
            const Place box = placeOf(XtParent(child(ShODBCAdmin, std::string(kForm) + "*dialog")));
            EXPECT_TRUE(box.y >= 0 && box.y + box.height <= 768) << box.y << " " << box.height;
        })
        // From the button to what the driver says, all of which can be selected, to be copied.
        .enter({XK_Tab})
        .key(XK_slash, XK_Control_L)
        .then([] {
            Widget records = child(ShODBCAdmin, std::string(kForm) + "*dialog*TxtDiagnostics");
            const XtTextPtr selected(XmTextGetSelection(records));
            EXPECT_EQ(selected == nullptr ? "" : selected.get(), textOf(records));
        })
        .enter({XK_Escape})
        .then([] { moveTo("TxtDatabase"); })
        .enter({XK_End, " Connect=1"})
        .press("BtnTest")
        // The driver manager adds that this driver knows less than it asked for.
        .then([] { EXPECT_TRUE(message().starts_with("The connection was made. The settings work.")) << message(); })
        .enter({XK_Return, XK_Escape});
    click(BtnConfigure);
    EXPECT_EQ(files.read(OdbcFiles::kUser), before);
}

TEST_F(SetupFormTest, AFileIsChosenInADialogThatMayBeLeft) {
    openOnFirst(kTalker);
    Script script;
    script.then([] { EXPECT_EQ(field("LblHint"), " "); })
        .enter({{XK_Tab, 3}})
        .then([] { EXPECT_EQ(field("LblHint"), "help"); })
        .enter({XK_space, "bc", XK_Return})
        .then([] { EXPECT_EQ(field("TxtDatabase"), "/abc"); })
        .enter({XK_Tab, XK_space, "x", XK_Escape})
        .then([] { EXPECT_EQ(field("TxtDatabase"), "/abc"); })
        .key(XK_Tab, XK_Shift_L)
        .enter({XK_Return});
    click(BtnConfigure);
    EXPECT_EQ(files.section("A"), "Driver=Talker|Database=/abc|Mode=odd|Password=geheim|Unknown=1");
}

TEST_F(SetupFormTest, HelpOpensItsTopicAndAboutDescribesTheDriverOrWhereThatIsDumbTheSetupLibrary) {
    const RecordingBrowser browser;
    openOnFirst("[ODBC Data Sources]\nA=Talker\nS=Silent\n\n[A]\nDriver=Talker\n\n[S]\nDriver=Silent\n");
    struct Case {
        int row;
        std::string path, version, company;
    };
    for (const Case& now : {Case{1, VH_TEST_TALKING_DRIVER, "1.0", ""},
                            Case{2, VH_TEST_SETUP_LIBRARY, "05.30.0002", "Varnholt Technologies"}}) {
        clickRow(LstUName, now.row);
        const std::string title = "About " + now.path.substr(now.path.rfind('/') + 1);
        const std::string facts =
            outputOf("date -r '" + now.path + "' +%x; echo $(($(stat -c %s '" + now.path + "') / 1024)) kb");
        Script script;
        script.press("BtnHelp")
            .enter({XK_F1})
            .press("BtnAbout")
            .then([now, title, facts] {
                std::string path = field("TxtFile");
                std::erase(path, '\n');  // Long ones are broken.
                EXPECT_EQ(path, now.path);
                EXPECT_EQ(field("TxtVersion"), now.version);
                EXPECT_EQ(field("TxtCompany"), now.company);
                EXPECT_EQ(field("TxtDate") + "\n" + field("TxtSize") + "\n", facts);
                EXPECT_EQ(field("LblAddress1"), catalogText(Message::kCompanyAddressLine1));
                EXPECT_EQ(field("LblAddress2"), catalogText(Message::kCompanyAddressLine2));
                EXPECT_EQ(person().windows(title, true).size(), 1U);
            })
            .enter({XK_Escape})
            .then([title] { EXPECT_TRUE(person().windows(title, true).empty()); })
            .enter({XK_Escape});
        click(BtnConfigure);
    }
    EXPECT_EQ(browser.topics(4), "setup\nsetup\nsetup\nsetup\n");
}

}  // namespace
