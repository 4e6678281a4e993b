#include "help/help_locator.h"

#include <unicode/ucnv.h>

#include <string>

#include "catalogs/message_numbers.h"
#include "help/web_help.h"
#include "kvini/profile.h"
#include "kvlib/library_text.h"
#include "kvlib/message_box.h"
#include "kvlib/out_of_memory.h"
#include "kvlib/text.h"

namespace {

constexpr const char* kScheme = "File:///";
constexpr std::size_t kRootUrlSize = 1044;
constexpr std::size_t kLongestDirectory = 1024;

const char* plain(const unsigned char* text) {
    return reinterpret_cast<const char*>(text);
}

// Whether ICU has a converter for the platform's text. A process without one could read no path that it is given.
bool canConvertPlatformText() {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_close(ucnv_open(nullptr, &status));
    return U_SUCCESS(status) != 0;
}

void reportMissingRoot() {
    char message[kLibraryTextSize];
    char caption[kLibraryTextSize];
    winGetString(message, LibraryMessage::kHelpRootMissing);
    winGetString(caption, LibraryMessage::kHelpCaption);
    guiMessageBox(nullptr, message, caption, 0);
}

}  // namespace

void kvDisplayHelp(const unsigned char* book, const unsigned char* topic) {
    unsigned char buffer[kRootUrlSize];
    unsigned char* rootUrl = buffer;
    if (kvFindHelpRoot(book, &rootUrl, kRootUrlSize) == 0) {
        WWHelp_Startup(plain(rootUrl));
        WWHelp_DisplayHelp("ODBC", plain(topic));
        WWHelp_Shutdown();
    }
}

void showAdministratorHelp(const char* topic) {
    kvDisplayHelp(reinterpret_cast<const unsigned char*>("Administrator"),
                  reinterpret_cast<const unsigned char*>(topic));
}

int kvFindHelpRoot(const unsigned char* book, unsigned char** rootUrl, std::size_t size) {
    return orMemoryError(1, [&] {
        if (rootUrl == nullptr || size == 0) {
            return 1;
        }
        const HeldIniCache driverFile(kvProfileInit("ODBCINST.INI"));
        if (!canConvertPlatformText()) {
            return 1;
        }
        char directory[kLongestDirectory];
        kvGetPrivateProfileString(plain(book), "HelpRootDirectory", "", directory, sizeof directory, driverFile.get());
        if (*directory == '\0') {
            reportMissingRoot();
            return 1;
        }
        const std::string url = std::string(kScheme) + directory;
        strCopy(reinterpret_cast<char*>(*rootUrl), size, url.c_str());
        return 0;
    });
}

int kvDisplayHelp2(unsigned char* directory, unsigned char* context, unsigned char* topic) {
    return orMemoryError(-1, [&] {
        const std::string url = std::string(kScheme) + plain(directory);
        WWHelp_Startup(url.c_str());
        WWHelp_DisplayHelp(plain(context), plain(topic));
        return WWHelp_Shutdown();
    });
}
