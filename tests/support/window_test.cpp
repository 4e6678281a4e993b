#include "tests/support/window_test.h"

#include <Xm/Label.h>
#include <Xm/LabelG.h>
#include <Xm/PushB.h>
#include <Xm/ScrolledW.h>
#include <Xm/Text.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>

#include "admin/dialogs.h"
#include "admin/look.h"
#include "admin/palette.h"
#include "installer/configuration.h"
#include "kvini/install_dir.h"
#include "kvlib/catalog.h"
#include "motifutil/characters.h"
#include "motifutil/fewer_waits.h"
#include "motifutil/mnemonics.h"

namespace {

// A test that hangs in spite of the limits of all waits ends the process.
constexpr unsigned int kTestSeconds = 60;
constexpr const char* kTitle = "Varnholt ODBC Administrator";

char ProgramName[] = "odbcadmin";
char* Arguments[] = {ProgramName, nullptr};

// One X server and one connection serve all tests; nothing of it is there while tests are only listed.
class WindowEnvironment : public testing::Environment {
public:
    void SetUp() override {
        server_ = std::make_unique<XServer>();
        person = std::make_unique<XPerson>();
        std::setlocale(LC_ALL, "C.UTF-8");
        XtToolkitInitialize();
        app_context = XtCreateApplicationContext();
        setFallbackLook(app_context);
        int count = 1;
        display = XtOpenDisplay(app_context, nullptr, ProgramName, nullptr, nullptr, 0, &count, Arguments);
        if (display == nullptr) {
            throw std::runtime_error("no display");
        }
        setPalette(display);
        internAtoms(display);
    }
    void TearDown() override {
        XtDestroyApplicationContext(app_context);
        person.reset();
        server_.reset();
    }

    static inline std::unique_ptr<XPerson> person;

private:
    // The catalogs lie below the build folder as they do below an install directory.
    ScopedEnvironment environment_{
        {"VH_INSTALLDIR", VH_TEST_INSTALL_DIR}, {"LC_ALL", {}}, {"LC_MESSAGES", {}}, {"KVLIB", {}}};
    std::unique_ptr<XServer> server_;
};

[[maybe_unused]] const auto* const Registered = testing::AddGlobalTestEnvironment(new WindowEnvironment);

}  // namespace

WindowTest::WindowTest() {
    alarm(kTestSeconds);
    files.write(OdbcFiles::kDrivers, "[Recorder]\nDriver=/driver.so\nSetup=" VH_TEST_SETUP "\n");
    CurrentSelectedTab = 'U';
    bosSetInstallDir(nullptr);
    Rfile = OpenStrings(nullptr, "odbc.m");
    installer::useUserConfiguration();
}

WindowTest::~WindowTest() {
    freeGlobals();
    if (ShODBCAdmin != nullptr) {
        XtDestroyWidget(ShODBCAdmin);
        ShODBCAdmin = nullptr;
    }
    EXPECT_TRUE(waitFor([] { return person().windows(kTitle, false).empty(); }));
    alarm(0);
}

void WindowTest::open() {
    create_shODBCAdmin(display, ProgramName, 1, Arguments);
    create_FileDsnWizard();
    XtRealizeWidget(ShODBCAdmin);
    showWaitingReport();
    ASSERT_TRUE(waitFor([] { return isVisible(ShODBCAdmin); }));
    settle();
}

void WindowTest::openWith(const std::string& dataSources) {
    files.write(OdbcFiles::kUser, dataSources);
    open();
}

XPerson& WindowTest::person() {
    return *WindowEnvironment::person;
}

bool WindowTest::waitFor(const std::function<bool()>& condition) {
    return waitUntil([&condition] {
        while (XtAppPending(app_context) != 0) {
            XtAppProcessEvent(app_context, XtIMAll);
        }
        XFlush(display);
        return condition();
    });
}

void WindowTest::settle() {
    // Some answers take the way through the window manager.
    auto quietSince = std::chrono::steady_clock::now();
    waitUntil([&quietSince] {
        XSync(display, False);
        while (XtAppPending(app_context) != 0) {
            XtAppProcessEvent(app_context, XtIMAll);
            quietSince = std::chrono::steady_clock::now();
        }
        return std::chrono::steady_clock::now() - quietSince > std::chrono::milliseconds(60);
    });
}

Widget WindowTest::child(Widget top, const std::string& path) {
    Widget found = XtNameToWidget(top, path.c_str());
    EXPECT_NE(found, nullptr) << path;
    return found;
}

bool WindowTest::isVisible(Widget widget) {
    return XtIsRealized(widget) && person().isVisible(XtWindow(widget));
}

Place WindowTest::placeOf(Widget widget) {
    Position at[2];
    Dimension size[2];
    XtVaGetValues(widget, XmNx, &at[0], XmNy, &at[1], XmNwidth, &size[0], XmNheight, &size[1], nullptr);
    Place place{XtWindowOfObject(widget), 0, 0, size[0], size[1]};
    Window ignored = 0;
    const bool isGadget = !XtIsWidget(widget);
    XTranslateCoordinates(display, place.window, DefaultRootWindow(display), isGadget ? at[0] : 0, isGadget ? at[1] : 0,
                          &place.x, &place.y, &ignored);
    return place;
}

std::string WindowTest::textOf(Widget widget) {
    if (XmIsLabel(widget) || XmIsLabelGadget(widget)) {
        return stringOf(widget, XmNlabelString);
    }
    return XtTextPtr(XmTextGetString(widget)).get();
}

std::string WindowTest::stringOf(Widget widget, const char* resource) {
    XmString text = nullptr;
    XtVaGetValues(widget, resource, &text, nullptr);
    return plainText(XmStringPtr(text).get());
}

