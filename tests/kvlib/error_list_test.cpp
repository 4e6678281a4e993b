#include "kvlib/error_list.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "kvlib/catalog.h"
#include "kvlib/error_keeper.h"
#include "kvlib/library_errors.h"
#include "kvlib/library_text.h"
#include "tests/support/error_collector.h"
#include "tests/support/temporary_folder.h"

namespace {

// With a catalog of the library's own name in an install directory of its own.
class ErrorListTest : public testing::Test {
protected:
    ErrorListTest() {
        std::map<int, std::string> texts{{8, "file %1 is missing"}, {10, "x"}};
        int number = 0;
        for (const char* state : {"08S01", "01S01", "HY001x", "IM002", "42000", "HZ010", "01004"}) {
            texts[++number] = state;
        }
        folder_.makeCatalog("locale/en_US/LC_MESSAGES/vhutl23.mo", texts);
        bosFreeResourceDLL(nullptr, nullptr);
        strCopy(InstallDirLocation, sizeof InstallDirLocation, folder_.path().c_str());
        KvErrorKeeper::setErrorList(&list_);
    }
    ~ErrorListTest() override {
        KvErrorKeeper::giveUpErrorList();
        bosFreeResourceDLL(nullptr, nullptr);
        InstallDirLocation[0] = '\0';
    }

