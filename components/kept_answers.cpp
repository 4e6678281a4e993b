#include "components/kept_answers.h"

#include <dlfcn.h>
#include <link.h>
#include <poll.h>
#include <sys/auxv.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "components/folders.h"
#include "components/small_files.h"
#include "components/zero_ended.h"
#include "motifutil/file_state.h"

namespace {

namespace fs = std::filesystem;

// File systems tell times in steps of up to two seconds: what is newer may change once more and look the same.
constexpr std::time_t kTimeStep = 2;

std::string textOf(const FileState& state) {
    std::ostringstream text;
    text << state.device << ' ' << state.inode << ' ' << state.size << ' ' << state.modified << ' '
         << state.modifiedNanoseconds << ' ' << state.changed << ' ' << state.changedNanoseconds;
    return text.str();
}

// What decides all answers besides files: this program, and the variables that say what is loaded and in which language
// it speaks.
std::string surroundings() {
    std::set<std::string> settings;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view setting(*variable);
        if (setting.starts_with("LD_") || setting.starts_with("LC_") || setting.starts_with("LANG") ||
            setting.starts_with("KVLIB=")) {
            settings.emplace(setting);
        }
    }
    std::string text = textOf(fileState("/proc/self/exe"));
    for (const std::string& setting : settings) {
        text.append("\n").append(setting);
    }
    return text;
}

int addLoaded(dl_phdr_info* object, std::size_t /*size*/, void* files) {
    // The program itself has no name, and the kernel's part of it no file.
    if (*object->dlpi_name != '\0' && object->dlpi_addr != getauxval(AT_SYSINFO_EHDR)) {
        static_cast<std::set<std::string>*>(files)->insert(object->dlpi_name);
    }
    return 0;
}

// The folders where the loader looks for what this loaded file needs (dlinfo(3)).
std::set<std::string> searchedFolders(const std::string& path) {
    void* object = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    Dl_serinfo size{};
    if (object == nullptr || dlinfo(object, RTLD_DI_SERINFOSIZE, &size) != 0) {
        return {};
    }
    std::vector<char> room(size.dls_size);
    auto* found = reinterpret_cast<Dl_serinfo*>(room.data());
    *found = size;
    std::set<std::string> folders;
    if (dlinfo(object, RTLD_DI_SERINFO, found) == 0) {
        for (unsigned int i = 0; i < found->dls_cnt; ++i) {
            folders.emplace(found->dls_serpath[i].dls_name);
        }
    }
    return folders;
}

}  // namespace

std::vector<std::string> decidingFiles(std::time_t askedAt) {
    std::set<std::string> loaded;
    dl_iterate_phdr(addLoaded, &loaded);
    std::set<std::string> folders;
    for (const std::string& object : loaded) {
        folders.merge(searchedFolders(object));
    }
    std::set<std::string> files{"/etc/ld.so.cache", "/etc/ld.so.preload"};
    for (const std::string& folder : folders) {
        // For processors that can more (ld.so(8)).
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(fs::path(folder) / "glibc-hwcaps", ignored)) {
            files.insert(entry.path());
        }
    }
    files.merge(folders);
    files.merge(loaded);
    std::istringstream list(environmentOr("KVLIB", ""));
    for (std::string folder; std::getline(list, folder, ':');) {
        files.insert(folder);
    }
    files.erase("");
    std::vector<std::string> states;
    for (const std::string& file : files) {
        const FileState state = fileState(file);
        if (!file.starts_with('/') || state.changed + kTimeStep >= askedAt) {
            return {};
        }
        states.insert(states.end(), {file, textOf(state)});
    }
    return states;
}

KeptAnswers::KeptAnswers(std::string path) : path_(std::move(path)) {
    if (!path_.empty() && !read()) {
        states_.clear();
        answers_.clear();
    }
}

// False when it is not what save() wrote, or a file has changed since.
bool KeptAnswers::read() {
    const std::vector<std::string> texts = splitTexts(readFile(path_));
    auto text = texts.begin();
    if (text == texts.end() || *text++ != surroundings()) {
        return false;
    }
    for (; texts.end() - text >= 2 && !text->empty(); text += 2) {
        states_[text[0]] = text[1];
    }
    constexpr std::ptrdiff_t kGroup = 1 + kAnswerTexts;
    if (text == texts.end() || !(text++)->empty() || (texts.end() - text) % kGroup != 0) {
        return false;
    }
    for (; text != texts.end(); text += kGroup) {
        std::string& answer = answers_[*text];
        std::for_each(text + 1, text + kGroup, [&answer](const std::string& part) { appendText(answer, part); });
    }
    return statesHold();
}

// Whether all files are as they were. In a process of its own, since one may be on a file system that does not answer.
bool KeptAnswers::statesHold() const {
    constexpr int kPatience = 500;
    const pid_t process = fork();
    if (process == 0) {
        const auto holds = [](const auto& file) { return textOf(fileState(file.first)) == file.second; };
        _exit(std::all_of(states_.begin(), states_.end(), holds) ? 0 : 1);
    }
    pollfd end{process < 0 ? -1 : static_cast<int>(syscall(SYS_pidfd_open, process, 0)), POLLIN, 0};
    siginfo_t result{};
    const bool isKnown = end.fd >= 0 && poll(&end, 1, kPatience) == 1 &&
                         waitid(P_PID, static_cast<id_t>(process), &result, WEXITED) == 0;
    if (process > 0 && !isKnown) {
        kill(process, SIGKILL);
    }
    close(end.fd);
    return isKnown && result.si_code == CLD_EXITED && result.si_status == 0;
}

const std::string* KeptAnswers::find(const std::string& library) const {
    const auto found = answers_.find(library);
    return found == answers_.end() ? nullptr : &found->second;
}

void KeptAnswers::keep(const std::string& library, const std::string& texts, const std::vector<std::string>& files) {
    std::map<std::string, std::string> states;
    for (std::size_t i = 0; i + 1 < files.size(); i += 2) {
        const auto known = states_.find(files[i]);
        if (known != states_.end() && known->second != files[i + 1]) {
            return;
        }
        states[files[i]] = files[i + 1];
    }
    if (library.starts_with('/') && !states.empty()) {
        states_.merge(states);
        answers_[library] = texts;
        hasNew_ = true;
    }
}

void KeptAnswers::save() const {
    if (!path_.empty() && hasNew_ && fork() == 0) {
        writeFile(path_, text());
        _exit(0);
    }
}

std::string KeptAnswers::text() const {
    std::string all;
    appendText(all, surroundings());
    for (const auto& [file, state] : states_) {
        appendText(all, file);
        appendText(all, state);
    }
    appendText(all, "");
    for (const auto& [library, texts] : answers_) {
        appendText(all, library);
        all += texts;
    }
    return all;
}
