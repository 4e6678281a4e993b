// The setup dialog over the administrator's window, used by keyboard.
#include "tests/support/window_test.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "admin/advanced_dialog.h"
#include "admin/wizard_finish.h"
#include "tests/support/recording_browser.h"

namespace {

const std::string kForm = "vhsetup23.FormSetup";

class SetupFormTest : public WindowTest {
protected:
    SetupFormTest() {
        files.write(OdbcFiles::kDrivers,
                    "[Talker]\nDriver=" VH_TEST_TALKING_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Silent]\nDriver=/none.so\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Working]\nDriver=" VH_TEST_SQLITE_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Zp]\nDriver=/none/psqlodbcw.so\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Tds]\nDriver=" VH_TEST_FREETDS_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY "\n");
    }
    void openOnFirst(const std::string& dataSources) {
        openWith(dataSources);
        clickRow(LstUName, 1);
    }
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
    static Widget inForm(const std::string& path) { return child(ShODBCAdmin, kForm + path); }

private:
    // The dialog or the box over it; null when it is not open.
    static Widget topBox() {
        for (const char* name : {"*dialog", "*fileDialog", "*FormAbout", ""}) {
            Widget box = XtNameToWidget(ShODBCAdmin, (kForm + name).c_str());
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

// With a comment, which any write would drop.
constexpr const char* kTalker =
    "# mine\n[ODBC Data "
    "Sources]\nA=Talker\nB=Talker\n\n[A]\nDriver=Talker\nDatabase=/a\nMode=odd\nPassword=geheim\nUnknown=1\n\n"
    "[B]\nDriver=Talker\nX=1\n";

// What the box of a failed test says before the attributes that the driver was given.
const std::string kNotMade = "The connection could not be made. 08001: No such server 01000: 0 ";

TEST_F(SetupFormTest, WhatIsTypedAndChosenIsStoredAndTheRestKept) {
    openOnFirst(kTalker);
    inDialog([] {
        EXPECT_EQ(field("TxtDataSourceName") + field("TxtDatabase") + field("TxtPassword"), "A/a******");
        enter({XK_Return});
    });
    inDialog([] { enter({XK_End, "bc", XK_Tab, "text", XK_Escape}); });
    EXPECT_EQ(files.read(OdbcFiles::kUser), kTalker);
    inDialog([] {
        EXPECT_EQ(field("LblHint"), " ");
        enter({XK_Tab, "My text ", {XK_Tab, 2}, XK_End, "bc", XK_Tab});
        EXPECT_EQ(field("LblHint"), "help");
        // A file is chosen in a dialog that may be left.
        enter({XK_space, "d", XK_Return});
        enter({XK_Tab, XK_space, "x", XK_Escape});
        EXPECT_EQ(field("TxtDatabase"), "/abcd");
        enter({XK_Tab, XK_Home, "xy", XK_Delete});
        EXPECT_EQ(field("TxtPassword"), "*******");
        // The list of choices, the first of which leaves the setting to the driver, and the one that can be typed into.
        click(inForm("*TabAdvanced"));
        enter({{XK_Up, 4}, XK_Tab, "own ", XK_Return});
    });
    EXPECT_EQ(files.section("A"),
              "Driver=Talker|Database=/abcd|Password=xyeheim|Unknown=1|Description=My text|Level=own");
    EXPECT_EQ(files.section("B"), "Driver=Talker|X=1");
}

TEST_F(SetupFormTest, ARenamedDataSourceKeepsItsKeysAndReplacesAnotherOnlyWhenAllowed) {
    openOnFirst(kTalker);
    inDialog([this] {
        enter({XK_BackSpace, XK_Delete, "a;b", XK_Return});
        expectMessage("\"a;b\" cannot be the name");
        enter({XK_Return, {XK_BackSpace, 3}, "B", XK_Return});
        expectMessage("A data source named \"B\" is already there. Replace it and all its settings?");
        enter({XK_Return});
        EXPECT_EQ(files.read(OdbcFiles::kUser), kTalker);
        enter({XK_Return, XK_Tab, XK_Return});
    });
    const std::string settings = "{Driver=Talker|Database=/a|Mode=odd|Password=geheim|Unknown=1}";
    EXPECT_EQ(files.summary(), "ODBC Data Sources{B=Talker} B" + settings);
    // A name may change its case.
    files.write(OdbcFiles::kUser, kTalker);
    populateUserDSN(LstUName, LstUDesc);
    clickRow(LstUName, 1);
    inDialog([] { enter({XK_Delete, "a", XK_Return}); });
    EXPECT_EQ(files.summary(), "ODBC Data Sources{B=Talker|a=Talker} B{Driver=Talker|X=1} a" + settings);
}

TEST_F(SetupFormTest, ANewDataSourceStoresWhatIsTypedAndNoDefault) {
    openOnFirst(kTalker);
    click(BtnAdd);
    clickRow(LstDPName, 2);
    inDialog(
        [] {
            enter({XK_Return});
            expectMessage("Type a name for the data source.");
            enter({XK_Return, "New", XK_Return});
        },
        BtnFinish);
    EXPECT_EQ(files.section("New"), "Driver=Talker");
    EXPECT_EQ(files.section("ODBC Data Sources"), "A=Talker|B=Talker|New=Talker");
}

TEST_F(SetupFormTest, ADriverThatCanNotTellGetsCommonRowsAndFurtherSettings) {
    openOnFirst(
        "[ODBC Data Sources]\nS=Silent\nT=Silent\n\n[S]\nDriver=Silent\nServer=h\nPWD=p\nSSLPassword=q\nKeep=k = "
        "v\nEdit=1\nGone=2\n");
    inDialog([] {
        EXPECT_EQ(field("TxtServer") + field("TxtPWD") + field("TxtSSLPassword"), "h**");
        EXPECT_EQ(field("TxtFurtherSettings"), "Keep=k = v\nEdit=1\nGone=2\n");
        enter({{XK_Tab, 10}, XK_Down, XK_End, "23", XK_Down, {XK_BackSpace, 6}, "uid=x", {XK_Tab, 3}, XK_Return});
        expectMessage("\"uid\" has a field of its own");
        enter({XK_Return, XK_Home, {XK_Delete, 3}, "New", {XK_Tab, 3}, XK_Return});
    });
    EXPECT_EQ(files.section("S"), "Driver=Silent|Server=h|PWD=p|SSLPassword=q|Keep=k = v|Edit=123|New=x");
}

TEST_F(SetupFormTest, ADriverOfAServerTakesALoginThatItDoesNotDescribe) {
    openOnFirst(
        "[ODBC Data Sources]\nA=Tds\nB=Working\nP=Zp\n\n[A]\nDriver=Tds\nPWD=p\n\n[B]\nDriver=Working\n\n[P]\n"
        "Driver=Zp\n");
    inDialog([] {
        // This one reads no login from a data source: it is of use for a test, and the file stays as it is.
        EXPECT_EQ(field("TxtPWD"), "*");
        EXPECT_EQ(XtNameToWidget(ShODBCAdmin, "*TglSavePWD"), nullptr);
        moveTo("TxtUID");
        enter({"me", XK_Return});
    });
    EXPECT_EQ(files.section("A"), "Driver=Tds|PWD=p");
    clickRow(LstUName, 2);
    inDialog([] {
        EXPECT_EQ(XtNameToWidget(ShODBCAdmin, "*TxtUID"), nullptr);
        enter({XK_Escape});
    });
    // One that reads a password as a part of an address, and more of them than its form has.
    clickRow(LstUName, 3);
    inDialog([] {
        moveTo("TxtPassword");
        enter({"a%+", XK_Tab, XK_space, {XK_Tab, 2}, "sslpassword=b", {XK_Tab, 3}, XK_Return});
    });
    EXPECT_EQ(files.section("P"), "Driver=Zp|Password=a%25%2B|sslpassword=b");
    inDialog([] {
        EXPECT_EQ(field("TxtPassword"), "***");
        moveTo("TglSavePassword");
        enter({XK_space, XK_Return});
    });
    EXPECT_EQ(files.section("P"), "Driver=Zp|sslpassword=b");
}

TEST_F(SetupFormTest, RowsBeyondTheScreenScrollIntoSightAsTheyAreReached) {
    openOnFirst(kTalker);
    const auto isInSight = [](const std::string& name) {
        const Place row = placeOf(inForm("*" + name));
        const Place window = placeOf(inForm(".scrWinSettings"));
        return row.y >= window.y && row.y + row.height <= window.y + window.height;
    };
    inDialog([isInSight] {
        EXPECT_LE(placeOf(inForm("")).height, 768 * 3 / 4);
        click(inForm("*TabAdvanced"));
        EXPECT_TRUE(isInSight("OptMode") && !isInSight("TxtMany30"));
        enter({{XK_Tab, 31}, "last"});
        EXPECT_EQ(field("TxtMany30") + field("TxtRelease"), "lastr5");
        EXPECT_TRUE(isInSight("TxtMany30") && !isInSight("OptMode"));
        // A stored password goes when it is no longer wanted.
        click(inForm("*TabGeneral"));
        enter({{XK_Tab, 3}, XK_space, XK_Tab, "12", XK_Tab, XK_space});
        EXPECT_EQ(field("TxtPin"), "**");
        moveTo("TxtDataSourceName");
        enter({XK_Home, "C", XK_Return});
    });
    EXPECT_EQ(files.section("CA"), "Driver=Talker|Database=/a|Mode=odd|Unknown=1|Many30=last|Pin=12");
}

TEST_F(SetupFormTest, AFileDataSourceIsTriedAndChangedInItsOwnFile) {
    const std::string before = "[ODBC]\nDRIVER={Talker}\nFILEDSN=/elsewhere.dsn\nUnknown=1\n";
    const std::string path = files.write("a.dsn", before);
    open();
    click(TbFileDSN);
    clickRow(child(FSelect, "*ItemsList"), 1);
    for (const bool saved : {false, true}) {
        inDialog(
            [&path, saved] {
                EXPECT_EQ(field("TxtFileName"), path);
                enter({saved ? "" : "Books", {XK_Tab, 2}, saved ? "" : "/b", {XK_Tab, 2}, "geheim", XK_Tab});
                enter({{XK_space, saved ? 1 : 0}});
                press("BtnTest");
                expectMessage(kNotMade + "DRIVER={Talker};Unknown=1;Database=/b;Password=geheim;");
                enter({XK_Escape});
                press("BtnOK");
            },
            BtnFDConfigure);
        EXPECT_EQ(files.read("a.dsn"),
                  before + "Description=Books\nDatabase=/b\n" + (saved ? "Password=geheim\n" : ""));
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(saved ? 0600 : 0644));
    }
    // A new one with attributes that were typed: what can't be stored is named, and a password has a row.
    replaceText(CurrentDriver, "Talker");
    replaceText(FileDSNName, files.path("new").c_str());
    DsnType = kFileDataSource;
    std::string list = "FILEDSN=" + files.path("new.dsn");
    for (const char* item : {"DRIVER=Talker", " Mode = read", "tail", "#k=secret", "KeyPassword=q", "X=1", ""}) {
        list += '\0' + std::string(item);
    }
    inDialog(
        [] {
            expectMessage(" tail #k=");
            enter({XK_Return});
            EXPECT_EQ(field("TxtKeyPassword"), "*");
            enter({XK_Return});
        },
        [&list] { finish(nullptr, list.data()); });
    EXPECT_EQ(files.read("new.dsn"), "[ODBC]\nDriver=Talker\nMode=read\nX=1\n");
}

TEST_F(SetupFormTest, TestShowsAllThatTheDriverSaysOfWhatIsTypedAndStoresNothing) {
    const std::string before =
        "[ODBC Data Sources]\nA=Talker\nB=Talker\n\n[A]\nDriver=Talker\nUnknown=1\nDescription=x\nSAVEFILE=/y\n";
    openOnFirst(before);
    inDialog([] {
        // The password is to be saved, which such a one can't be; but it can be tried.
        enter({{XK_Tab, 3}, "/a;(b)}", {XK_Tab, 2}, "p ", XK_Tab, XK_space});
        press("BtnTest");
        EXPECT_EQ(
            message(),
            kNotMade +
                "DSN=A;Password={p };Driver=Talker;Unknown=1;Description=x;SAVEFILE=/y;Database=/a;(b)};Password=p;");
        enter({XK_Escape});
        press("BtnOK");
        expectMessage("cannot begin or end with a blank");
        enter({XK_Return});
        moveTo("TxtDatabase");
        enter({XK_End, "many"});
        press("BtnTest");
        std::string last;
        for (int i = 2; i < 30; ++i) {
            last += "01000: once more ";
        }
        EXPECT_TRUE(message().ends_with(last + "01000: " + std::string(400, 'x') + " the end")) << message();
        enter({XK_Escape});
        moveTo("TxtDatabase");
        enter({XK_End, " Connect=1"});
        press("BtnTest");
        // The driver manager adds that this driver knows less than it asked for.
        expectMessage("The connection was made. The settings work.");
        enter({XK_Return});
        moveTo("TxtDatabase");
        enter({XK_End, " Crash=1"});
        press("BtnTest");
        expectMessage("The driver ended its process: Segmentation fault");
        expectMessage("The driver printed: before the end");
        enter({XK_Return, XK_Escape});
    });
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
        inDialog([&] {
            press("BtnHelp");
            enter({XK_F1});
            press("BtnAbout");
            std::string shown = field("TxtFile");
            std::erase(shown, '\n');  // Long ones are broken.
            for (const char* name : {"TxtVersion", "TxtCompany", "TxtDate", "TxtSize"}) {
                shown += "\n" + field(name);
            }
            EXPECT_EQ(shown + "\n", facts);
            EXPECT_EQ(field("LblAddress2"), catalogText(Message::kCompanyAddressLine2));
            EXPECT_EQ(person().windows(title, true).size(), 1U);
            enter({XK_Escape});
            EXPECT_TRUE(waitFor([title] { return person().windows(title, true).empty(); }));
            enter({XK_Escape});
        });
    }
    EXPECT_EQ(browser.topics(4), "setup\nsetup\nsetup\nsetup\n");
}

