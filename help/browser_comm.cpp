#include "help/browser_comm.h"

#include <cstdlib>
#include <memory>

#include "help/browser_platform.h"
#include "help/browser_remote.h"
#include "help/url_routines.h"
#include "kvlib/text.h"

namespace {

bool sgWWHelp_APIInitialized = false;

struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};

// The text that a running browser is asked to show.
int textToSend(const WWHelp_BrowserInfo* info, int isHelp, const char* url, std::size_t length, char** out,
               std::size_t* outLength) {
    if (isHelp != 0 && info->smartUrl != 0 && WWHelp_URL_BuildSmartURL(url, length, out, outLength) == 0) {
        return 0;
    }
    return private_WWHelp_Comm_CopyURL(url, length, out, outLength);
}

int sendUrl(WWHelp_BrowserInfo* info, int isHelp, const char* url, std::size_t length) {
    char* text = nullptr;
    std::size_t textLength = 0;
    if (WWHelp_Platform_CheckBrowserRunning(info) != 0 ||
        textToSend(info, isHelp, url, length, &text, &textLength) != 0) {
        return -1;
    }
    const std::unique_ptr<char, FreeDeleter> owned(text);
    return WWHelp_Platform_SendURL(info, text, textLength);
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
    return private_WWHelp_Comm_SendURLOrLaunchWithURL(info, 0, url, length);
}

int WWHelp_Comm_DisplayHelpURL(WWHelp_BrowserInfo* info, const char* url, std::size_t length) {
    return private_WWHelp_Comm_SendURLOrLaunchWithURL(info, 1, url, length);
}

int private_WWHelp_Comm_SendURLOrLaunchWithURL(WWHelp_BrowserInfo* info, int isHelp, const char* url,
                                               std::size_t length) {
    if (!sgWWHelp_APIInitialized || info == nullptr || url == nullptr || length == 0) {
        return -1;
    }
    if (sendUrl(info, isHelp, url, length) == 0) {
        return 0;
    }
    return WWHelp_Platform_LaunchWithURL(info, url, length) == 0 ? 0 : -1;
}

int private_WWHelp_Comm_CopyURL(const char* url, std::size_t length, char** out, std::size_t* outLength) {
    if (length == 0) {
        return -1;
    }
    auto* copy = static_cast<char*>(std::malloc(length + 1));
    if (copy == nullptr) {
        return -1;
    }
    strCopy(copy, url, length);
    *out = copy;
    *outLength = length;
    return 0;
}
