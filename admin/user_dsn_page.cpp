#include "admin/user_dsn_page.h"

#include <Xm/List.h>

#include <algorithm>
#include <new>
#include <optional>
#include <string>

#include "admin/dialogs.h"
#include "admin/driver_setup.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/table.h"
#include "installer/configuration.h"
#include "installer/configuration_change.h"
#include "installer/configuration_reader.h"
#include "installer/drivers.h"
#include "motifutil/mnemonics.h"
#include "motifutil/widgets.h"

Widget FormUserDSN = nullptr;
Widget BtnAdd = nullptr;
Widget BtnRemove = nullptr;
Widget BtnConfigure = nullptr;
Widget TxtODBCDesc = nullptr;
Widget ScrWinLabels = nullptr;
Widget FormLabels = nullptr;
Widget LblName = nullptr;
Widget LblDriver = nullptr;
Widget ScrWinLists = nullptr;
Widget FormLists = nullptr;
Widget LstUName = nullptr;
Widget LstUDesc = nullptr;
Widget LbDesc = nullptr;

namespace {

// The driver of a data source is shown, and read, in at most this many bytes, its terminator included. Names are shown
// whole: a name that was cut could be neither configured nor removed.
constexpr std::size_t kDriverRowSize = 128;

// A reported length of one or two bytes counts as no name, as it always has; so a single data source with a name of one
// letter is not listed until there is another.
constexpr int kLongestEmptyList = 2;

Table DataSources;

// What the lists hold, as far as it is known. To put thousands of rows into a list again takes longer than to read
// them.
struct Rows {
    std::vector<std::string> names;
    std::vector<std::string> drivers;

