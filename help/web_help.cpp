#include "help/web_help.h"

#include <string>

#include "help/browser_comm.h"
#include "kvlib/out_of_memory.h"

namespace {

// The tab of the navigation pane that is in front.
enum Tab : int { kNoTab, kContents, kIndex, kSearch, kFavorites };

std::string sgpWWHelp_Base;
std::string sgpWWHelp_BaseURL;
WWHelp_BrowserInfo sgWWHelp_DefaultBrowserInfo{};

bool isGiven(const char* text) {
    return text != nullptr && *text != '\0';
}

std::string helpUrl(const char* context, const char* topic, int single, int tab) {
    constexpr const char* kTabNames[] = {"contents", "index", "search", "favorites"};
    std::string url = sgpWWHelp_BaseURL;
    char separator = '?';
    const auto append = [&url, &separator](const std::string& item) {
        url += separator + item;
        separator = '&';
    };
    if (isGiven(context) && isGiven(topic)) {
        append(std::string("context=") + context);
        append(std::string("topic=") + topic);
    }
    if (single != 0) {
        append("single=true");
    }
    if (tab >= kContents && tab <= kFavorites) {
        append(std::string("tab=") + kTabNames[tab - kContents]);
    }
    return url;
}

int displayTopicWith(const char* context, const char* topic, int tab) {
    return isGiven(context) && isGiven(topic) ? private_WWHelp_DisplayHelp(context, topic, 0, tab) : -1;
}

void forget() {
    sgpWWHelp_Base.clear();
    sgpWWHelp_BaseURL.clear();
}

}  // namespace

int WWHelp_Startup(const char* root) {
    if (!sgpWWHelp_Base.empty() || !isGiven(root)) {
        return -1;
    }
    const int result = orFailure(-1, [root] {
        sgpWWHelp_Base = root;
        sgpWWHelp_BaseURL = sgpWWHelp_Base + "/wwhelp/wwhimpl/api.htm";
        if (WWHelp_Comm_Startup() != 0) {
            return -1;
        }
        if (WWHelp_Comm_NewBrowserInfo(&sgWWHelp_DefaultBrowserInfo) != 0) {
            WWHelp_Comm_Shutdown();
            return -1;
        }
        return 0;
    });
    if (result != 0) {
        forget();
    }
    return result;
}

int WWHelp_Shutdown() {
    if (sgpWWHelp_Base.empty()) {
        return -1;
    }
    forget();
    const int cleared = WWHelp_Comm_DeleteBrowserInfo(&sgWWHelp_DefaultBrowserInfo);
    const int ended = WWHelp_Comm_Shutdown();
    return cleared == 0 && ended == 0 ? 0 : -1;
}

int WWHelp_DisplayHelp(const char* context, const char* topic) {
    return isGiven(context) && isGiven(topic) ? private_WWHelp_DisplayHelp(context, topic, 1, kNoTab) : 0;
}

int WWHelp_DisplayHelpWithNavigation(const char* context, const char* topic) {
    return displayTopicWith(context, topic, kNoTab);
}

int WWHelp_DisplayHelpWithContents(const char* context, const char* topic) {
    return displayTopicWith(context, topic, kContents);
}

int WWHelp_DisplayHelpWithIndex(const char* context, const char* topic) {
    return displayTopicWith(context, topic, kIndex);
}

int WWHelp_DisplayHelpWithSearch(const char* context, const char* topic) {
    return displayTopicWith(context, topic, kSearch);
}

int WWHelp_DisplayHelpWithFavorites(const char* context, const char* topic) {
    return displayTopicWith(context, topic, kFavorites);
}

int WWHelp_DisplayHelpNavigation() {
    return private_WWHelp_DisplayHelp(nullptr, nullptr, 0, kNoTab);
}

int WWHelp_DisplayHelpContents() {
    return private_WWHelp_DisplayHelp(nullptr, nullptr, 0, kContents);
}

int WWHelp_DisplayHelpIndex() {
    return private_WWHelp_DisplayHelp(nullptr, nullptr, 0, kIndex);
}

int WWHelp_DisplayHelpSearch() {
    return private_WWHelp_DisplayHelp(nullptr, nullptr, 0, kSearch);
}

int WWHelp_DisplayHelpFavorites() {
    return private_WWHelp_DisplayHelp(nullptr, nullptr, 0, kFavorites);
}

int private_WWHelp_DisplayHelp(const char* context, const char* topic, int single, int tab) {
    return orFailure(-1, [&] {
        const std::string url = helpUrl(context, topic, single, tab);
        if (WWHelp_Comm_SetDefaultBrowserInfo(&sgWWHelp_DefaultBrowserInfo) != 0) {
            return -1;
        }
        return WWHelp_Comm_DisplayHelpURL(&sgWWHelp_DefaultBrowserInfo, url.data(), url.size());
    });
}
