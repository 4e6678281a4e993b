#include "help/help_locator.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "catalogs/message_numbers.h"
#include "help/web_help.h"
#include "kvini/profile.h"
#include "kvlib/error_report.h"
#include "kvlib/library_text.h"
#include "kvlib/message_box.h"
#include "kvlib/text.h"

namespace {

constexpr const char* kScheme = "File:///";
constexpr std::size_t kRootUrlSize = 1044;

struct FreeDeleter {
    void operator()(unsigned char* text) const { std::free(text); }
};

const char* plain(const unsigned char* text) {
    return reinterpret_cast<const char*>(text);
}

// Takes the product's driver file for the length of one read.
class DriverFile {
public:
    DriverFile() : cache_(kvPrivateProfileInit("ODBCINST.INI")) {}
    ~DriverFile() {
        if (cache_ != nullptr) {
            kvPrivateProfileTerm(cache_);
        }
    }
    DriverFile(const DriverFile&) = delete;
    DriverFile& operator=(const DriverFile&) = delete;

    std::string value(const char* section, const char* key) const {
        std::array<char, 1024> text{};
        if (cache_ != nullptr) {
            kvGetPrivateProfileString(section, key, "", text.data(), text.size(), cache_);
        }
        return text.data();
    }

private:
    KvIniFileCache* cache_;
};

void reportMissingRoot() {
    char message[kLibraryTextSize];
    char caption[kLibraryTextSize];
    winGetString(message, LibraryMessage::kHelpRootMissing);
    winGetString(caption, LibraryMessage::kHelpCaption);
    guiMessageBox(nullptr, message, caption, 0);
}

}  // namespace

void kvDisplayHelp(const unsigned char* book, const unsigned char* topic) {
    const std::unique_ptr<unsigned char, FreeDeleter> owned(static_cast<unsigned char*>(std::malloc(kRootUrlSize)));
    unsigned char* rootUrl = owned.get();
    if (rootUrl == nullptr) {
        ramAddMemoryError();
        return;
    }
    if (kvFindHelpRoot(book, &rootUrl, kRootUrlSize) == 0) {
        WWHelp_Startup(plain(rootUrl));
        WWHelp_DisplayHelp("ODBC", plain(topic));
        WWHelp_Shutdown();
    }
}

int kvFindHelpRoot(const unsigned char* book, unsigned char** rootUrl, std::size_t size) try {
    if (rootUrl == nullptr || size == 0) {
        return 1;
    }
    const std::string directory = DriverFile().value(plain(book), "HelpRootDirectory");
    if (directory.empty()) {
        reportMissingRoot();
        return 1;
    }
    const std::string url = kScheme + directory;
    strCopy(reinterpret_cast<char*>(*rootUrl), size, url.c_str());
    return 0;
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return 1;
}

int kvDisplayHelp2(const unsigned char* directory, const unsigned char* context, const unsigned char* topic) try {
    const std::string url = std::string(kScheme) + plain(directory);
    WWHelp_Startup(url.c_str());
    WWHelp_DisplayHelp(plain(context), plain(topic));
    return WWHelp_Shutdown();
} catch (const std::bad_alloc&) {
    ramAddMemoryError();
    return -1;
}
