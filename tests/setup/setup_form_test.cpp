// The setup dialog over the administrator's window, used by keyboard.
#include "tests/support/window_test.h"

#include <algorithm>
#include <array>
#include <deque>
#include <filesystem>

#include "motifutil/message_dialog.h"
#include "tests/support/recording_browser.h"

namespace {

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
        // Checks the message over the dialog.
        Script& expect(const std::string& text) {
            return then([text] { EXPECT_NE(message().find(text), std::string::npos) << message(); });
        }
        void run(Widget button = BtnConfigure) { click(button); }

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

// What the box of a failed test says before the attributes that the driver was given.
const std::string kNotMade = "The connection could not be made. 08001: No such server 01000: 0 ";

TEST_F(SetupFormTest, OkWithoutAChangeAndEscapeAfterOneLeaveTheFileAlone) {
    openOnFirst(kTalker);
    Script()
        .then([] { EXPECT_EQ(field("TxtDataSourceName") + field("TxtDatabase") + field("TxtPassword"), "A/a******"); })
        .enter({XK_Return})
        .run();
    Script().enter({XK_End, "bc", XK_Tab, "text", XK_Escape}).run();
    EXPECT_EQ(files.read(OdbcFiles::kUser), kTalker);
}

TEST_F(SetupFormTest, WhatIsTypedAndChosenIsStoredAndTheRestKept) {
    openOnFirst(kTalker);
    Script()
        .then([] { EXPECT_EQ(field("LblHint"), " "); })
        .enter({XK_Tab, "My text ", XK_Tab, XK_End, "bc", XK_Tab})
        .then([] { EXPECT_EQ(field("LblHint"), "help"); })
        // A file is chosen in a dialog that may be left.
        .enter({XK_space, "d", XK_Return})
        .then([] { EXPECT_EQ(field("TxtDatabase"), "/abcd"); })
        .enter({XK_Tab, XK_space, "x", XK_Escape})
        .then([] { EXPECT_EQ(field("TxtDatabase"), "/abcd"); })
        // The list of choices, the first of which leaves the setting to the driver, and the one that can be typed into.
        .enter({XK_Tab, {XK_Up, 4}, XK_Tab, "own ", XK_Tab, XK_Home, "xy", XK_Delete})
        .then([] { EXPECT_EQ(field("TxtPassword"), "*******"); })
        .enter({XK_Return})
        .run();
    EXPECT_EQ(files.section("A"),
              "Driver=Talker|Database=/abcd|Password=xyeheim|Unknown=1|Description=My text|Level=own");
    EXPECT_EQ(files.section("B"), "Driver=Talker|X=1");
}

TEST_F(SetupFormTest, ARenamedDataSourceKeepsItsKeysAndReplacesAnotherOnlyWhenAllowed) {
    openOnFirst(kTalker);
    const std::string question = "A data source named \"B\" is already there. Replace it and all its settings?";
    Script()
        .enter({XK_BackSpace, XK_Delete, "a;b", XK_Return})
        .expect("\"a;b\" cannot be the name")
        .enter({XK_Return, {XK_BackSpace, 3}, "B", XK_Return})
        .expect(question)
        .enter({XK_Escape})
        .then([this] { EXPECT_EQ(files.read(OdbcFiles::kUser), kTalker); })
        .enter({XK_Return})
        .expect(question)
        .enter({XK_Return})
        .run();
    const std::string settings = "{Driver=Talker|Database=/a|Mode=odd|Password=geheim|Unknown=1}";
    EXPECT_EQ(files.summary(), "ODBC Data Sources{B=Talker} B" + settings);
    // A name may change its case.
    files.write(OdbcFiles::kUser, kTalker);
    populateUserDSN(LstUName, LstUDesc);
    clickRow(LstUName, 1);
    Script().enter({XK_Delete, "a", XK_Return}).run();
    EXPECT_EQ(files.summary(), "ODBC Data Sources{B=Talker|a=Talker} B{Driver=Talker|X=1} a" + settings);
}

TEST_F(SetupFormTest, ANewDataSourceStoresWhatTheDriverProposes) {
    openOnFirst(kTalker);
    click(BtnAdd);
    clickRow(LstDPName, 2);
    Script()
        .enter({XK_Return})
        .expect("Type a name for the data source.")
        .enter({XK_Return, "New", XK_Return})
        .run(BtnFinish);
    EXPECT_EQ(files.section("New"), "Driver=Talker|Mode=write|Token=h1");
    EXPECT_EQ(files.section("ODBC Data Sources"), "A=Talker|B=Talker|New=Talker");
}

TEST_F(SetupFormTest, ADriverThatCanNotTellGetsCommonRowsAndFurtherSettings) {
    openOnFirst(
        "[ODBC Data Sources]\nS=Silent\nT=Silent\n\n[S]\nDriver=Silent\nServer=h\nPWD=p\nSSLPassword=q\nKeep=k = "
        "v\nEdit=1\nGone=2\n");
    Script()
        .then([] {
            EXPECT_EQ(field("TxtServer") + field("TxtPWD") + field("TxtSSLPassword"), "h**");
            EXPECT_EQ(field("TxtFurtherSettings"), "Keep=k = v\nEdit=1\nGone=2\n");
        })
        .enter({{XK_Tab, 10}, XK_Down, XK_End, "23", XK_Down, {XK_BackSpace, 6}, "uid=x", {XK_Tab, 3}, XK_Return})
        .expect("\"uid\" has a field of its own")
        .enter({XK_Return, XK_Home, {XK_Delete, 3}, "New", {XK_Tab, 3}, XK_Return})
        .run();
    EXPECT_EQ(files.section("S"), "Driver=Silent|Server=h|PWD=p|SSLPassword=q|Keep=k = v|Edit=123|New=x");
}

TEST_F(SetupFormTest, ADriverOfAServerTakesALoginThatItDoesNotDescribe) {
    openOnFirst("[ODBC Data Sources]\nA=Tds\nB=Working\n\n[A]\nDriver=Tds\nPWD=p\n\n[B]\nDriver=Working\n");
    Script()
        .then([] {
            EXPECT_EQ(field("LblServername") + field("LblServer") + field("LblUID"), "ServernameServerUser");
            EXPECT_EQ(field("TxtPWD"), "*");
            moveTo("TxtUID");
        })
        .enter({"me", XK_Return})
        .run();
    EXPECT_EQ(files.section("A"), "Driver=Tds|PWD=p|UID=me");
    clickRow(LstUName, 2);
    Script().then([] { EXPECT_EQ(XtNameToWidget(ShODBCAdmin, "*TxtUID"), nullptr); }).enter({XK_Escape}).run();
}

TEST_F(SetupFormTest, RowsBeyondTheScreenScrollIntoSightAsTheyAreReached) {
    openOnFirst(kTalker);
    const auto isInSight = [](const std::string& name) {
        const Place row = placeOf(child(ShODBCAdmin, std::string(kForm) + "*" + name));
        const Place window = placeOf(child(ShODBCAdmin, std::string(kForm) + ".scrWinSettings"));
        return row.y >= window.y && row.y + row.height <= window.y + window.height;
    };
    Script()
        .then([isInSight] {
            EXPECT_LE(placeOf(child(ShODBCAdmin, kForm)).height, 768 * 3 / 4);
            EXPECT_TRUE(isInSight("TxtDatabase") && !isInSight("TxtMany30"));
        })
        .enter({{XK_Tab, 37}})
        .then([isInSight] { EXPECT_TRUE(isInSight("TxtMany30") && !isInSight("TxtDatabase")); })
        .enter({"last", XK_Tab, "12"})
        .then([] { EXPECT_EQ(field("TxtRelease") + field("TxtPin"), "r5**"); })
        .enter({XK_Tab, XK_space, {XK_Tab, 6}, "C"})
        // A stored password goes when it is no longer wanted.
        .enter({{XK_Tab, 7}, XK_space, XK_Return})
        .run();
    EXPECT_EQ(files.section("CA"), "Driver=Talker|Database=/a|Mode=odd|Unknown=1|Many30=last|Pin=12");
}

TEST_F(SetupFormTest, AFileDataSourceIsTriedAndChangedInItsOwnFile) {
    const std::string before = "[ODBC]\nDRIVER={Talker}\nFILEDSN=/elsewhere.dsn\nUnknown=1\n";
    const std::string path = files.write("a.dsn", before);
    open();
    click(TbFileDSN);
    clickRow(child(FSelect, "*ItemsList"), 1);
    for (const bool saved : {false, true}) {
        Script()
            .then([&path] { EXPECT_EQ(field("TxtFileName"), path); })
            .enter({saved ? "" : "Books", XK_Tab, saved ? "" : "/b", {XK_Tab, 4}, "geheim"})
            .enter({XK_Tab, {XK_space, saved ? 1 : 0}})
            .press("BtnTest")
            .expect(kNotMade + "DRIVER={Talker};Unknown=1;Database=/b;Password=geheim;")
            .enter({XK_Escape})
            .press("BtnOK")
            .run(BtnFDConfigure);
        EXPECT_EQ(files.read("a.dsn"),
                  before + "Description=Books\nDatabase=/b\n" + (saved ? "Password=geheim\n" : "") + "\n");
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(saved ? 0600 : 0644));
    }
}

