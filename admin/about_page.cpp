#include "admin/about_page.h"

#include <array>
#include <string>
#include <vector>

#include "admin/globals.h"
#include "admin/lists.h"
#include "admin/table.h"
#include "kvlib/catalog.h"
#include "kvlib/text.h"
#include "motifutil/component_inquiry.h"
#include "motifutil/mnemonics.h"
#include "motifutil/widgets.h"

Widget FrmAbout = nullptr;
Widget LblAbtDesc = nullptr;
Widget LblAbtVersion = nullptr;
Widget LblSAbtFile = nullptr;
Widget LstAbtDesc = nullptr;
Widget LstAbtVersion = nullptr;
Widget LstAbtFile = nullptr;
Widget LblAboutText = nullptr;
Widget ScrAboutLabels = nullptr;
Widget FormAboutLabels = nullptr;
Widget ScrAboutLists = nullptr;
Widget FormAboutLists = nullptr;
Widget TxtAboutDesc = nullptr;

namespace {

Table Components;

// What rows 2 to 4 are about.
std::vector<std::string> componentLibraries() {
    // The conversion library is named after the library it wraps, with the product's prefix and version suffix.
    char conversionLibrary[16] = "libvhicu";
    bosdllname(conversionLibrary);
    return {"odbccurs", "libodbc", conversionLibrary};
}

// Keeps the headers above the columns while the lists scroll sideways.
void scrolled(Widget /*scrollBar*/, XtPointer /*clientData*/, XtPointer callData) {
    Components.scrollHeaders(callData);
}

}  // namespace

void beginAboutTab() {
    for (const std::string& library : componentLibraries()) {
        beginAsking(library);
    }
}

Widget createAboutForm(Widget notebook) {
    FrmAbout = createPage(notebook, "FrmAbout");
    LblAboutText = createHeading(FrmAbout, "LblAboutText", Message::kAboutHeading);

    ScrAboutLabels = createHeaderWindow(FrmAbout, "ScrAboutLabels");
    FormAboutLabels = createForm(ScrAboutLabels, "FormAboutLabels");
    LblAbtDesc = createLabel(FormAboutLabels, "LblAbtDesc", Message::kColumnDescription);
    LblAbtVersion = createLabel(FormAboutLabels, "LblAbtVersion", Message::kColumnVersion);
    LblSAbtFile = createLabel(FormAboutLabels, "LblSAbtFile", Message::kColumnFile);

    ScrAboutLists = createScrolledWindow(FrmAbout, "ScrAboutLists");
    FormAboutLists = createForm(ScrAboutLists, "FormAboutLists");
    LstAbtDesc = createList(FormAboutLists, "LstAbtDesc", AboutTabItemSelected, nullptr);
    LstAbtVersion = createList(FormAboutLists, "LstAbtVersion", AboutTabItemSelected, nullptr);
    LstAbtFile = createList(FormAboutLists, "LstAbtFile", AboutTabItemSelected, nullptr);

    leadTo(LblAboutText, LstAbtDesc, mnemonicFor(Message::kAboutHeading));
    TxtAboutDesc = createReadOnlyText(FrmAbout, "TxtAboutDesc", Message::kAboutExplanation, 2);
    placeTable({LblAboutText, ScrAboutLabels, ScrAboutLists, TxtAboutDesc, {}});
    Components.adopt({{LstAbtDesc, LblAbtDesc}, {LstAbtVersion, LblAbtVersion}, {LstAbtFile, LblSAbtFile}},
                     ScrAboutLists, scrolled);
    populateAboutTab();
    setSizePosAboutTabWidgets(LstAbtDesc, LstAbtVersion, LstAbtFile, nullptr, nullptr, LblAbtDesc, LblAbtVersion,
                              LblSAbtFile, nullptr, nullptr);
    return FrmAbout;
}

void populateAboutTab() {
    constexpr int kRows = 4;
    // The last two texts are crossed on purpose: translated catalogs hold them under these numbers.
    constexpr Message::Number kDescriptions[kRows] = {Message::kAboutAdministrator, Message::kAboutCursorLibrary,
                                                      Message::kAboutDriverManager, Message::kAboutConversionLibrary};
    const std::vector<std::string> libraries = componentLibraries();

    std::array<FixedRow, kRows> names{};
    std::array<FixedRow, kRows> descriptions{};
    std::array<FixedRow, kRows> versions{};
    const std::vector<ComponentAnswer> answers = askComponents(libraries);
    for (std::size_t row = 0; row < kRows; ++row) {
        strCopy(names[row].data(), names[row].size(), row == 0 ? "odbcadmin" : libraries[row - 1].c_str());
        strCopy(descriptions[row].data(), descriptions[row].size(), catalogText(kDescriptions[row]).c_str());
        strCopy(versions[row].data(), versions[row].size(),
                row == 0 ? getFileVersionString() : answers[row - 1].version.c_str());
    }
    populateList(LstAbtFile, names.data(), kRows);
    populateList(LstAbtDesc, descriptions.data(), kRows);
    populateList(LstAbtVersion, versions.data(), kRows);
}

void setSizePosAboutTabWidgets(Widget list1, Widget list2, Widget list3, Widget list4, Widget list5, Widget header1,
                               Widget header2, Widget header3, Widget header4, Widget header5) {
    std::vector<Table::Column> columns{
        {list1, header1}, {list2, header2}, {list3, header3}, {list4, header4}, {list5, header5}};
    std::erase_if(columns, [](const Table::Column& column) { return column.list == nullptr; });
    placeColumns(columns);
}

void AboutTabItemSelected(Widget list, XtPointer /*clientData*/, XtPointer /*callData*/) {
    Components.followRow(list);
}
