#include "admin/file_dsn_page.h"

#include <Xm/FileSB.h>
#include <Xm/List.h>
#include <Xm/TextF.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <tuple>

#include "admin/dialogs.h"
#include "admin/driver_setup.h"
#include "admin/file_dsn_writer.h"
#include "admin/file_selection_layout.h"
#include "admin/globals.h"
#include "admin/lists.h"
#include "installer/configuration.h"
#include "installer/configuration_change.h"
#include "installer/configuration_reader.h"
#include "installer/drivers.h"
#include "installer/file_dsn.h"
#include "motifutil/file_dialog.h"
#include "motifutil/mnemonics.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"

Widget frmFileDSN = nullptr;
Widget TxtFDDesc = nullptr;
Widget FSelect = nullptr;
Widget TxtDirectory = nullptr;
Widget BtnFDAdd = nullptr;
Widget BtnFDRemove = nullptr;
Widget BtnFDConfigure = nullptr;
Widget BtnSetDirectory = nullptr;
Widget separator3 = nullptr;

namespace {

constexpr const char* kPattern = "*.dsn";

Widget fileList() {
    return XtNameToWidget(FSelect, "*ItemsList");
}

// The position of the selected file, when exactly one is selected. A directory without any shows an item that says so.
std::optional<int> selectedFile() {
    const std::optional<int> row = selectedRow(fileList());
    return row && rowText(fileList(), *row).starts_with('/') ? row : std::nullopt;
}

// The text of the box's selection field.
std::string selectionText() {
    return fieldText(XtNameToWidget(FSelect, "Text"));
}

// The part of a path that ends with its last "/"; empty when it has none.
std::string directoryOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

std::string shownDirectory() {
    XmString directory = nullptr;
    XtVaGetValues(FSelect, XmNdirectory, &directory, nullptr);
    const XmStringPtr owned(directory);
    return plainText(directory);
}

// Lets the list of files say that there is none, as the box itself does for an empty directory.
void emptyFileList() {
    XmString nothing = nullptr;
    XtVaGetValues(FSelect, XmNnoMatchString, &nothing, nullptr);
    const XmStringPtr owned(nothing);
    XtVaSetValues(FSelect, XmNfileListItems, &nothing, XmNfileListItemCount, 1, nullptr);
}

// Hands every key of the file data source `path` to its driver.
void configure(const std::string& path) {
    // A name without a directory would mean a file of the installer library's own folder, and to open a pipe means to
    // wait for whoever writes into it.
    std::error_code ignored;
    if (!path.starts_with('/') || !std::filesystem::is_regular_file(path, ignored) || access(path.c_str(), R_OK) != 0) {
        refreshFileDsnPage();
        showError(Message::kFileDsnUnreadable);
        return;
    }
    std::vector<installer::Attribute> attributes{{"DSN", path}};
    std::string driver;
    std::string setup;
    for (installer::Attribute& setting : installer::readSection(installer::kFileDsnSection, path)) {
        if (installer::sameName(setting.key, "Driver")) {
            driver = installer::driverName(setting.value);
            setup = installer::setupLibrary(driver);
        }
        attributes.push_back(std::move(setting));
    }
    if (driver.empty()) {
        showError(Message::kFileNamesNoDriver);
        return;
    }
    if (installer::listKeys(driver, installer::kDriverFile, installer::Growth::kByDoubling).names.empty()) {
        showError(Message::kFileDriverUnknown, driver);
        return;
    }
    callDynamic(setup.c_str(), kConfigureDataSource, driver.c_str(), installer::attributeList(attributes).c_str(),
                kFileDataSource, path.c_str());
    refreshFileDsnPage();
}

// Shows the directory that was typed; false when it is none.
bool showTypedDirectory(const std::filesystem::path& typed) {
    std::error_code ignored;
    const bool isDirectory = std::filesystem::is_directory(typed, ignored);
    if (isDirectory) {
        showFileDsnDirectory(typed / "");
    }
    return isDirectory;
}

std::filesystem::path typedPath(Widget field) {
    return (shownDirectory() / std::filesystem::path(fieldText(field))).lexically_normal();
}

void searchFiltered(Widget widget, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([widget] {
        if (!XmIsTextField(widget) || !showTypedDirectory(typedPath(widget))) {
            pressButton(XtNameToWidget(FSelect, "Apply"));
        }
    });
}

// Shows the directory that stands in the selection field, or selects the file there; one that is selected already, or
// that no list shows, is configured.
void selectTyped(Widget field, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([field] {
        std::error_code ignored;
        const std::filesystem::path typed = typedPath(field);
        if (showTypedDirectory(typed)) {
            return;
        }
        if (std::filesystem::exists(typed, ignored) && directoryOf(typed) != shownDirectory()) {
            showFileDsnDirectory(directoryOf(typed));
        }
        const XmStringPtr file = compoundString(typed);
        const std::optional<int> selected = selectedFile();
        if (XmListItemExists(fileList(), file.get()) != 0 && !(selected && rowText(fileList(), *selected) == typed)) {
            XmListSelectItem(fileList(), file.get(), True);
        } else {
            DsnType = kFileDataSource;
            configure(typed);
        }
    });
}

Widget createFileSelection(Widget parent) {
    char directory[kFileDsnNameSize];
    getFileDSNDefaultDir(directory);
    const XmStringPtr mask = compoundString(directory + std::string(kPattern));
    const XmStringPtr pattern = compoundString(kPattern);
    const XmStringPtr nothing = compoundString(catalogText(Message::kNoFileDsns));
    const XmStringPtr filter = compoundString("\nFilter");
    const XmStringPtr apply = compoundString(catalogText(Message::kFilter));
    const XmStringPtr selection = compoundString(catalogText(Message::kFileSelection));
    const XmStringPtr fileHeading = compoundString(catalogText(Message::kFileList));
    const XmStringPtr directories = compoundString(catalogText(Message::kDirectoryList));
    ArgumentList arguments;
    arguments.set(XmNdirMask, mask.get())
        .set(XmNpattern, pattern.get())
        .set(XmNnoMatchString, nothing.get())
        .set(XmNfilterLabelString, filter.get())
        .set(XmNapplyLabelString, apply.get())
        .set(XmNselectionLabelString, selection.get())
        .set(XmNfileListLabelString, fileHeading.get())
        .set(XmNdirListLabelString, directories.get())
        .set(XmNchildPlacement, XmPLACE_TOP)
        .set(XmNshadowThickness, 0)
        .set(XmNmarginWidth, kPageGap)
        .set(XmNmarginHeight, kPageGap);
    static char name[] = "FSelect";
    Widget box = XmCreateFileSelectionBox(parent, name, arguments.data(), arguments.size());
    if (box == nullptr) {
        throw std::bad_alloc();
    }
    Widget filterLabel = createHeading(box, "LblFilter", Message::kFilter);
    leadTo(filterLabel, XtNameToWidget(box, "FilterText"), catalogText(Message::kFilterFieldLetter));
    // The page has buttons of its own.
    for (const char* part : {"OK", "Cancel", "Help", "FilterLabel", "Separator"}) {
        if (Widget child = XtNameToWidget(box, part)) {
            XtUnmanageChild(child);
        }
    }
    // Else Return anywhere in the window presses the box's OK, out of sight as it is, and not the window's.
    XtVaSetValues(box, XmNdefaultButton, nullptr, nullptr);
    finishFileSelection(box);
    // Its own presses what it thinks of as the default button.
    XtRemoveAllCallbacks(XtNameToWidget(box, "*DirList"), XmNdefaultActionCallback);
    // Return acts on what has the keyboard.
    const struct {
        const char* part;
        const char* reason;
        XtCallbackProc action;
    } actions[] = {{"FilterText", XmNactivateCallback, searchFiltered},
                   {"*DirList", XmNdefaultActionCallback, searchFiltered},
                   {"*ItemsList", XmNdefaultActionCallback, btnFDConfigure_Clicked},
                   {"Text", XmNactivateCallback, selectTyped}};
    for (const auto& [part, reason, action] : actions) {
        Widget widget = XtNameToWidget(box, part);
        XtAddCallback(widget, reason, action, nullptr);
        keepReturn(widget);
    }
    arrangeFileSelection(box, filterLabel);
    XtManageChild(box);
    return box;
}

}  // namespace

