// The record of the browser that shows help.
#pragma once

#include <cstddef>

struct WWHelp_BrowserInfo {
    // Whether help URLs are wrapped into a script that reuses a loaded help frame.
    int smartUrl;
    // Whether the browser can be asked by window properties to open a URL.
    int remoteCapable;
    char browserPath[4096];
    // Whether the browser answered to "-remote" without complaint; for information only.
    int remoteProbePassed;
    // "pid<process>@<host>": what this process writes into the browser's lock.
    char processSignature[256];
};
