#include "admin/drivers_page.h"

#include <string>

#include "admin/dialogs.h"
#include "admin/lists.h"
#include "admin/table.h"
#include "bos/file.h"
#include "installer/configuration.h"
#include "installer/drivers.h"
#include "motifutil/component_inquiry.h"
#include "motifutil/component_version.h"
#include "motifutil/mnemonics.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"

Widget FrmDrivers = nullptr;
Widget FormDrivers = nullptr;
Widget LbColName = nullptr;
Widget LbColVersion = nullptr;
Widget LbColCompany = nullptr;
Widget LbColFile = nullptr;
Widget LbColDate = nullptr;
Widget LstName = nullptr;
Widget LstVersion = nullptr;
Widget LstCompany = nullptr;
Widget LstFile = nullptr;
Widget LstDate = nullptr;
Widget LbDDesc = nullptr;
Widget TxtDriversDesc = nullptr;
Widget scrolledWin1 = nullptr;
Widget frmLabel = nullptr;
Widget scrolledWin2 = nullptr;
Widget FrmTable = nullptr;

namespace {

Table Drivers;

// What is known of the drivers besides their names, one row for each.
struct DriverColumns {
    std::vector<std::string> files;
    std::vector<std::string> versions;
    std::vector<std::string> companies;
    std::vector<std::string> dates;
};

// The longest library path that is read, its terminator included.
constexpr std::size_t kLibraryPathSize = 128;

std::string modificationDate(const std::string& path) {
    std::uint32_t date = 0;
    char text[kShortTextSize] = "";
    if (bosFileDateSize(path.c_str(), &date, nullptr) == 0) {
        formatFileDate(date, text);
    }
    return text;
}

DriverColumns describeDrivers(const std::vector<std::string>& names) {
    DriverColumns columns;
    std::vector<std::string> libraries;
    for (const std::string& name : names) {
        std::string library = installer::driverLibrary(name, kLibraryPathSize);
        if (library.empty()) {
            showODBCINSTError();
        }
        beginAsking(library);
        libraries.push_back(library);
        columns.files.push_back(library.substr(library.rfind('/') + 1));
        columns.dates.push_back(modificationDate(library));
    }
    for (const ComponentAnswer& answer : askComponents(libraries)) {
        columns.versions.push_back(answer.version);
        columns.companies.push_back(answer.company);
    }
    return columns;
}

}  // namespace

void beginDriversPage() {
    for (const std::string& driver : installer::listDrivers().names) {
        beginAsking(installer::driverLibrary(driver, kLibraryPathSize));
    }
}

Widget createDriversPage(Widget notebook) {
    FrmDrivers = createPage(notebook, "FrmDrivers");
    LbDDesc = createHeading(FrmDrivers, "LbDDesc", Message::kDriversHeading);
    Attach(LbDDesc).topForm(kPageMargin).leftForm(kPageMargin);

    FormDrivers = createForm(FrmDrivers, "FormDrivers");
    Attach(FormDrivers).below(LbDDesc, 0).leftForm().rightForm().bottomForm();
    TxtDriversDesc = createReadOnlyText(FormDrivers, "TxtDriversDesc", Message::kDriversExplanation, 2);

    scrolledWin1 = createHeaderWindow(FormDrivers, "scrolledWin1");
    frmLabel = createForm(scrolledWin1, "frmLabel");
    LbColName = createLabel(frmLabel, "LbColName", Message::kColumnName);
    LbColVersion = createLabel(frmLabel, "LbColVersion", Message::kColumnVersion);
    LbColCompany = createLabel(frmLabel, "LbColCompany", Message::kColumnCompany);
    LbColFile = createLabel(frmLabel, "LbColFile", Message::kColumnFile);
    LbColDate = createLabel(frmLabel, "LbColDate", Message::kColumnDate);

    scrolledWin2 = createScrolledWindow(FormDrivers, "scrolledWin2");
    FrmTable = createForm(scrolledWin2, "FrmTable");
    LstName = createList(FrmTable, "LstName", DriversTabEntrySelected, nullptr);
    LstVersion = createList(FrmTable, "LstVersion", DriversTabEntrySelected, nullptr);
    LstCompany = createList(FrmTable, "LstCompany", DriversTabEntrySelected, nullptr);
    LstFile = createList(FrmTable, "LstFile", DriversTabEntrySelected, nullptr);
    LstDate = createList(FrmTable, "LstDate", DriversTabEntrySelected, nullptr);

    leadTo(LbDDesc, LstName, mnemonicFor(Message::kDriversHeading));
    placeTable({nullptr, scrolledWin1, scrolledWin2, TxtDriversDesc, {}});
    setSizePosForDriversWidgets(LstName, LstVersion, LstCompany, LstFile, LstDate, LbColName, LbColVersion,
                                LbColCompany, LbColFile, LbColDate);
    Drivers.adopt({{LstName, LbColName},
                   {LstVersion, LbColVersion},
                   {LstCompany, LbColCompany},
                   {LstFile, LbColFile},
                   {LstDate, LbColDate}},
                  scrolledWin2, synchonizeScrollDT);
    return FrmDrivers;
}

void populateDriverInfo(Widget nameList, Widget fileList, Widget versionList, Widget companyList, Widget dateList) {
    guarded([=] {
        installer::NameList drivers = installer::listDrivers();
        if (drivers.length == 0) {
            showODBCINSTError();
        } else if (drivers.isCut) {
            showError(Message::kDriverListCut);
        }
        if (drivers.names.empty()) {
            for (Widget list : {nameList, fileList, versionList, companyList, dateList}) {
                setEmptySize(list, 100, 25);
            }
            return;
        }
        sortRows(drivers.names);
        populateList(nameList, drivers.names);
        const DriverColumns columns = describeDrivers(drivers.names);
        populateList(fileList, columns.files);
        populateList(versionList, columns.versions);
        populateList(companyList, columns.companies);
        populateList(dateList, columns.dates);
    });
}

void setSizePosForDriversWidgets(Widget nameList, Widget versionList, Widget companyList, Widget fileList,
                                 Widget dateList, Widget nameHeader, Widget versionHeader, Widget companyHeader,
                                 Widget fileHeader, Widget dateHeader) {
    placeColumns({{nameList, nameHeader},
                  {versionList, versionHeader},
                  {companyList, companyHeader},
                  {fileList, fileHeader},
                  {dateList, dateHeader}});
}

void DriversTabEntrySelected(Widget list, XtPointer /*clientData*/, XtPointer /*callData*/) {
    Drivers.followRow(list);
}

void synchonizeScrollDT(Widget /*scrollBar*/, XtPointer /*clientData*/, XtPointer callData) {
    Drivers.scrollHeaders(callData);
}