Widget createFileDsnPage(Widget notebook, XtCallbackProc add) {
    frmFileDSN = createPage(notebook, "frmFileDSN");

    TxtFDDesc = createReadOnlyText(frmFileDSN, "TxtFDDesc", Message::kFileDsnExplanation, 2);
    Attach(TxtFDDesc).leftForm(kPageMargin).rightForm(kPageMargin).bottomForm(kPageMargin);
    separator3 = createSeparator(frmFileDSN, "separator3");
    Attach(separator3).leftForm(kPageMargin).rightForm(kPageMargin).above(TxtFDDesc, kPageGap);

    FSelect = createFileSelection(frmFileDSN);
    TxtDirectory = XtNameToWidget(FSelect, "DirText");
    BtnFDAdd = createPushButton(frmFileDSN, "BtnFDAdd", Message::kFileDsnAdd, add);
    BtnFDRemove = createPushButton(frmFileDSN, "BtnFDRemove", Message::kFileDsnRemove, btnFDRemove_Clicked);
    BtnFDConfigure = createPushButton(frmFileDSN, "BtnFDConfigure", Message::kFileDsnConfigure, btnFDConfigure_Clicked);
    BtnSetDirectory = createPushButton(frmFileDSN, "BtnSetDirectory", Message::kSetDirectory, btnSetDirectory_Activate);
    equalizeWidths({BtnFDAdd, BtnFDRemove, BtnFDConfigure, BtnSetDirectory});
    // In line with the field that the filter is typed into.
    const int heading = preferredHeight(XtNameToWidget(FSelect, "LblFilter"));
    Attach(BtnFDAdd).topForm(kPageMargin + heading).rightForm(kPageMargin);
    Attach(BtnFDRemove).below(BtnFDAdd, kPageGap).rightForm(kPageMargin);
    Attach(BtnFDConfigure).below(BtnFDRemove, kPageGap).rightForm(kPageMargin);
    Attach(BtnSetDirectory).below(BtnFDConfigure, kPageGap).rightForm(kPageMargin);

    // The box has margins of its own.
    Attach(FSelect)
        .topForm(kPageMargin - kPageGap)
        .leftForm(kPageMargin - kPageGap)
        .leftOf(BtnFDAdd, kPageMargin - kPageGap)
        .above(separator3, 0);
    return frmFileDSN;
}

