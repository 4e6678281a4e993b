// Tells what libraries say of themselves. Each is loaded in a process of its own: whatever the library does to a
// process, it does to that one. Which ones, and how it answers, tells components/inquiry_server.h. The three texts are
// "ConfigDSN" for a setup library and nothing for any other, the version, and the company; what the library prints
// becomes a complaint. Behind them stand the files that decide the answer with their states, and an empty text. For the
// administrator (kKeepOption) answers are kept; the commands of an installation leave nothing in anybody's home.
#include <dlfcn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "components/folders.h"
#include "components/inquiry_server.h"
#include "components/kept_answers.h"
#include "components/odbc_version.h"
#include "components/zero_ended.h"
#include "motifutil/component_functions.h"
#include "motifutil/component_inquiry.h"

namespace {

// What is longer is no name, and no version.
bool tell(int answer, const std::string& text) {
    constexpr std::size_t kMost = 1023;
    const std::string all(text.substr(0, kMost).c_str(), std::min(text.size(), kMost) + 1);
    return write(answer, all.data(), all.size()) == static_cast<ssize_t>(all.size());
}

// It must not outlive whoever waits for the answer, nor leave a core file in somebody's directory.
void beModest() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    constexpr rlimit kNothing{};
    setrlimit(RLIMIT_CORE, &kNothing);
}

void describe(const std::string& path, int answer) {
    beModest();
    const std::time_t askedAt = std::time(nullptr);
    void* library = dlopen(path.c_str(), RTLD_NOW);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    // At once: a library that ends the process when it is asked for its version may still have a dialog.
    bool told = tell(answer, dlsym(library, "ConfigDSN") != nullptr ? "ConfigDSN" : "");
    const std::optional<std::string> odbc = hasVersion(library) ? std::nullopt : odbcVersion(library);
    const char* company = getCompany(library);
    const char* version = odbc ? odbc->c_str() : getVersion(library);
    if (version == nullptr) {
        endWithoutVersion(library, path.c_str());
    }
    told = tell(answer, version) && tell(answer, company == nullptr ? "" : company) && told;
    // Last: only now all is loaded that the answer took.
    std::string files;
    for (const std::string& file : decidingFiles(askedAt)) {
        appendText(files, file);
    }
    appendText(files, "");
    told = write(answer, files.data(), files.size()) == static_cast<ssize_t>(files.size()) && told;
    // Nothing of the library runs any more.
    _exit(told ? 0 : 1);
}

}  // namespace

int main(int argc, char** argv) {
    beModest();
    std::setlocale(LC_ALL, "");
    const std::string folder = argc > 1 && std::string(argv[1]) == kKeepOption ? cacheFolder() : "";
    serveInquiries(describe, folder.empty() ? "" : folder + "/components");
}