    friend bool operator==(const Rows&, const Rows&) = default;
};
std::optional<Rows> Shown;

// Where the one row is, from 0, that is in `rows` and not in `before`, when they are alike but for it.
std::optional<std::size_t> insertedRow(const Rows& before, const Rows& rows) {
    if (rows.names.size() != before.names.size() + 1) {
        return std::nullopt;
    }
    const auto differing = std::mismatch(before.names.begin(), before.names.end(), rows.names.begin()).first;
    const auto row = static_cast<std::size_t>(differing - before.names.begin());
    const auto areAlikeButFor = [row](const std::vector<std::string>& fewer, const std::vector<std::string>& more) {
        const auto place = static_cast<std::ptrdiff_t>(row);
        return std::equal(fewer.begin(), fewer.begin() + place, more.begin()) &&
               std::equal(fewer.begin() + place, fewer.end(), more.begin() + place + 1, more.end());
    };
    return areAlikeButFor(before.names, rows.names) && areAlikeButFor(before.drivers, rows.drivers) ? std::optional(row)
                                                                                                    : std::nullopt;
}

// The lists have lost this row, from 0.
void forgetRow(std::size_t row, const std::string& name) {
    if (!Shown || row >= Shown->names.size() || Shown->names[row] != name) {
        Shown.reset();
        return;
    }
    Shown->names.erase(Shown->names.begin() + static_cast<std::ptrdiff_t>(row));
    Shown->drivers.erase(Shown->drivers.begin() + static_cast<std::ptrdiff_t>(row));
}

// Reads names and drivers and fills the lists; false after the error that ends the program was shown.
bool fillLists(Widget nameList, Widget driverList) {
    if (!installer::isDataSourceFileReadable()) {
        showODBCINIError();
        return false;
    }
    installer::ConfigurationReader file(installer::kDataSourceFile);
    installer::NameList list = file.listKeys(installer::kDataSourceList, installer::Growth::kByKilobyte);
    if (list.length <= kLongestEmptyList) {
        list.names.clear();
    }
    sortRows(list.names);
    Rows rows{std::move(list.names), {}};
    for (const std::string& name : rows.names) {
        rows.drivers.push_back(file.readValue(installer::kDataSourceList, name, kDriverRowSize));
        if (rows.drivers.back().empty()) {
            Shown.reset();
            populateList(nameList, rows.names);
            showODBCINIError();
            return false;
        }
    }
    if (rows == Shown) {
        return true;
    }
    // An empty list has widths of its own.
    const std::optional<std::size_t> row = Shown && !Shown->names.empty() ? insertedRow(*Shown, rows) : std::nullopt;
    if (row) {
        insertRow(nameList, static_cast<int>(*row) + 1, rows.names[*row]);
        insertRow(driverList, static_cast<int>(*row) + 1, rows.drivers[*row]);
    } else {
        populateList(nameList, rows.names);
        populateList(driverList, rows.drivers);
    }
    DataSources.fit();
    Shown = std::move(rows);
    return true;
}

// What the page says below its list, with the next step for a person who has no data source.
void explain() {
    int count = 0;
    XtVaGetValues(LstUName, XmNitemCount, &count, nullptr);
    std::string text = catalogText(Message::kUserDsnExplanation);
    if (count == 0) {
        const bool hasDriver = !installer::listDrivers().names.empty();
        const std::string next = catalogText(hasDriver ? Message::kNoDataSourceYet : Message::kNoDriverYet);
        text = catalogText(Message::kTwoSentences, {text, next});
    }
    setExplanation(TxtODBCDesc, text);
}

// Whether the installer library would take another data source for this one: to it, case does not count in names.
bool isTakenForAnother(const std::string& name, installer::ConfigurationReader& file) {
    const std::vector<std::string> names =
        file.listKeys(installer::kDataSourceList, installer::Growth::kByKilobyte).names;
    return std::count_if(names.begin(), names.end(),
                         [&name](const std::string& other) { return installer::sameName(other, name); }) > 1;
}

void selectRow(Widget nameList, Widget driverList, int row) {
    XmListDeselectAllItems(nameList);
    XmListDeselectAllItems(driverList);
    XmListSelectPos(nameList, row, True);
}

// Configures the data source `name`: hands every key that it has to its driver.
void configure(const std::string& name) {
    installer::ConfigurationReader file(installer::kDataSourceFile);
    if (isTakenForAnother(name, file)) {
        showError(Message::kNamesDifferInCase);
        return;
    }
    const std::vector<installer::Attribute> settings = file.readSection(name);
    if (settings.empty()) {
        showODBCINIError();
        return;
    }
    std::vector<installer::Attribute> attributes{{"DSN", name}};
    attributes.insert(attributes.end(), settings.begin(), settings.end());

    const std::string driver = file.readValue(installer::kDataSourceList, name);
    if (driver.empty()) {
        showODBCINIError();
        return;
    }
    const std::string setup = installer::setupLibrary(driver);
    if (setup.empty()) {
        reportWithoutSetup(Message::kDriverFileUnreadable, driver);
        return;
    }
    callDynamic(setup.c_str(), kConfigureDataSource, driver.c_str(), installer::attributeList(attributes).c_str(),
                kUserDataSource, nullptr);
    populateUserDSN(LstUName, LstUDesc);
}

// A list of the page with what selecting a row of it does. There is no page without it.
Widget createColumn(const char* name, XtCallbackProc selected) {
    Widget list = createUserDSNXmList(1, name);
    if (list == nullptr) {
        throw std::bad_alloc();
    }
    XtAddCallback(list, XmNbrowseSelectionCallback, selected, nullptr);
    return list;
}

}  // namespace

Widget createUserDSNXmList(int flag, const char* name) {
    Widget list = nullptr;
    guarded(
        [&] { list = createList(FormLists, name, nullptr, UDSN_doubleClick, flag != 0 ? XmVARIABLE : XmCONSTANT); });
    return list;
}