void showFileDsnDirectory(const std::string& directory) {
    XmString pattern = nullptr;
    XtVaGetValues(FSelect, XmNpattern, &pattern, nullptr);
    const XmStringPtr owned(pattern);
    const XmStringPtr mask = compoundString(directory + plainText(pattern));
    XmFileSelectionDoSearch(FSelect, mask.get());
}

void refreshFileDsnPage() {
    std::error_code ignored;
    const XmStringPtr selected = compoundString(selectionText());
    const bool hadKeyboard = XmGetFocusWidget(FSelect) == fileList();
    XmFileSelectionDoSearch(FSelect, nullptr);
    if (!std::filesystem::is_directory(shownDirectory(), ignored)) {
        // The search leaves the list as it is.
        emptyFileList();
    }
    if (XmListItemExists(fileList(), selected.get())) {
        XmListSelectItem(fileList(), selected.get(), True);
    }
    // The list lost it while it was empty.
    if (hadKeyboard) {
        XmProcessTraversal(fileList(), XmTRAVERSE_CURRENT);
    }
}

void btnFDConfigure_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    DsnType = kFileDataSource;
    guarded([] {
        if (selectedFile()) {
            configure(selectionText());
        } else {
            showInformation(Message::kFileConfigureSelectOne);
        }
    });
}

void btnFDRemove_Clicked(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([] {
        const std::optional<int> row = selectedFile();
        if (!row) {
            showInformation(Message::kRemoveSelectOne);
            return;
        }
        const std::string path = rowText(fileList(), *row);
        // The whole path without the slash that begins it: files of one name lie in many directories.
        const std::string shown = path.substr(path.find('/') + 1);
        askQuestion(catalogText(Message::kRemoveQuestionBegin) + " \"" + shown + "\"    " +
                        catalogText(Message::kRemoveQuestionEnd) + "?",
                    path, RemoveFileDSN, nullptr, Answer::kNo);
    });
}

void RemoveFileDSN(Widget /*widget*/, XtPointer path, XtPointer /*callData*/) {
    guarded([path] {
        const auto* file = static_cast<const char*>(path);
        const int row = selectedFile().value_or(1);
        if (deleteFileDSN(file)) {
            showFileDsnDirectory(directoryOf(file));
            // The one that moved up, or the last.
            int count = 0;
            XtVaGetValues(fileList(), XmNitemCount, &count, nullptr);
            XmListSelectPos(fileList(), std::min(row, count), True);
        } else {
            refreshFileDsnPage();
            showError(Message::kFileRemoveFailed);
        }
    });
}

void btnSetDirectory_Activate(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([] {
        askQuestion(catalogText(Message::kSetDirectoryQuestion, {directoryOf(selectionText())}), {},
                    change_default_Directory);
    });
}

void change_default_Directory(Widget /*widget*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    guarded([] {
        const std::string directory = directoryOf(selectionText());
        if (!directory.empty()) {
            // Whether it could be written is not reported.
            installer::ConfigurationChange change;
            change.write("ODBC FILE DSN", "DefaultDSNDir", directory.c_str());
            std::ignore = change.commit();
        }
    });
}
