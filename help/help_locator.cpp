#include "help/help_locator.h"

#include <string>

#include "catalogs/message_numbers.h"
#include "help/web_help.h"
#include "kvini/kv_ini.h"
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

// What the product's driver file says; "" when it says nothing or can't be read.
std::string driverFileValue(const char* section, const char* key) {
    KvIni file;
    file.open("ODBCINST.INI");
    char value[kLongestDirectory];
    file.getEntry(section, key, value, sizeof value, "");
    return value;
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

int kvFindHelpRoot(const unsigned char* book, unsigned char** rootUrl, std::size_t size) {
    return orMemoryError(1, [&] {
        if (rootUrl == nullptr || size == 0) {
            return 1;
        }
        const std::string directory = driverFileValue(plain(book), "HelpRootDirectory");
        if (directory.empty()) {
            reportMissingRoot();
            return 1;
        }
        const std::string url = kScheme + directory;
        strCopy(reinterpret_cast<char*>(*rootUrl), size, url.c_str());
        return 0;
    });
}

int kvDisplayHelp2(const unsigned char* directory, const unsigned char* context, const unsigned char* topic) {
    return orMemoryError(-1, [&] {
        const std::string url = std::string(kScheme) + plain(directory);
        WWHelp_Startup(url.c_str());
        WWHelp_DisplayHelp(plain(context), plain(topic));
        return WWHelp_Shutdown();
    });
}
