#include "setup/about_form.h"

#include <Xm/DialogS.h>
#include <Xm/Form.h>
#include <dlfcn.h>
#include <link.h>

#include <array>
#include <chrono>
#include <new>
#include <vector>

#include "installer/driver_process.h"
#include "motifutil/catalog_text.h"
#include "motifutil/component_version.h"
#include "motifutil/icons.h"
#include "motifutil/shells.h"
#include "motifutil/spacing.h"
#include "motifutil/widgets.h"
#include "motifutil/window_help.h"
#include "motifutil/window_keys.h"
#include "setup/logo_icon.h"
#include "setup/setup_texts.h"

namespace {

// Longer paths go on in the next line.
constexpr std::size_t kLineLength = 52;

// Where this code was loaded from.
std::string ownPath() {
    Dl_info info{};
    return dladdr(reinterpret_cast<void*>(&createAbtForm), &info) != 0 && info.dli_fname != nullptr ? info.dli_fname
                                                                                                    : "";
}

// The file of a library that can be asked for its version; empty for any other. Asked in this process.
std::string fileWithVersion(const std::string& library) {
    void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
        return {};
    }
    std::string path;
    link_map* map = nullptr;
    if (getVersion(handle) != nullptr && dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0) {
        path = map->l_name;
    }
    dlclose(handle);
    return path;
}

// Breaks a path behind the last slash that fits in a line.
std::string wrappedPath(std::string path) {
    std::string lines;
    while (path.size() > kLineLength) {
        const std::size_t slash = path.rfind('/', kLineLength);
        const std::size_t length = slash == std::string::npos || slash == 0 ? kLineLength : slash + 1;
        lines += path.substr(0, length) + "\n";
        path.erase(0, length);
    }
    return lines + path;
}

void closePressed(Widget /*widget*/, XtPointer form, XtPointer /*callData*/) {
    XtDestroyWidget(XtParent(static_cast<Widget>(form)));
}

void forget(Widget form, XtPointer /*clientData*/, XtPointer /*callData*/) {
    if (frmabout == form) {
        frmabout = nullptr;
    }
}

Widget createIcon(Widget form) {
    Pixmap icon = None;
    getVHIconIPixmap(&icon, const_cast<char**>(kLogoIcon));
    Widget label = createLabel(form, "LblIcon", std::string());
    if (icon != None) {
        XtVaSetValues(label, XmNlabelType, XmPIXMAP, nullptr);
    }
    setIcon(label, XmNlabelPixmap, icon);
    Attach(label).topForm(kWindowMargin).leftForm(kWindowMargin);
    return label;
}

Widget createText(Widget form, const char* name, const std::string& text) {
    Widget label = createLabel(form, name, text);
    XtVaSetValues(label, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
    return label;
}

// The maker beside the icon. Returns which of the two reaches lower: with large letters it is the text.
Widget createAddress(Widget form, Widget icon) {
    Widget first = createText(form, "LblAddress1", compAddr1);
    Widget second = createText(form, "LblAddress2", compAddr2);
    Attach(first).levelWith(icon, kRowGap / 2).rightOf(icon, kWindowGap).rightForm(kWindowMargin);
    Attach(second).below(first, kRowGap / 2).rightOf(icon, kWindowGap).rightForm(kWindowMargin);
    const int textHeight = kRowGap + preferredHeight(first) + preferredHeight(second);
    return textHeight > preferredHeight(icon) ? second : icon;
}

// The size in the unit's usual spelling: the text that others read has it in small letters.
std::string shownSize() {
    std::string size = fileSize;
    if (size.ends_with("kb")) {
        size.back() = 'B';
    }
    return size;
}

// What is known of the component, one row for each. Returns the last row's text.
Widget createRows(Widget form, Widget above) {
    struct Row {
        const char* name;
        SetupMessage::Number label;
        std::string text;
    };
    const std::array<Row, 5> rows{{{"File", SetupMessage::kAboutFile, wrappedPath(fileName)},
                                   {"Version", SetupMessage::kAboutVersion, FileVersion},
                                   {"Company", SetupMessage::kAboutCompany, CompanyName},
                                   {"Date", SetupMessage::kAboutDate, fileDate},
                                   {"Size", SetupMessage::kAboutSize, shownSize()}}};
    std::vector<Widget> labels;
    int gap = kWindowGap;
    for (const Row& row : rows) {
        Widget label = createText(form, (std::string("Lbl") + row.name).c_str(), setupText(row.label));
        Widget text = createText(form, (std::string("Txt") + row.name).c_str(), row.text);
        Attach(label).below(above, gap).leftForm(kWindowMargin);
        Attach(text).below(above, gap).rightOf(label, kWindowGap).rightForm(kWindowMargin);
        labels.push_back(label);
        above = text;
        gap = kRowGap / 2;
    }
    equalizeWidths(labels);
    return above;
}

}  // namespace

void describeForAbout(const std::string& path) {
    constexpr std::chrono::seconds kPatience(2);
    DriverProcess process([&path] { return fileWithVersion(path); });
    const std::optional<DriverProcess::End> end = process.waitForEnd(kPatience);
    std::string component = end ? end->answer.value_or("") : "";
    if (component.empty()) {
        component = ownPath();
    }
    setAboutInfo(reinterpret_cast<unsigned char*>(component.data()));
}

Widget createAbtForm(Widget parent) {
    if (frmabout != nullptr) {
        XtDestroyWidget(XtParent(frmabout));
    }
    const std::string file = fileName;
    const std::string title = setupText(SetupMessage::kAboutTitle, file.substr(file.rfind('/') + 1));
    ArgumentList arguments;
    arguments.set(XmNtitle, title.c_str())
        .set(XmNautoUnmanage, False)
        .set(XmNnoResize, True)
        .set(XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL);
    static char name[] = "FormAbout";
    frmabout = XmCreateFormDialog(parent, name, arguments.data(), arguments.size());
    if (frmabout == nullptr) {
        throw std::bad_alloc();
    }
    Widget form = frmabout;
    XtAddCallback(form, XmNdestroyCallback, forget, nullptr);
    prepareShell(XtParent(form), closePressed, form);
    serveKeys(XtParent(form));
    setHelpTopic(form, "setup");

    Widget icon = createIcon(form);
    Widget head = createAddress(form, icon);
    Widget upper = createSeparator(form, "SeparatorTop");
    Attach(upper).below(head, kWindowGap).leftForm(kWindowMargin).rightForm(kWindowMargin);
    Widget last = createRows(form, upper);
    Widget lower = createSeparator(form, "SeparatorBottom");
    Attach(lower).below(last, kWindowGap).leftForm().rightForm();
    Widget ok = createPushButton(form, "BtnOK", Message::kOk, closePressed, form);
    Attach(ok).below(lower, kWindowGap).rightForm(kWindowMargin).bottomForm(kWindowMargin);
    XtVaSetValues(form, XmNdefaultButton, ok, XmNcancelButton, ok, nullptr);
    return form;
}