    TemporaryFolder folder_;
    KvErrorList list_;
};

TEST(SpecialErrors, AreNeverChanged) {
    for (const auto& [error, text] : {std::pair{&MemoryError, "Out Of Memory"}, {&DummyError, ""}}) {
        *error << "a" << 1L << u"b";
        error->appendText("more");
        error->setErrorType(kErrorTypeWarning);
        error->setState(u"01000");
        EXPECT_STREQ(error->getErrorText(), text);
        EXPECT_FALSE(error->isWarning());
        EXPECT_EQ(error->getInterfaceCode()[0], u'\0');
    }
}

TEST(ErrorKeeper, IsHarmlessWithoutAList) {
    ASSERT_EQ(KvErrorKeeper::currentList(), nullptr);
    *addError(1509, "file %1") << "a" << 1L;
    EXPECT_EQ(KvErrorKeeper::addError(new KvError(1, u"x", 0, 0, 0)), &DummyError);
    ramAddMemoryError();
    KvErrorKeeper::clearLastError();
    appendTextToErrorAtPos(1, 0);
    EXPECT_EQ(KvErrorKeeper::getLastErrorNumber(), 0);
    ASSERT_EQ(mdsPerThreadInit(), 1);
    EXPECT_EQ(KvErrorKeeper::giveUpErrorList(), nullptr);
    EXPECT_EQ(mdsGetPerThreadDataAddress(0), nullptr) << "giving up nothing still counts a use down";
}

TEST_F(ErrorListTest, ListsFormAStackAndInEachTheFirstRealErrorWinsAndWarningsStay) {
    KvErrorList upper;
    KvErrorKeeper::setErrorList(&upper);
    addError(1, u"upper");
    EXPECT_EQ(KvErrorKeeper::giveUpErrorList(), &upper);
    EXPECT_EQ(KvErrorKeeper::getLastErrorNumber(), 0);
    addWarning(1);
    addError(3, u"a");
    KvError* dropped = addError(4, u"b %1");
    EXPECT_EQ(dropped, &DummyError);
    *dropped << "still safe";
    EXPECT_EQ(list_.count(), 2U);
    EXPECT_EQ(list_.getErrorsMix(), 1);
    KvErrorKeeper::setLastErrorType(kErrorTypeWarning);
    addDatabaseError(5, -7, "caf\xC3\xA9", kErrorTypeError, kCPUtf8);
    EXPECT_EQ(KvErrorKeeper::getLastNativeError(), -7);
    EXPECT_STREQ(list_.getLastError()->getErrorText(), "caf\xC3\xA9");
}

TEST_F(ErrorListTest, MemoryErrorsComeLastAndOnce) {
    ramAddMemoryError();
    EXPECT_EQ(list_.count(), 0U);
    EXPECT_EQ(list_.removeLastError(), &MemoryError);
    EXPECT_EQ(list_.removeLastError(), nullptr);
    addWarning(2);
    addError(1, u"a");
    ramAddMemoryError();
    EXPECT_EQ(list_.count(), 1U) << "it takes the place of the real error";
    KvErrorKeeper::clearLastError();
    EXPECT_EQ(KvErrorKeeper::getLastErrorNumber(), 2);
}

TEST(KeepAll, OperationsByPosition) {
    ErrorCollector collector;
    KvErrorList& all = *KvErrorKeeper::currentList();
    for (std::uint16_t number = 1; number <= 3; number++) {
        addError(number, "t");
    }
    all.moveLastErrorToPos(0);
    all.setWarningAfterPos(1);
    all.appendTextStartingAtPos("!", 1);
    EXPECT_EQ(collector.numbers(), "3 1 2w");
    KvString text;
    EXPECT_EQ(all.concatErrors(text, '|'), 0);
    EXPECT_EQ(text.view(), "t|t!|t!");
}

TEST_F(ErrorListTest, PlacesAreFilledWithEveryKindOfValue) {
    *addError(1, u"%1 %2 %3 %4 %5 %6") << "%2" << u"u" << -5L << 18446744073709551615UL << KvSubString("sub", 2)
                                       << static_cast<const char*>(nullptr);
    list_.getLastError()->setState(u"080010");
    EXPECT_EQ(std::u16string(list_.getLastError()->getInterfaceCode()), u"08001");
    KvErrorKeeper::appendTextToLastError(": /x");
    EXPECT_STREQ(list_.getLastError()->getErrorText(), "%2 u -5 18446744073709551615 su : /x");
    EXPECT_EQ(list_.getLastError()->getInterfaceCode()[0], u'\0') << "appending clears the state";
}

TEST_F(ErrorListTest, TextsByNumberAreOpenedWhenFirstNeeded) {
    char narrow[kLibraryTextSize] = "old";
    EXPECT_EQ(winGetString(narrow, 77), 0U);
    EXPECT_STREQ(narrow, "");
    *addError(8) << "/etc/odbc.ini";
    appendTextToLastError(10);
    appendTextToErrorAtPos(8, 0);
    EXPECT_STREQ(list_.getLastError()->getErrorText(), "file /etc/odbc.ini is missingxfile %1 is missing");
}

TEST_F(ErrorListTest, ErrorsAreOrderedByPositionAndState) {
    // The states of two errors, null for none, and those by number.
    const struct {
        const char16_t *a, *b;
        std::uint16_t numberOfA, numberOfB;
        int expected;
        std::int64_t positionOfB = 1;
    } rows[] = {
        {nullptr, nullptr, 0, 1, -1, 2},  // the position counts before the state
        {nullptr, nullptr, 1, 2, -1},     // 08S01, 01S01
        {nullptr, nullptr, 6, 7, -1},     // HZ010, 01004
        {nullptr, nullptr, 4, 6, 1},      // IM002 lies outside 03 to HZ
        {u"08S01", u"42000", 0, 0, 0},    // the other's explicit state is not looked at
        {nullptr, u"08S01", 0, 0, -1},    // and an empty one stands in for it
        {u"01000", nullptr, 1, 0, 1},     // an explicit state hides the one by number
    };
    for (const auto& row : rows) {
        KvError a(1, u"", kErrorTypeError, row.numberOfA, 0);
        KvError b(1, u"", kErrorTypeError, row.numberOfB, 0);
        a.setState(row.a);
        b.setState(row.b);
        a.setPositions(1, -1);
        b.setPositions(row.positionOfB, -1);
        EXPECT_EQ(a.compare(&b), row.expected) << "row " << (&row - rows);
    }

    ErrorCollector collector;
    KvErrorList& all = *KvErrorKeeper::currentList();
    for (const std::uint16_t number : std::initializer_list<std::uint16_t>{7, 5, 3, 1, 4}) {
        KvErrorKeeper::addError(all.allocError(number, u"", 0, number, 0));
    }
    EXPECT_EQ(collector.numbers(), "1 5 3 4 7") << "42000 and HY001 are equal and stay in order";
}

}  // namespace
