#include "tests/support/window_test.h"

#include <Xm/ListP.h>

#include <sys/stat.h>

#include <random>
#include <tuple>

#include "kvlib/text.h"

using namespace std::string_literals;
using Rows = std::vector<std::string>;

namespace {

constexpr const char* kThree =
    "[ODBC Data Sources]\nabc=Recorder\nZone=Recorder\nABD=Other\n\n[abc]\nDriver=Recorder\nDatabase=/x "
    "y=z;1\nEmpty=\n\n"
    "[ODBC]\nTrace=0\nInstallDir=/opt/a b\n\n[Zone]\nDriver=Recorder\n\n[ABD]\nDriver=Other\nHost = here\n";

class UserDsnPageTest : public WindowTest {
protected:
    static void expectSelected(int row) {
        EXPECT_EQ(selectedRow(LstUName), row);
        EXPECT_EQ(selectedRow(LstUDesc), row);
    }
};

TEST_F(UserDsnPageTest, NamesAreSortedAsTheyAlwaysWere) {
    files.write(OdbcFiles::kSystem, "[ODBC Data Sources]\nOf the system=Recorder\n");
    open();
    EXPECT_EQ(rows(LstUName), Rows());
    for (const auto& [about, listed, shown] : std::initializer_list<std::tuple<const char*, Rows, Rows>>{
             {"exchanging turns equal names around", {"same", "SAME", "b"}, {"b", "SAME", "same"}},
             {"two bytes are no name", {"a"}, {}},
             {"three are", {"ab"}, {"ab"}},
             {"longer than a row was once", {std::string(300, 'n'), "m"}, {"m", std::string(300, 'n')}}}) {
        std::string list = "[ODBC Data Sources]\n";
        for (const std::string& name : listed) {
            list += name + "=Recorder\n";
        }
        files.write(OdbcFiles::kUser, list);
        populateUserDSN(LstUName, LstUDesc);
        EXPECT_EQ(rows(LstUName), shown) << about;
        EXPECT_EQ(rows(LstUDesc), Rows(shown.size(), "Recorder")) << about;
    }
}

TEST(SortListTest, EqualNamesStandWhereExchangingLeavesThem) {
    constexpr const char* kNames[] = {"a", "A", "b", "B", "ab", "aB", "AB", "", "\u00e4", "\u00c4", "c\xff", "C\xff"};
    std::minstd_rand random(1);
    for (std::size_t round = 0; round < 5000; ++round) {
        Rows rows(random() % 60);
        std::generate(rows.begin(), rows.end(), [&] { return kNames[random() % (round % std::size(kNames) + 1)]; });
        std::vector<char*> sorted;
        std::transform(rows.begin(), rows.end(), std::back_inserter(sorted), [](auto& row) { return row.data(); });
        std::vector<char*> expected = sorted;
        sortList(sorted.data(), static_cast<short>(sorted.size()));
        for (auto one = expected.begin(); one != expected.end(); ++one) {
            for (auto later = one + 1; later != expected.end(); ++later) {
                if (strCompareCi(*one, *later) > 0) {
                    std::swap(*one, *later);
                }
            }
        }
        ASSERT_EQ(sorted, expected) << "round " << round;
    }
    Rows many(70000, "b");
    many.back() = "a";
    sortRows(many);
    EXPECT_EQ(many.front() + many.back() + std::to_string(many.size()), "ab70000");
}

TEST_F(UserDsnPageTest, BothListsSelectTheSameRowAndKeepItsPosition) {
    openWith(kThree);
    EXPECT_EQ(rows(LstUName), (Rows{"abc", "ABD", "Zone"}));
    EXPECT_EQ(rows(LstUDesc), (Rows{"Recorder", "Other", "Recorder"}));
    expectSelected(1);
    clickRow(LstUDesc, 3);
    expectSelected(3);
    clickRow(LstUName, 1);
    key(XK_Down);
    expectSelected(2);
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\n0=R\n"s + &kThree[20]);
    populateUserDSN(LstUName, LstUDesc);
    EXPECT_EQ(rows(LstUName), (Rows{"0", "abc", "ABD", "Zone"}));
    EXPECT_EQ(rows(LstUDesc), (Rows{"R", "Recorder", "Other", "Recorder"}));
    expectSelected(2);
    // After a removal the lists follow what others write, too.
    click(BtnRemove);
    answer("OK");
    EXPECT_EQ(rows(LstUDesc), (Rows{"R", "Other", "Recorder"}));
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\n");
    populateUserDSN(LstUName, LstUDesc);
    EXPECT_EQ(rows(LstUName), Rows());
}

TEST_F(UserDsnPageTest, RemoveAsksAndLeavesAnEmptyPageThatTakesNeitherConfigureNorRemove) {
    openWith(kThree);
    click(BtnRemove);
    EXPECT_EQ(answer("Cancel"), "Remove the data source \"abc\" and all its settings?");
    EXPECT_EQ(files.read(OdbcFiles::kUser), kThree);
    // From the second on: the row that moves up is the next, then the last one that is left.
    clickRow(LstUName, 2);
    for (const Rows& names : {Rows{"abc", "Zone"}, {"abc"}, {}}) {
        click(BtnRemove);
        answer("OK");
        EXPECT_EQ(rows(LstUName), names);
        EXPECT_EQ(rows(LstUDesc).size(), names.size());
        EXPECT_EQ(textOf(TxtODBCDesc).ends_with(catalogText(Message::kNoDataSourceYet)), names.empty());
    }
    EXPECT_EQ(files.summary(), "ODBC Data Sources{} ODBC{Trace=0|InstallDir=/opt/a b}");
    click(BtnConfigure);
    expectReport(Message::kConfigureSelectOne);
    click(BtnRemove);
    expectReport(Message::kRemoveSelectOne);
}

TEST_F(UserDsnPageTest, ConfigureHandsEveryKeyToTheDriver) {
    files.write(OdbcFiles::kSystem, "[ODBC Data Sources]\nOf the system=Recorder\n[Of the system]\nDriver=Recorder\n");
    files.write(OdbcFiles::kDrivers,
                "[Recorder]\nDriver=/r.so\nSetup=" VH_TEST_SETUP "\n[Second]\nDriver=/s.so\nSetup=" VH_TEST_SETUP "\n");
    openWith(kThree);
    click(BtnConfigure);
    EXPECT_EQ(calls(), call(2, "Recorder", "DSN=abc\0Driver=Recorder\0Database=/x y=z;1\0Empty=\0\0"s));
    clickRow(LstUDesc, 3, 2);
    EXPECT_EQ(calls(), call(2, "Recorder", "DSN=Zone\0Driver=Recorder\0\0"s));
    // Another program changed what was read a moment ago.
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nabc=Second\n[abc]\nDriver=Second\nDatabase=new\n");
    clickRow(LstUName, 1, 2);
    EXPECT_EQ(calls(), call(2, "Second", "DSN=abc\0Driver=Second\0Database=new\0\0"s));
    EXPECT_EQ(rows(LstUName), Rows{"abc"});
    // The driver left the library looking at the system's data sources too, which show when the user has none.
    click(BtnRemove);
    answer("OK");
    files.write(OdbcFiles::kUser, "[ODBC]\nTrace=0\n");
    populateUserDSN(LstUName, LstUDesc);
    EXPECT_EQ(rows(LstUName), Rows());
}

TEST_F(UserDsnPageTest, EachFailureOfADriversSetupHasItsReport) {
    struct Case {
        const char *driver, *setup;
        Message::Number add, configure;
    };
    constexpr Case kCases[] = {
        {"a missing", "Setup=/no/such/library.so", Message::kSetupLibraryNotLoaded, Message::kSetupLibraryNotLoaded},
        {"b no function", "Setup=" VH_TEST_NO_SETUP, Message::kNoConfigDsn, Message::kNoConfigDsn},
        {"c refuses", "Setup=" VH_TEST_SETUP, Message::kSetupFailed, Message::kSetupFailed},
        {"d no setup", "", Message::kDriverHasNoSetup, Message::kDriverFileUnreadable},
    };
    const ScopedEnvironment refuse{{"VH_TEST_RESULT", "0"}};
    std::string drivers;
    std::string before = "[e no keys]\n[ODBC Data Sources]\ne no keys=c refuses\n";
    for (const Case& test : kCases) {
        const std::string driver = test.driver;
        drivers += "[" + driver + "]\nDriver=/d.so\n" + test.setup + "\n";
        before.append(driver + "=" + driver + "\n").insert(0, "[" + driver + "]\nDriver=" + driver + "\n");
    }
    files.write(OdbcFiles::kDrivers, drivers);
    openWith(before);
    int row = 0;
    for (const Case& test : kCases) {
        SCOPED_TRACE(test.driver);
        clickRow(LstUName, ++row);
        click(BtnConfigure);
        expectReport(test.configure);
        click(BtnAdd);
        clickRow(LstDPName, row);
        click(BtnFinish);
        const bool isAdvised = dialogText().find("odbcadmin-register '"s + test.driver + "'") != std::string::npos;
        EXPECT_EQ(isAdvised, test.add != Message::kSetupFailed);
        expectReport(test.add);
        EXPECT_FALSE(isVisible(XtParent(DlgDriverPopup)));
    }
    EXPECT_EQ(files.read(OdbcFiles::kUser), before);
    EXPECT_EQ(calls(), call(2, "c refuses", "DSN=c refuses\0Driver=c refuses\0\0"s) + call(1, "c refuses"));
    clickRow(LstUName, 5, 2);
    EXPECT_EQ(dialogText(), catalogText(Message::kDataSourceFileUnreadable));
}

TEST_F(UserDsnPageTest, AddCallsTheDriverThatIsChosen) {
    files.write(OdbcFiles::kDrivers, "[Plain]\nDriver=/p.so\n[Rec\torder]\nDriver=/r.so\nSetup=" VH_TEST_SETUP "\n");
    openWith("[ODBC Data Sources]\nabc=Recorder\n");
    clickFor(BtnAdd, DlgDriverPopup);
    EXPECT_EQ(DsnType, kUserDataSource);
    EXPECT_EQ(textOf(BtnFinish), catalogText(Message::kFinish));
    XmListDeselectAllItems(LstDPName);
    click(BtnFinish);
    expectReport(Message::kChooserSelectOne);
    EXPECT_TRUE(waitUntilUp(DlgDriverPopup));
    // Meanwhile another program adds the data source that the driver would have added.
    files.write(OdbcFiles::kUser, "[ODBC Data Sources]\nabc=Recorder\nadded=Recorder\n");
    clickRow(LstDPName, 2);
    click(BtnFinish);
    EXPECT_EQ(calls(), call(1, "Rec\torder"));
    EXPECT_EQ(rows(LstUName), (Rows{"abc", "added"}));
    EXPECT_FALSE(isVisible(XtParent(DlgDriverPopup)));

    click(BtnAdd);
    clickRow(LstDPName, 2, 2);
    EXPECT_EQ(calls(), call(1, "Rec\torder"));
    clickFor(BtnAdd, DlgDriverPopup);
    clickRow(LstDPName, 2);
    key(XK_Return);
    EXPECT_EQ(calls(), call(1, "Rec\torder"));
}

TEST_F(UserDsnPageTest, ReturnInAListConfiguresItsRowAndPressesNothing) {
    openWith(kThree);
    clickRow(LstUName, 3);
    for (const KeySym enter : {KeySym{XK_Return}, KeySym{XK_KP_Enter}}) {
        key(enter);
        EXPECT_EQ(calls(), call(2, "Recorder", "DSN=Zone\0Driver=Recorder\0\0"s));
    }
    const ScopedEnvironment throwing{{"VH_TEST_RESULT", "throw"}};
    key(XK_Return);
    expectReport(Message::kSetupFailed);
    EXPECT_NE(calls(), "");
}

TEST_F(UserDsnPageTest, OddNamesActOnThemselvesOrNotAtAll) {
    const std::string before =
        "[ODBC Data Sources]\na\tb=Recorder\nab=Recorder\nPair=Recorder\nPAIR=Recorder\n"
        "[a\tb]\nX=1\n[ab]\nX=2\n[Pair]\nX=3\n";
    openWith(before);
    EXPECT_EQ(rows(LstUName), (Rows{"a\tb", "ab", "Pair", "PAIR"}));
    clickRow(LstUName, 1, 2);
    EXPECT_EQ(calls(), call(2, "Recorder", "DSN=a\tb\0X=1\0\0"s));
    for (const int row : {3, 4}) {
        clickRow(LstUName, row);
        for (Widget button : {BtnConfigure, BtnRemove}) {
            click(button);
            expectReport(Message::kNamesDifferInCase);
        }
    }
    EXPECT_EQ(files.read(OdbcFiles::kUser), before);
    clickRow(LstUName, 1);
    click(BtnRemove);
    answer("OK");
    EXPECT_EQ(files.summary(), "ODBC Data Sources{ab=Recorder|Pair=Recorder|PAIR=Recorder} ab{X=2} Pair{X=3}");
}

TEST_F(UserDsnPageTest, NamesInScriptsThatTheFontLacksAreDrawnAndActed) {
    openWith("[ODBC Data Sources]\nä名前=Recorder\n[ä名前]\nDriver=Recorder\n");
    XmRenderTable fonts = nullptr;
    XtVaGetValues(LstUName, XmNrenderTable, &fonts, nullptr);
    XmStringTag* tags = nullptr;
    EXPECT_EQ(XmRenderTableGetTags(fonts, &tags), 2);
    clickRow(LstUName, 1);
    click(BtnConfigure);
    EXPECT_EQ(calls(), call(2, "Recorder", "DSN=ä名前\0Driver=Recorder\0\0"s));
}

TEST_F(UserDsnPageTest, OfManyRowsTheExposedOnesAreDrawnAsWithAllOfThem) {
    std::string list = "[ODBC Data Sources]\n";
    for (int i = 0; i < 300; ++i) {
        list += "n" + std::to_string(1000 + i) + "=d\n";
    }
    openWith(list);
    const auto image = [area = placeOf(ScrWinLists)] {
        Display* display = XtDisplay(LstUName);
        XImage* pixels =
            XGetImage(display, DefaultRootWindow(display), area.x, area.y, static_cast<unsigned>(area.width),
                      static_cast<unsigned>(area.height), AllPlanes, ZPixmap);
        const std::string bytes(pixels->data, static_cast<std::size_t>(pixels->bytes_per_line * pixels->height));
        XDestroyImage(pixels);
        return bytes;
    };
    for (const KeySym toRow : std::initializer_list<KeySym>{XK_Next, XK_End, XK_Prior, XK_Up, XK_Home}) {
        const int inSight = placeOf(ScrWinLists).y - placeOf(LstUName).y;
        XClearArea(XtDisplay(LstUName), XtWindow(LstUName), 0, inSight + 30, 0, 150, True);
        settle();
        key(toRow);
        const std::string exposed = image();
        XClearWindow(XtDisplay(LstUName), XtWindow(LstUName));
        EXPECT_TRUE(image() != exposed);
        xmListClassRec.core_class.expose(LstUName, nullptr, nullptr);
        EXPECT_TRUE(image() == exposed) << XKeysymToString(toRow);
    }
}

TEST_F(UserDsnPageTest, RowsBeyondTheHighestWindowAreReachedByEveryWay) {
    std::string list = "[ODBC Data Sources]\n";
    for (int i = 0; i < 2000; ++i) {
        list += "n" + std::to_string(1000 + i) + "=d\n";
    }
    openWith(list);
    const auto expectSight = [](int top, int row) {
        expectSelected(row);
        const Place window = placeOf(ScrWinLists);
        for (Widget column : {LstUName, LstUDesc}) {
            int first = 0;
            XtVaGetValues(column, XmNtopItemPosition, &first, nullptr);
            EXPECT_EQ(first, top) << XtName(column);
            const Place place = placeOf(column);
            EXPECT_TRUE(place.y >= window.y && place.y + place.height <= window.y + window.height) << XtName(column);
        }
    };
    int seen = 0;
    XtVaGetValues(LstUName, XmNvisibleItemCount, &seen, nullptr);
    const int last = 2001 - seen;
    key(XK_End);
    expectSight(last, 2000);
    key(XK_Prior);
    key(XK_Up);
    expectSight(last - 1, last - 1);
    EXPECT_EQ(XmGetFocusWidget(LstUName), LstUName);
    // By a row, then by a page.
    for (const int below : {5, 30}) {
        const Place bar = placeOf(child(ScrWinLists, "VertScrollBar"));
        person().click(bar.x + bar.width / 2, bar.y + below);
        settle();
    }
    clickRow(LstUDesc, last - seen);
    expectSight(last - 1 - seen, last - seen);
    type("n1500");
    expectSight(502 - seen, 501);
    key(XK_Down);
    click(BtnRemove);
    answer("OK");
    EXPECT_EQ(rowText(LstUName, 502), "n1502");
    expectSight(503 - seen, 502);
    // Few enough again.
    files.write(OdbcFiles::kUser, list.substr(0, list.find("n1030")));
    populateUserDSN(LstUName, LstUDesc);
    settle();
    expectSelected(30);
    EXPECT_GT(placeOf(LstUName).height, placeOf(ScrWinLists).height);
}

TEST_F(UserDsnPageTest, AFileThatCannotBeReadEndsTheProgramWhateverElseIsReported) {
    mkdir(files.path(OdbcFiles::kUser).c_str(), 0700);
    // The missing driver file is reported later, and must not hide it.
    files.write(OdbcFiles::kDrivers, "");
    open();
    EXPECT_EQ(dialogText(), catalogText(Message::kDataSourceFileUnreadable));
}

}  // namespace