TEST_F(SetupFormTest, EveryWindowIsReachedByLettersOfItsOwnAndLeftByEscapeAndHasHelp) {
    const RecordingBrowser browser;
    std::string topics;
    long count = 0;
    const auto look = [&](const Widget& window, const std::string& topic) {
        EXPECT_TRUE(window == FrmMain || waitUntilUp(window)) << topic;
        expectLetters(window);
        key(XK_F1);
        topics += topic + "\n";
        EXPECT_EQ(browser.topics(++count), topics);
    };
    const auto press = [](KeySym letter) { key(letter, XK_Alt_L); };
    openWith(std::string(kTalker) + "[ODBC]\nTrace=1\n");
    for (const auto& [letter, topic] :
         {std::pair{XK_t, "trace"}, {XK_d, "drivers"}, {XK_b, "about"}, {XK_f, "filedsn"}, {XK_u, "userdsn"}}) {
        press(static_cast<KeySym>(letter));
        look(FrmMain, topic);
    }
    press(XK_r);
    look(dialog, "troubleshooting");
    key(XK_Return);
    EXPECT_EQ(rows(LstUName).size(), 2U);
    press(XK_a);
    look(DlgDriverPopup, "chooser");
    key(XK_Escape);
    press(XK_f);
    press(XK_a);
    look(DlgDriverPopup, "wizard");
    press(XK_a);
    look(AdvFDDialog, "advanced");
    key(XK_Escape);
    EXPECT_TRUE(waitUntilUp(DlgDriverPopup));
    press(XK_n);
    look(DlgDriverPopup, "wizard");
    press(XK_r);
    look(Fdialog, "choose");
    key(XK_Escape);
    EXPECT_TRUE(waitUntilUp(DlgDriverPopup));
    press(XK_t);
    type("x");
    press(XK_n);
    look(DlgDriverPopup, "wizard");
    key(XK_Escape);
    press(XK_u);
    press(XK_s);
    inDialog(
        [&] {
            for (const auto& [tab, field] : {std::pair{XK_v, "TxtMany1"}, {XK_g, "TxtDatabase"}}) {
                look(inForm(""), "setup");
                press(static_cast<KeySym>(tab));
                EXPECT_TRUE(XmIsTraversable(inForm("*" + std::string(field)))) << field;
            }
            look(inForm(""), "setup");
            press(XK_r);
            look(inForm("*fileDialog"), "choose");
            key(XK_Escape);
            press(XK_t);
            expectMessage(kNotMade);
            look(inForm("*dialog"), "test");
            key(XK_Escape);
            press(XK_a);
            look(inForm("*FormAbout"), "setup");
            key(XK_Escape);
            EXPECT_TRUE(waitUntilUp(inForm("")));
            key(XK_Escape);
        },
        [] { key(XK_Return); });
}

}  // namespace
