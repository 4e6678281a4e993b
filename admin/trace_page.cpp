#include "admin/trace_page.h"

#include <Xm/FileSB.h>
#include <Xm/Frame.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "admin/dialogs.h"
#include "admin/globals.h"
#include "installer/configuration.h"
#include "installer/configuration_change.h"
#include "installer/configuration_reader.h"
#include "installer/trace_mirror.h"
#include "motifutil/change_report.h"
#include "motifutil/file_dialog.h"
#include "motifutil/mnemonics.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"

Widget FrmTrace = nullptr;
Widget BtnTrace = nullptr;
Widget TgEnableTracing = nullptr;
Widget LblTraceFile = nullptr;
Widget TxtTraceFile = nullptr;
Widget BtnTFileBrowse = nullptr;
Widget LblTraceLib = nullptr;
Widget TxtTraceLib = nullptr;
Widget BtnTLibBrowse = nullptr;
Widget LblTraceState = nullptr;
Widget TxtTraceDesc = nullptr;

namespace {

constexpr const char* kSection = "ODBC";
constexpr const char* kTraceKey = "TRACE";
constexpr const char* kFileKey = "TraceFile";
constexpr const char* kLibraryKey = "TraceDll";

// What is stored of a path, and how its field shows that: bytes that are no characters of the locale are not shown.
struct StoredPath {
    std::string value;
    std::string shown;
};
StoredPath TraceFile;
StoredPath TraceLibrary;

void loadPath(installer::ConfigurationReader& file, const char* key, Widget field, StoredPath& path) {
    path.value = file.readValue(kSection, key);
    XmTextSetString(field, path.value.data());
    path.shown = fieldText(field);
}

// What is to be stored: the very bytes that were read as long as nobody changed the field.
std::string pathToStore(Widget field, const StoredPath& path) {
    const std::string text = fieldText(field);
    return text == path.shown ? path.value : text;
}

// Why the text can't be stored under the key, if so.
std::optional<Message::Number> problemOf(const char* key, const std::string& text) {
    if (text.find_first_of("\r\n") != std::string::npos) {
        return Message::kTraceTextHasLineBreak;
    }
    if (std::strlen(key) + 1 + text.size() > installer::kLongestLine) {
        return Message::kTraceTextTooLong;
    }
    return std::nullopt;
}

bool isLibrary(XtPointer kind) {
    return reinterpret_cast<XtArgVal>(kind) == kBrowseTraceLibrary;
}

Widget fieldOf(XtPointer kind) {
    return isLibrary(kind) ? TxtTraceLib : TxtTraceFile;
}

// File and library can be changed while tracing is on.
void followToggle() {
    const Boolean on = XmToggleButtonGetState(TgEnableTracing);
    for (Widget control : {LblTraceFile, TxtTraceFile, BtnTFileBrowse, LblTraceLib, TxtTraceLib, BtnTLibBrowse}) {
        setEnabled(control, on != 0);
    }
}

std::string kilobytes(std::uintmax_t bytes) {
    constexpr std::uintmax_t kBytes = 1024;
    return std::to_string((bytes + kBytes - 1) / kBytes);
}

// What the page does not show: what programs that start now will do, where that is something else than is stored, and
// how large the file has become.
std::string stateText(const std::string& storedState, const std::string& storedFile) {
    const installer::TraceState state = installer::traceState();
    const bool isStored = storedState == "1";
    if (state.isOn && (!isStored || state.file != storedFile)) {
        return catalogText(Message::kTraceGoesElsewhere, {state.file, state.source});
    }
    if (!state.isOn && isStored) {
        return catalogText(Message::kTraceIsOff,
                           {state.source.empty() ? catalogText(Message::kNothingDecides) : state.source + "."});
    }
    std::error_code none;
    const std::uintmax_t size = state.isOn ? std::filesystem::file_size(state.file, none) : 0;
    return state.isOn && !none ? catalogText(Message::kTraceFileSize, {kilobytes(size)}) : " ";
}

void showState(const std::string& storedState, const std::string& storedFile) {
    setLabel(LblTraceState, stateText(storedState, storedFile));
}

void showState() {
    installer::ConfigurationReader file(installer::kDataSourceFile);
    showState(file.readValue(kSection, kTraceKey, 2), file.readValue(kSection, kFileKey));
}

XtIntervalId StateTimer = 0;

// The file grows, and others write the files that decide.
void showStateAgain(XtPointer /*clientData*/, XtIntervalId* /*timer*/) {
    constexpr unsigned long kMilliseconds = 2000;
    if (CurrentSelectedTab == 'T') {
        showState();
    }
    StateTimer = XtAppAddTimeOut(app_context, kMilliseconds, showStateAgain, nullptr);
}

void endShowing(Widget /*page*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    XtRemoveTimeOut(StateTimer);
}

std::string obstacleText(const installer::TraceObstacle& obstacle, const std::string& file) {
    switch (obstacle.reason) {
        case installer::TraceObstacle::kSystemDecides:
            return catalogText(Message::kTraceSystemDecides, {obstacle.file, file});
        case installer::TraceObstacle::kNoPath:
            return catalogText(Message::kTraceNoPath);
        case installer::TraceObstacle::kRelativePath:
            return catalogText(Message::kTraceRelativePath, {file});
        case installer::TraceObstacle::kPathTooLong:
            return catalogText(Message::kTracePathTooLong);
        default:
            return catalogText(Message::kTraceNotWritable, {file, std::strerror(obstacle.error)});
    }
}

// Lets unixODBC do what was stored. Returns why it will not, if so.
std::string mirror(bool on, const std::string& file) {
    const std::optional<installer::TraceObstacle> obstacle = on ? installer::findTraceObstacle(file) : std::nullopt;
    const auto failure = installer::mirrorTracing(on && !obstacle ? std::optional(file) : std::nullopt);
    if (failure) {
        return catalogText(Message::kTraceNotMirrored) + "\n\n" + changeReport(*failure);
    }
    return obstacle ? obstacleText(*obstacle, file) : std::string();
}

// Before the window is there what changes is what is being loaded.
void offerApply() {
    if (XtIsRealized(ShODBCAdmin)) {
        XtSetSensitive(BtnApply, True);
    }
}

// A label above a text field with a browse button on its right, below `above` (null: at the top of the form).
void placePathRow(Widget label, Widget field, Widget button, Widget above) {
    Attach(label).leftForm(kPageMargin);
    if (above == nullptr) {
        Attach(label).topForm(kPageMargin);
    } else {
        Attach(label).below(above, kPageMargin);
    }
    Attach(button).below(label, kPageGap / 2).rightForm(kPageMargin);
    Attach(field).below(label, kPageGap / 2).leftForm(kPageMargin).leftOf(button, kPageGap);
}

void createTraceWidgets(Widget notebook) {
    FrmTrace = createPage(notebook, "FrmTrace");
    BtnTrace = createTab(notebook, "BtnTrace", Message::kTracingTab);

    TgEnableTracing = createToggleButton(FrmTrace, "TgEnableTracing", Message::kEnableTracing);
    Attach(TgEnableTracing).topForm(kPageMargin).leftForm(kPageMargin);

    Widget frame = XtVaCreateManagedWidget("FramConfigTracing", xmFrameWidgetClass, FrmTrace, nullptr);
    Attach(frame).below(TgEnableTracing, kPageGap).leftForm(kPageMargin).rightForm(kPageMargin);
    Widget form = createForm(frame, "FrmConfigTrace");
    LblTraceFile = createLabel(form, "LblTraceFile", Message::kTraceFile);
    TxtTraceFile = createTextField(form, "TxtTraceFile");
    BtnTFileBrowse = createPushButton(form, "BtnTFileBrowse", Message::kBrowse);
    placePathRow(LblTraceFile, TxtTraceFile, BtnTFileBrowse, nullptr);
    LblTraceLib = createLabel(form, "LblTraceLib", Message::kTraceLibrary);
    TxtTraceLib = createTextField(form, "TxtTraceLib");
    BtnTLibBrowse = createPushButton(form, "BtnTLibBrowse", Message::kBrowse);
    placePathRow(LblTraceLib, TxtTraceLib, BtnTLibBrowse, TxtTraceFile);
    leadTo(LblTraceFile, TxtTraceFile, mnemonicFor(Message::kTraceFile));
    leadTo(LblTraceLib, TxtTraceLib, mnemonicFor(Message::kTraceLibrary));
    setMnemonic(BtnTLibBrowse, catalogText(Message::kBrowseLibraryLetter));
    XtVaSetValues(TxtTraceLib, XmNbottomAttachment, XmATTACH_FORM, XmNbottomOffset, kPageMargin, nullptr);

    TxtTraceDesc = createReadOnlyText(FrmTrace, "TxtTraceDesc", Message::kTracingExplanation, 6);
    LblTraceState = createLabel(FrmTrace, "LblTraceState", std::string(" "));
    Attach(LblTraceState).below(frame, kPageGap).leftForm(kPageMargin).rightForm(kPageMargin);
    XtVaSetValues(LblTraceState, XmNrecomputeSize, False, nullptr);
    Attach(TxtTraceDesc).leftForm(kPageMargin).rightForm(kPageMargin).bottomForm(kPageMargin);

    XtAddCallback(TgEnableTracing, XmNvalueChangedCallback, TraceConfigStateChanged, nullptr);
    XtAddCallback(TxtTraceFile, XmNvalueChangedCallback, Trace_activityNoticed, nullptr);
    XtAddCallback(TxtTraceLib, XmNvalueChangedCallback, Trace_activityNoticed, nullptr);
    followToggle();
    XtAddCallback(BtnTFileBrowse, XmNactivateCallback, SelectTraceFile, reinterpret_cast<XtPointer>(kBrowseTraceFile));
    XtAddCallback(BtnTLibBrowse, XmNactivateCallback, SelectTraceFile,
                  reinterpret_cast<XtPointer>(kBrowseTraceLibrary));
}

}  // namespace

Widget createTraceTab(Widget notebook) {
    bool isBuilt = false;
    guarded([&] {
        createTraceWidgets(notebook);
        Load_Trace();
        showStateAgain(nullptr, nullptr);
        XtAddCallback(FrmTrace, XmNdestroyCallback, endShowing, nullptr);
        isBuilt = true;
    });
    return isBuilt ? FrmTrace : nullptr;
}

void Load_Trace() {
    installer::ConfigurationReader file(installer::kDataSourceFile);
    // One character is read, so "10" reads as "1", on.
    const std::string trace = file.readValue(kSection, kTraceKey, 2);
    XmToggleButtonSetState(TgEnableTracing, trace == "1" ? True : False, True);
    loadPath(file, kFileKey, TxtTraceFile, TraceFile);
    loadPath(file, kLibraryKey, TxtTraceLib, TraceLibrary);
    showState(trace, TraceFile.value);
}

void Save_Trace() {
    guarded([] {
        const char* state = XmToggleButtonGetState(TgEnableTracing) != 0 ? "1" : "0";
        const std::string file = pathToStore(TxtTraceFile, TraceFile);
        const std::string library = pathToStore(TxtTraceLib, TraceLibrary);
        std::optional<Message::Number> problem = problemOf(kFileKey, file);
        problem = problem ? problem : problemOf(kLibraryKey, library);
        if (problem) {
            showError(*problem);
            return;
        }
        installer::ConfigurationChange change;
        change.write(kSection, kTraceKey, state);
        change.write(kSection, kFileKey, file.c_str());
        change.write(kSection, kLibraryKey, library.c_str());
        if (const std::optional<installer::ChangeFailure> failure = change.commit()) {
            showError(Message::kTraceNotSaved, *failure);
            // OK ends the program at once, and nobody sees the box.
            std::cerr << catalogText(Message::kTraceNotSaved) << '\n' << changeReport(*failure) << '\n';
            return;
        }
        const std::string reason = mirror(state[0] == '1', file);
        if (!reason.empty()) {
            showInformation(reason);
            std::cerr << reason << '\n';
        }
        showState();
    });
}

void TraceConfigStateChanged(Widget /*toggle*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    followToggle();
    offerApply();
}

void Trace_activityNoticed(Widget /*text*/, XtPointer /*clientData*/, XtPointer /*callData*/) {
    offerApply();
}

void SelectTraceFile(Widget /*button*/, XtPointer kind, XtPointer /*callData*/) {
    guarded([kind] {
        const XmStringPtr pattern = compoundString(isLibrary(kind) ? "*.so" : "*.log");
        ArgumentList arguments;
        arguments.set(XmNpattern, pattern.get());
        Widget box = createFileDialog(
            ShODBCAdmin, "traceFileDialog",
            catalogText(isLibrary(kind) ? Message::kChooseTraceLibraryTitle : Message::kChooseTraceFileTitle),
            arguments);
        // Only an empty field presets the box, which then begins without a name; over a name that stands in the field
        // the dialog begins where it was started, as it always has.
        if (fieldText(fieldOf(kind)).empty()) {
            const XmStringPtr nothing = compoundString("");
            XtVaSetValues(box, XmNdirSpec, nothing.get(), nullptr);
        }
        XtAddCallback(box, XmNokCallback, FileSelected, kind);
        XtAddCallback(box, XmNcancelCallback, FileSelectionCancelled, kind);
        XtManageChild(box);
    });
}

void FileSelected(Widget box, XtPointer kind, XtPointer callData) {
    guarded([=] {
        std::string path = plainText(static_cast<XmFileSelectionBoxCallbackStruct*>(callData)->value);
        if (!path.starts_with('/')) {
            // A name that was typed belongs to the directory that the dialog shows.
            path = plainText(static_cast<XmFileSelectionBoxCallbackStruct*>(callData)->dir) + path;
        }
        XmTextSetString(fieldOf(kind), const_cast<char*>(path.c_str()));
        XtDestroyWidget(XtParent(box));
    });
}

void FileSelectionCancelled(Widget box, XtPointer /*clientData*/, XtPointer /*callData*/) {
    XtDestroyWidget(XtParent(box));
}