TEST_F(SetupFormTest, TestShowsAllThatTheDriverSaysOfWhatIsTypedAndStoresNothing) {
    const std::string before =
        "[ODBC Data Sources]\nA=Talker\nB=Talker\n\n[A]\nDriver=Talker\nUnknown=1\nDescription=x\nSAVEFILE=/y\n";
    openOnFirst(before);
    Script()
        // The password is to be saved, which such a one can't be; but it can be tried.
        .enter({{XK_Tab, 2}, "/a;(b)}", {XK_Tab, 4}, "p ", XK_Tab, XK_space})
        .press("BtnTest")
        .then([] { EXPECT_EQ(message(), kNotMade + "DRIVER={Talker};Unknown=1;Database={/a;(b)}}};Password={p };"); })
        .enter({XK_Escape})
        .press("BtnOK")
        .expect("cannot begin or end with a blank")
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
            EXPECT_TRUE(all.ends_with(last + "01000: " + std::string(400, 'x') + " the end")) << all;
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
        .expect("The connection was made. The settings work.")
        .enter({XK_Return, XK_Escape})
        .run();
    EXPECT_EQ(files.read(OdbcFiles::kUser), before);
}

TEST_F(SetupFormTest, HelpOpensItsTopicAndAboutDescribesTheDriverOrWhereThatIsDumbTheSetupLibrary) {
    const RecordingBrowser browser;
    openOnFirst("[ODBC Data Sources]\nA=Talker\nS=Silent\n\n[A]\nDriver=Talker\n\n[S]\nDriver=Silent\n");
    const std::array<std::string, 3> cases[] = {{VH_TEST_TALKING_DRIVER, "1.0", ""},
                                                {VH_TEST_SETUP_LIBRARY, "05.30.0002", "Varnholt Technologies"}};
    int row = 0;
    for (const auto& [path, version, company] : cases) {
        clickRow(LstUName, ++row);
        const std::string title = "About " + path.substr(path.rfind('/') + 1);
        const std::string facts =
            path + "\n" + version + "\n" + company + "\n" +
            outputOf("date -r '" + path + "' +%x; echo $(($(stat -c %s '" + path + "') / 1024)) kb");
        Script()
            .press("BtnHelp")
            .enter({XK_F1})
            .press("BtnAbout")
            .then([title, facts] {
                std::string shown = field("TxtFile");
                std::erase(shown, '\n');  // Long ones are broken.
                for (const char* name : {"TxtVersion", "TxtCompany", "TxtDate", "TxtSize"}) {
                    shown += "\n" + field(name);
                }
                EXPECT_EQ(shown + "\n", facts);
                EXPECT_EQ(field("LblAddress1"), catalogText(Message::kCompanyAddressLine1));
                EXPECT_EQ(field("LblAddress2"), catalogText(Message::kCompanyAddressLine2));
                EXPECT_EQ(person().windows(title, true).size(), 1U);
            })
            .enter({XK_Escape})
            .then([title] { EXPECT_TRUE(person().windows(title, true).empty()); })
            .enter({XK_Escape})
            .run();
    }
    EXPECT_EQ(browser.topics(4), "setup\nsetup\nsetup\nsetup\n");
}

}  // namespace
