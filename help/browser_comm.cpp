#include "help/browser_comm.h"

#include <cstdlib>
#include <memory>

#include "help/browser_platform.h"
#include "help/browser_remote.h"
#include "help/url_routines.h"

namespace {

bool sgWWHelp_APIInitialized = false;

struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};

int sendUrl(WWHelp_BrowserInfo* info, bool isHelp, const char* url, std::size_t length) {
    if (WWHelp_Platform_CheckBrowserRunning(info) != 0) {
        return -1;
    }
    char* smart = nullptr;
    std::size_t smartLength = 0;
    if (isHelp && info->smartUrl != 0 && WWHelp_URL_BuildSmartURL(url, length, &smart, &smartLength) == 0) {
        const std::unique_ptr<char, FreeDeleter> owned(smart);
        return WWHelp_Platform_SendURL(info, smart, smartLength);
    }
    return WWHelp_Platform_SendURL(info, url, length);
}

int sendOrLaunch(WWHelp_BrowserInfo* info, bool isHelp, const char* url, std::size_t length) {
    if (!sgWWHelp_APIInitialized || info == nullptr || url == nullptr || length == 0) {
        return -1;
    }
    if (sendUrl(info, isHelp, url, length) == 0) {
        return 0;
    }
    return WWHelp_Platform_LaunchWithURL(info, url, length) == 0 ? 0 : -1;
}

}  // namespace

int WWHelp_Comm_Startup() {
    if (WWHelp_Platform_Startup() != 0) {
        return -1;
    }
    sgWWHelp_APIInitialized = true;
    return 0;
}

int WWHelp_Comm_Shutdown() {
    sgWWHelp_APIInitialized = false;
    return WWHelp_Platform_Shutdown();
}

int WWHelp_Comm_SetDefaultBrowserInfo(WWHelp_BrowserInfo* info) {
    return sgWWHelp_APIInitialized && info != nullptr ? WWHelp_Platform_SetDefaultBrowserInfo(info) : -1;
}

int WWHelp_Comm_NewBrowserInfo(WWHelp_BrowserInfo* info) {
    return WWHelp_Comm_ClearBrowserInfo(info);
}

int WWHelp_Comm_DeleteBrowserInfo(WWHelp_BrowserInfo* info) {
    return WWHelp_Comm_ClearBrowserInfo(info);
}

int WWHelp_Comm_ClearBrowserInfo(WWHelp_BrowserInfo* info) {
    if (!sgWWHelp_APIInitialized || info == nullptr) {
        return -1;
    }
    info->smartUrl = 0;
    info->remoteCapable = 0;
    info->browserPath[0] = '\0';
    info->remoteProbePassed = 0;
    return 0;
}

int WWHelp_Comm_DisplayURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length) {
    return sendOrLaunch(info, /*isHelp=*/false, url, length);
}

int WWHelp_Comm_DisplayHelpURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length) {
    return sendOrLaunch(info, /*isHelp=*/true, url, length);
}