Widget createUserDsnPage(Widget notebook, XtCallbackProc add) {
    Shown.reset();
    FormUserDSN = createPage(notebook, "FormUserDSN");

    LbDesc = createHeading(FormUserDSN, "LbDesc", Message::kUserDsnHeading);

    ScrWinLabels = createHeaderWindow(FormUserDSN, "ScrWinLabels");
    FormLabels = createForm(ScrWinLabels, "FormLabels");
    LblName = createLabel(FormLabels, "LblName", Message::kColumnName);
    LblDriver = createLabel(FormLabels, "LblDriver", Message::kColumnDriver);

    ScrWinLists = createScrolledWindow(FormUserDSN, "ScrWinLists");
    FormLists = createForm(ScrWinLists, "FormLists");
    LstUName = createColumn("lstUName", lstUName_Selected);
    LstUDesc = createColumn("lstUDesc", lstUDesc_Selected);
    leadTo(LbDesc, LstUName, mnemonicFor(Message::kUserDsnHeading));

    BtnAdd = createPushButton(FormUserDSN, "BtnAdd", Message::kAdd, add);
    BtnRemove = createPushButton(FormUserDSN, "BtnRemove", Message::kRemove, btnRemove_Clicked);
    BtnConfigure = createPushButton(FormUserDSN, "BtnConfigure", Message::kConfigure, btnConfigure_Clicked);
    equalizeWidths({BtnAdd, BtnRemove, BtnConfigure});

    TxtODBCDesc = createReadOnlyText(FormUserDSN, "TxtODBCDesc", Message::kUserDsnExplanation, 2);

    placeTable({LbDesc, ScrWinLabels, ScrWinLists, TxtODBCDesc, {BtnAdd, BtnRemove, BtnConfigure}});
    DataSources.adopt({{LstUName, LblName}, {LstUDesc, LblDriver}}, ScrWinLists, synchonizeScrollUD);
    return FormUserDSN;
}

void populateUserDSN(Widget nameList, Widget driverList) {
    guarded([=] {
        const int before = selectedRow(nameList).value_or(1);
        if (!fillLists(nameList, driverList)) {
            return;
        }
        explain();
        int count = 0;
        XtVaGetValues(nameList, XmNitemCount, &count, nullptr);
        if (count > 0) {
            selectRow(nameList, driverList, std::min(before, count));
        }
    });
}

void setSizePosForUserDSNWidgets() {
    DataSources.place();
}

void btnRemove_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    const std::optional<int> row = selectedRow(LstUName);
    if (!row) {
        showInformation(Message::kRemoveSelectOne);
        return;
    }
    guarded([&row] {
        const std::string name = rowText(LstUName, *row);
        installer::ConfigurationReader file(installer::kDataSourceFile);
        if (isTakenForAnother(name, file)) {
            showError(Message::kNamesDifferInCase);
            return;
        }
        askQuestion(catalogText(Message::kRemoveQuestionBegin) + " \"" + name + "\" " +
                        catalogText(Message::kRemoveQuestionEnd) + "?",
                    name, RemoveUserDsn, nullptr, Answer::kNo);
    });
}

void RemoveUserDsn(Widget /*widget*/, XtPointer dsnName, XtPointer /*callData*/) {
    guarded([dsnName] {
        const std::optional<int> row = selectedRow(LstUName);
        installer::ConfigurationChange change;
        change.removeDataSource(static_cast<const char*>(dsnName));
        if (const std::optional<installer::ChangeFailure> failure = change.commit()) {
            showError(Message::kRemoveFailed, *failure);
            return;
        }
        if (row) {
            deleteRow(LstUDesc, *row);
            deleteRow(LstUName, *row);
            forgetRow(static_cast<std::size_t>(*row - 1), static_cast<const char*>(dsnName));
        }
        DataSources.fit();
        explain();
        setSizePosForUserDSNWidgets();
        int count = 0;
        XtVaGetValues(LstUName, XmNitemCount, &count, nullptr);
        if (row && count > 0) {
            // The one that moved up, or the last.
            selectRow(LstUName, LstUDesc, std::min(*row, count));
        }
    });
}

void btnConfigure_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    DsnType = kUserDataSource;
    const std::optional<int> row = selectedRow(LstUName);
    if (!row) {
        showInformation(Message::kConfigureSelectOne);
        return;
    }
    guarded([&row] { configure(rowText(LstUName, *row)); });
}

void UDSN_doubleClick(Widget widget, XtPointer clientData, XtPointer callData) {
    btnConfigure_Clicked(widget, clientData, callData);
}

void lstUName_Selected(Widget widget, XtPointer /*clientData*/, XtPointer /*callData*/) {
    DataSources.followRow(widget);
}

void lstUDesc_Selected(Widget widget, XtPointer /*clientData*/, XtPointer /*callData*/) {
    DataSources.followRow(widget);
}

void synchonizeScrollUD(Widget /*scrollBar*/, XtPointer /*clientData*/, XtPointer callData) {
    DataSources.scrollHeaders(callData);
}