bool WindowTest::isUp(Widget box) {
    return box != nullptr && XtIsManaged(box) && isVisible(XtParent(box)) && person().hasFocus(XtWindow(XtParent(box)));
}

bool WindowTest::waitUntilUp(const Widget& box) {
    // For a moment the window manager may take the keyboard away again.
    return waitUntil([&box] {
        const bool wasUp = isUp(box);
        settle();
        return wasUp && isUp(box);
    });
}

void WindowTest::clickFor(Widget button, const Widget& box) {
    click(button);
    EXPECT_TRUE(waitUntilUp(box));
}

void WindowTest::click(Widget widget) {
    person().click(placeOf(widget));
    settle();
}

void WindowTest::clickRow(Widget list, int row, int times) {
    const Place place = placeOf(list);
    Position at[2];
    Dimension size[2];
    ASSERT_TRUE(XmListPosToBounds(list, row, &at[0], &at[1], &size[0], &size[1])) << "no row " << row;
    person().click(place.x + at[0] + 8, place.y + at[1] + size[1] / 2, times);
    settle();
}

void WindowTest::waitForKeyboard() {
    if (dialog != nullptr && XtIsManaged(dialog)) {
        EXPECT_TRUE(waitUntilUp(dialog));
    }
}

void WindowTest::key(KeySym symbol, KeySym modifier) {
    waitForKeyboard();
    person().key(symbol, modifier);
    settle();
}

void WindowTest::type(std::string_view text) {
    waitForKeyboard();
    person().type(text);
    settle();
}

std::vector<std::string> WindowTest::rows(Widget list) {
    int count = 0;
    XtVaGetValues(list, XmNitemCount, &count, nullptr);
    std::vector<std::string> texts;
    for (int row = 1; row <= count; ++row) {
        texts.push_back(rowText(list, row));
    }
    return texts;
}

void WindowTest::expectLetters(Widget window) {
    std::wstring taken;
    std::wstring without;
    std::set<Widget> served;
    const std::vector<Widget> all = managedBelow(window);
    for (Widget widget : all) {
        Widget target = mnemonicTarget(widget);
        if (target == nullptr || XmIsTraversable(target) == 0) {
            continue;
        }
        served.insert(target);
        const wchar_t letter = mnemonicOf(widget);
        const std::wstring label = lowerCase(textOf(widget));
        EXPECT_EQ(taken.find(letter), std::wstring::npos) << textOf(widget) << " shares its letter";
        EXPECT_TRUE(letter == 0 || label.find(letter) != std::wstring::npos) << textOf(widget);
        (letter == 0 ? without : taken) += letter == 0 ? label : std::wstring(1, letter);
    }
    std::erase_if(without, [](wchar_t letter) { return !canBeMnemonic(letter); });
    EXPECT_EQ(without.find_first_not_of(taken), std::wstring::npos) << "a letter is free";
    for (Widget widget : all) {
        const bool acts =
            XmIsPushButton(widget) || XmIsToggleButton(widget) || XmIsTextField(widget) || XmIsList(widget);
        EXPECT_TRUE(!acts || XmIsTraversable(widget) == 0 || served.contains(widget) ||
                    XtParent(widget) == FSelect)  // its filter shows no label
            << XtName(widget);
    }
}

void WindowTest::expectWhole(Widget window) {
    for (Widget widget : managedBelow(window)) {
        const bool isLabel = XmIsLabel(widget) != 0 || XmIsLabelGadget(widget) != 0;
        if (isLabel && isVisible(window)) {
            Dimension margin = 0;
            Dimension above = 0;
            XtVaGetValues(widget, XmNmarginWidth, &margin, XmNmarginHeight, &above, nullptr);
            const Place place = placeOf(widget);
            const Place around = placeOf(XtParent(widget));
            // A screen of the wizard that is not in sight has next to no width; headers move with their columns.
            const bool isIn = place.x > around.x + around.width || XmIsScrolledWindow(XtParent(XtParent(widget))) ||
                              place.x + place.width <= around.x + around.width;
            EXPECT_TRUE(place.width >= preferredWidth(widget) - 2 * margin &&
                        place.height >= preferredHeight(widget) - 2 * above && isIn)
                << XtName(widget) << ": " << textOf(widget);
        }
        Position x = 0;
        Position y = 0;
        EXPECT_TRUE(XmIsText(widget) == 0 || XmTextGetEditable(widget) != 0 ||
                    XmTextPosToXY(widget, XmTextGetLastPosition(widget), &x, &y) != 0)
            << XtName(widget) << " hides its end";
    }
}

std::string WindowTest::dialogText() {
    return waitUntilUp(dialog) ? stringOf(dialog, XmNmessageString) : "(no dialog)";
}

std::string WindowTest::answer(const char* button) {
    std::string text = dialogText();
    EXPECT_TRUE(isUp(dialog));
    if (isUp(dialog)) {
        const Window window = XtWindow(XtParent(dialog));
        click(child(dialog, button));
        EXPECT_TRUE(waitFor([window] { return !person().isVisible(window); }));
        settle();
    }
    return text;
}

void WindowTest::expectReport(Message::Number text) {
    const std::string shown = answer("OK");
    EXPECT_TRUE(shown.starts_with(catalogText(text))) << shown;
}

std::string WindowTest::calls() const {
    const std::string text = files.read("record");
    files.write("record", "");
    return text == "(missing)" ? "" : text;
}

std::string WindowTest::call(int request, const std::string& driver, const std::string& attributes,
                             const std::string& path) {
    std::ostringstream window;
    window << ' ' << static_cast<void*>(ShODBCAdmin) << ' ';
    return std::to_string(request) + window.str() + driver + (path.empty() ? "" : " ") + path + "\n" + attributes +
           "\n";
}
