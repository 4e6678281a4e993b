// Tells what a library says of itself: `describe-component LIBRARY` loads it, asks, prints and ends. Whatever the
// library does to a process, it does to this one. The answer on standard output, each text with a zero byte behind it:
// "ConfigDSN" for a setup library and nothing for any other, the version, the company. Everything else, what the
// library prints included, goes to standard error.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>

#include "components/odbc_version.h"
#include "motifutil/component_version.h"

namespace {

// Keeps the answer out of the reach of the library. Returns the descriptor to write it to.
int takeOutput() {
    constexpr int kLikelyFree = 100;
    const int answer = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kLikelyFree);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return answer;
}

bool tell(int answer, const char* text) {
    const std::string_view all(text, std::string_view(text).size() + 1);
    return write(answer, all.data(), all.size()) == static_cast<ssize_t>(all.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("Usage: describe-component LIBRARY\n", stderr);
        return 2;
    }
    // It must not outlive whoever waits for the answer, nor leave a core file in somebody's directory.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    constexpr rlimit kNothing{};
    setrlimit(RLIMIT_CORE, &kNothing);
    std::setlocale(LC_ALL, "");

    const int answer = takeOutput();
    std::string path = argv[1];
    // Without a slash the loader would search its own directories.
    void* library = dlopen(path.find('/') == std::string::npos ? ("./" + path).c_str() : path.c_str(), RTLD_NOW);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    // At once: a library that ends the process when it is asked for its version may still have a dialog.
    bool told = tell(answer, dlsym(library, "ConfigDSN") != nullptr ? "ConfigDSN" : "");
    std::array<char, kComponentTextSize> company{};
    std::array<char, kComponentTextSize> version{};
    const std::optional<std::string> odbc = hasVersion(library) ? std::nullopt : odbcVersion(library);
    if (odbc) {
        const char* name = getCompany(library);
        told = tell(answer, odbc->c_str()) && tell(answer, name == nullptr ? "" : name) && told;
    } else {
        getCompNameAndVersion(path.data(), company.data(), version.data(), 0);
        told = tell(answer, version.data()) && tell(answer, company.data()) && told;
    }
    // Nothing of the library runs any more.
    _exit(told ? 0 : 1);
}
