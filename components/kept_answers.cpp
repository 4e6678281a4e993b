#include "components/kept_answers.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "components/folders.h"
#include "components/small_files.h"
#include "components/zero_ended.h"
#include "motifutil/file_state.h"

namespace {

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
    std::string text = textOf(fileState("/proc/self/exe"));
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view setting(*variable);
        if (setting.starts_with("LD_") || setting.starts_with("LC_") || setting.starts_with("LANG") ||
            setting.starts_with("KVLIB=")) {
            text.append("\n").append(setting);
        }
    }
    return text;
}

int addLoaded(dl_phdr_info* object, std::size_t /*size*/, void* files) {
    if (object->dlpi_name != nullptr && *object->dlpi_name == '/') {
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

std::vector<std::string> decidingFiles() {
    std::set<std::string> loaded;
    dl_iterate_phdr(addLoaded, &loaded);
    std::set<std::string> files{"/etc/ld.so.cache", "/etc/ld.so.preload"};
    for (const std::string& object : loaded) {
        files.merge(searchedFolders(object));
    }
    files.merge(loaded);
    std::istringstream list(environmentOr("KVLIB", ""));
    for (std::string folder; std::getline(list, folder, ':');) {
        files.insert(folder);
    }
    files.erase("");
    return {files.begin(), files.end()};
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
        if (text[1] != textOf(fileState(text[0]))) {
            return false;
        }
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
    return true;
}

const std::string* KeptAnswers::find(const std::string& library) const {
    const auto found = answers_.find(library);
    return found == answers_.end() ? nullptr : &found->second;
}

void KeptAnswers::keep(const std::string& library, const std::string& texts, const std::vector<std::string>& files,
                       std::time_t askedAt) {
    std::map<std::string, std::string> states;
    for (const std::string& file : files) {
        const FileState state = fileState(file);
        const auto [known, isNew] = states.try_emplace(file, textOf(state));
        const auto before = states_.find(file);
        // What is found from the current directory is another file tomorrow.
        if (!file.starts_with('/') || state.changed + kTimeStep >= askedAt ||
            (before != states_.end() && before->second != known->second)) {
            return;
        }
    }
    if (library.starts_with('/') && !states.empty()) {
        states_.merge(states);
        answers_[library] = texts;
        hasNew_ = true;
    }
}

void KeptAnswers::save() const {
    if (path_.empty() || !hasNew_) {
        return;
    }
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
    writeFile(path_, all);
}
