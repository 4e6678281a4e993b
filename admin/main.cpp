#include <Xm/Display.h>
#include <Xm/Xm.h>
#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "admin/desktop_hints.h"
#include "admin/dialogs.h"
#include "admin/file_dsn_wizard.h"
#include "admin/globals.h"
#include "admin/look.h"
#include "admin/main_window.h"
#include "admin/palette.h"
#include "bos/host.h"
#include "components/component.h"
#include "installer/configuration.h"
#include "kvini/install_dir.h"
#include "kvlib/catalog.h"
#include "motifutil/catalog_text.h"
#include "motifutil/component_inquiry.h"
#include "motifutil/fewer_waits.h"
#include "motifutil/shells.h"

namespace {

// Says that no texts were found. Its own text is built in, since it reports that there is no catalog; the program ends
// when it is acknowledged.
void showMissingCatalog() {
    char message[] =
        "Unable to find the ODBC Administrator Message Files.  Please verify the InstallDir value in the files\n"
        "pointed to by the ODBCINI and ODBCINSTINI environment variables.";
    char ok[] = "OK";
    char noCancel[] = "";
    char title[] = "Varnholt ODBC Administrator";
    Mdialog = createMessageDialogAdmin(kErrorDialog, message, ok, noCancel, title);
    if (Mdialog != nullptr) {
        XtAddCallback(Mdialog, XmNokCallback, endProgram, nullptr);
        XtManageChild(Mdialog);
    }
}

// How a session starts this program again: by the launcher of its tree, where it has one.
std::vector<std::string> restartCommand(int argc, char** argv) {
    std::vector<std::string> command(argv, argv + argc);
    const std::string launcher = std::filesystem::path(programDirectory()).parent_path() / "bin/odbcadmin";
    if (access(launcher.c_str(), X_OK) == 0) {
        command.front() = launcher;
    }
    return command;
}

// Answers --help and --version, wherever they stand, on the console. All else is the toolkit's.
bool isAnswered(int argc, char** argv) {
    const auto isGiven = [&](const char* option) {
        return std::any_of(argv + 1, argv + argc,
                           [option](const char* argument) { return std::strcmp(argument, option) == 0; });
    };
    if (isGiven("--help")) {
        bosSetInstallDir(nullptr);
        Rfile = OpenStrings(nullptr, "odbc.m");
        const bool hasTexts = Rfile != invalidCatalog();
        std::puts(hasTexts ? catalogText(Message::kUsage).c_str() : "Usage: odbcadmin [X OPTION...]");
        return true;
    }
    if (isGiven("--version")) {
        std::printf("odbcadmin %s\n", kProductVersion);
        return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (isAnswered(argc, argv)) {
        return std::fflush(nullptr) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    const std::vector<std::string> restart = restartCommand(argc, argv);
    XtToolkitInitialize();
    app_context = XtCreateApplicationContext();
    setFallbackLook(app_context);
    display = XtOpenDisplay(app_context, nullptr, argv[0], nullptr, nullptr, 0, &argc, argv);
    if (display == nullptr) {
        std::puts("Unable to open display");
        return -1;
    }
    setPalette(display);
    internAtoms(display);
    {
        const KeyboardAtOnce keyboard(display);
        XmGetXmDisplay(display);
    }
    const unsigned int noInstallDirectory = bosSetInstallDir(nullptr);
    Rfile = OpenStrings(nullptr, "odbc.m");
    const bool textsMissing = noInstallDirectory == 1 || Rfile == invalidCatalog();
    // Only now: the catalog is chosen by the environment while the process is still in the "C" locale.
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) {
        // The toolkit draws all texts as UTF-8, but takes their bytes for the letters of the locale when it measures
        // them: of each line it would leave out the end, or every letter beyond ASCII.
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    // Else XMODIFIERS, which names the person's input method, is not read.
    XSetLocaleModifiers("");
    installer::keepMemoryBetweenReads();
    installer::useUserConfiguration();
    keepAnswers();

    create_shODBCAdmin(display, argv[0], argc, argv);
    if (ShODBCAdmin == nullptr) {
        std::puts("Not enough memory to open the window");
        return -1;
    }
    create_FileDsnWizard();
    XtRealizeWidget(ShODBCAdmin);
    publishTitle(ShODBCAdmin);
    publishIcon(ShODBCAdmin);
    publishRestartCommand(ShODBCAdmin, restart);
    showWaitingReport();
    if (textsMissing) {
        showMissingCatalog();
    }
    XtAppMainLoop(app_context);
    return EXIT_SUCCESS;
}
