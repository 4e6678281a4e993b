#include "tests/setup/setup_dialog_test.h"

#include <array>
#include <clocale>
#include <filesystem>

#include "admin/advanced_dialog.h"
#include "admin/wizard_finish.h"
#include "kvlib/catalog.h"
#include "motifutil/mnemonics.h"
#include "tests/support/recording_browser.h"

namespace {

class SetupFormTest : public SetupDialogTest {
protected:
    SetupFormTest() {
        files.write(OdbcFiles::kDrivers,
                    "[Talker]\nDriver=" VH_TEST_TALKING_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Silent]\nDriver=" VH_TEST_CRASHING_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Working]\nDriver=" VH_TEST_SQLITE_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Vp]\nDriver=" VH_TEST_POSTGRESQL_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Zp]\nDriver=/none/psqlodbcw.so\nSetup=" VH_TEST_SETUP_LIBRARY
                    "\n[Tds]\nDriver=" VH_TEST_FREETDS_DRIVER "\nSetup=" VH_TEST_SETUP_LIBRARY "\n");
    }
    void openOnFirst(const std::string& dataSources) {
        openWith(dataSources);
        clickRow(LstUName, 1);
    }
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
        moveTo("OptFKSupport");
        EXPECT_EQ(field("LblHint"), "Foreign keys (FKSupport)");
        enter({{XK_Down, 2}, XK_Return});
    });
    EXPECT_EQ(files.section("B"), "Driver=Working|FKSupport=Yes");
    // One that reads a password as a part of an address, and more of them than its form has.
    clickRow(LstUName, 3);
    inDialog([] {
        moveTo("TxtPassword");
        enter({"a%{+", XK_Tab, XK_space, {XK_Tab, 2}, "sslpassword=b", {XK_Tab, 3}, XK_Return});
    });
    EXPECT_EQ(files.section("P"), "Driver=Zp|Password=a%25%7B%2B|sslpassword=b");
    inDialog([] {
        EXPECT_EQ(field("TxtPassword"), "****");
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
        EXPECT_LE(placeOf(inForm("")).height, 768 * 9 / 10);
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
    replaceText(FileDSNName, files.path("new").c_str());
    const auto add = [](const char* driver, const std::string& attributes, const std::function<void()>& steps) {
        replaceText(CurrentDriver, driver);
        DsnType = kFileDataSource;
        std::string list = "FILEDSN=" + std::string(FileDSNName) + ".dsn|" + attributes + "|";
        std::replace(list.begin(), list.end(), '|', '\0');
        inDialog(steps, [&list] { finish(nullptr, list.data()); });
    };
    add("Talker", "DRIVER=Talker| Mode = read|tail|#k=secret|KeyPassword=q|X=1", [] {
        expectMessage(" tail #k=");
        enter({XK_Return});
        EXPECT_EQ(field("TxtKeyPassword"), "*");
        enter({XK_Return});
    });
    EXPECT_EQ(files.read("new.dsn"), "[ODBC]\nDriver=Talker\nMode=read\nX=1\n");
    // The same driver that reads no login from a data source of the user gets one from a file.
    replaceText(FileDSNName, files.path("login").c_str());
    add("Tds", "UID=u|PWD=p", [] { enter({XK_Return}); });
    EXPECT_EQ(files.read("login.dsn"), "[ODBC]\nDriver=Tds\nUID=u\n");
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
        enter({XK_End, " Exit=1"});
        press("BtnTest");
        expectMessage("The driver ended its process: exit(3)");
        expectMessage("The driver printed: before the end? what it tells after that");
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
            outputOf("date -r '" + path + "' +%x; echo $(($(stat -c %s '" + path + "') / 1024)) kB");
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

// In each language, and in one whose texts are longer by two fifths.
class LanguageTest : public SetupFormTest, public testing::WithParamInterface<const char*> {
protected:
    LanguageTest() {
        std::setlocale(LC_MESSAGES, "C");
        Rfile = OpenStrings(nullptr, "odbc.m");
    }
    ~LanguageTest() override { std::setlocale(LC_MESSAGES, "C.UTF-8"); }

    static void press(Widget widget) {
        const wchar_t letter = mnemonicOf(widget);
        letter != 0 ? key(static_cast<KeySym>(letter), XK_Alt_L) : click(widget);
    }

    const ScopedEnvironment environment_{{"LC_MESSAGES", GetParam()}};
};

TEST_P(LanguageTest, EveryWindowIsWholeAndReachedByLettersOfItsOwnAndLeftByEscapeAndHasHelp) {
    const RecordingBrowser browser;
    std::string topics;
    long count = 0;
    const auto look = [&](const Widget& window, const std::string& topic) {
        EXPECT_TRUE(window == FrmMain || waitUntilUp(window)) << topic;
        expectLetters(window);
        expectWhole(window);
        key(XK_F1);
        topics += topic + "\n";
        EXPECT_EQ(browser.topics(++count), topics);
    };
    openWith("[ODBC Data Sources]\nA=Talker\nP=Vp\n\n[A]\nDriver=Talker\n\n[P]\nDriver=Vp\n\n[ODBC]\nTrace=1\n");
    for (const auto& [tab, topic] : {std::pair{BtnTrace, "trace"},
                                     {TbDrivers, "drivers"},
                                     {TbAbout, "about"},
                                     {TbFileDSN, "filedsn"},
                                     {TbUserDSN, "userdsn"}}) {
        press(tab);
        look(FrmMain, topic);
    }
    press(BtnRemove);
    look(dialog, "troubleshooting");
    key(XK_Return);
    EXPECT_EQ(rows(LstUName).size(), 2U);
    press(BtnAdd);
    look(DlgDriverPopup, "chooser");
    key(XK_Escape);
    press(TbFileDSN);
    press(BtnFDAdd);
    look(DlgDriverPopup, "wizard");
    press(BtnAdvanced);
    look(AdvFDDialog, "advanced");
    key(XK_Escape);
    EXPECT_TRUE(waitUntilUp(DlgDriverPopup));
    press(BtnFinish);
    look(DlgDriverPopup, "wizard");
    press(child(FormScr2, "BtnBrowse"));
    look(Fdialog, "choose");
    key(XK_Escape);
    EXPECT_TRUE(waitUntilUp(DlgDriverPopup));
    XmProcessTraversal(Text7, XmTRAVERSE_CURRENT);
    type("x");
    press(BtnFinish);
    look(DlgDriverPopup, "wizard");
    key(XK_Escape);
    press(TbUserDSN);
    press(LbDesc);
    inDialog(
        [&] {
            for (const auto& [tab, field] : {std::pair{"TabAdvanced", "TxtMany1"}, {"TabGeneral", "TxtDatabase"}}) {
                look(inForm(""), "setup");
                press(inForm("*" + std::string(tab)));
                EXPECT_TRUE(XmIsTraversable(inForm("*" + std::string(field)))) << field;
            }
            look(inForm(""), "setup");
            press(inForm("*BtnDatabaseBrowse"));
            look(inForm("*fileDialog"), "choose");
            key(XK_Escape);
            press(inForm("*BtnTest"));
            EXPECT_TRUE(waitUntilUp(inForm("*dialog")));
            look(inForm("*dialog"), "test");
            key(XK_Escape);
            press(inForm("*BtnAbout"));
            look(inForm("*FormAbout"), "setup");
            key(XK_Escape);
            EXPECT_TRUE(waitUntilUp(inForm("")));
            key(XK_Escape);
        },
        [] { key(XK_Return); });
    // Our own driver's settings are explained, and at its first size the dialog has room for that.
    clickRow(LstUName, 2);
    inDialog([] {
        EXPECT_TRUE(waitUntilUp(inForm("")));
        press(inForm("*TabAdvanced"));
        for (int row = 0; row < 27; ++row) {
            const std::string hint = field("LblHint");
            EXPECT_TRUE(hint.find(':') != std::string::npos &&
                        (!hint.ends_with("...") || GetParam() == std::string("pseudo")))
                << hint;
            enter({XK_Tab});
        }
        expectWhole(inForm(""));
        key(XK_Escape);
    });
}

INSTANTIATE_TEST_SUITE_P(Languages, LanguageTest, testing::Values("en_US", VH_TEST_LANGUAGES "pseudo"));

}  // namespace
