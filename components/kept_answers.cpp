#include "components/kept_answers.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string_view>

#include "components/cache_folder.h"

namespace {

constexpr int kTexts = 3;
constexpr const char* kEnd = "end";
// File systems tell times in steps of up to two seconds.
constexpr std::time_t kTimeStep = 2;

void append(std::string& texts, std::string_view text) {
    texts.append(text).push_back('\0');
}

// All that tells one state of a file from another; empty for one that is not there.
std::string stateOf(const struct stat& status) {
    std::string state;
    for (const auto number :
         {static_cast<long>(status.st_dev), static_cast<long>(status.st_ino), status.st_size, status.st_mtim.tv_sec,
          status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec}) {
        state += std::to_string(number) + " ";
    }
    return state;
}

std::string stateOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? stateOf(status) : "";
}

// Whether it may change once more and look the same.
bool isNew(const struct stat& status, std::time_t now) {
    return status.st_ctim.tv_sec + kTimeStep >= now;
}

// Adds the folders where the loader looks for what this object needs (dlinfo(3)).
void addSearched(void* object, std::vector<std::string>& files) {
    Dl_serinfo size{};
    if (object == nullptr || dlinfo(object, RTLD_DI_SERINFOSIZE, &size) != 0) {
        return;
    }
    std::vector<char> room(size.dls_size);
    auto* folders = reinterpret_cast<Dl_serinfo*>(room.data());
    *folders = size;
    if (dlinfo(object, RTLD_DI_SERINFO, folders) == 0) {
        for (unsigned int i = 0; i < folders->dls_cnt; ++i) {
            files.emplace_back(folders->dls_serpath[i].dls_name);
        }
    }
}

// Where libraries are looked for whoever needs them: by the loader, and by our stand-ins for drivers.
std::vector<std::string> commonFolders() {
    std::vector<std::string> folders{"/etc/ld.so.cache", "/etc/ld.so.preload"};
    addSearched(dlopen(nullptr, RTLD_LAZY), folders);
    std::istringstream list(valueOf("KVLIB", ""));
    for (std::string folder; std::getline(list, folder, ':');) {
        folders.push_back(folder);
    }
    return folders;
}

// What decides all answers: this program, the variables that say what is loaded and in which language it speaks, and
// the libraries of the system. Empty while these change.
std::string circumstances() {
    std::string text = "1 " + stateOf("/proc/self/exe");
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view setting(*variable);
        if (setting.starts_with("LD_") || setting.starts_with("LC_") || setting.starts_with("LANG") ||
            setting.starts_with("KVLIB=")) {
            text.append(setting).push_back('\n');
        }
    }
    for (const std::string& folder : commonFolders()) {
        struct stat status {};
        if (stat(folder.c_str(), &status) == 0) {
            if (isNew(status, std::time(nullptr))) {
                return {};
            }
            text.append(folder).append(" ").append(stateOf(status)).push_back('\n');
        }
    }
    return text;
}

std::string pathOfKept() {
    const std::string folder = cacheFolder();
    return folder.empty() ? "" : folder + "/components";
}

// Texts that have a zero byte behind them, one after the other.
class Texts {
public:
    explicit Texts(std::string_view all) : left_(all) {}
    // Nothing when there is none left, or its end is missing.
    std::optional<std::string_view> next() {
        const std::size_t end = left_.find('\0');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view text = left_.substr(0, end);
        left_.remove_prefix(end + 1);
        return text;
    }

private:
    std::string_view left_;
};

// The whole of a file that is this person's; empty when it is not, or is not there.
std::string readOwn(const std::string& path) {
    std::string text;
    FILE* file = std::fopen(path.c_str(), "re");
    if (file == nullptr) {
        return text;
    }
    struct stat status {};
    if (fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid()) {
        text.resize(static_cast<std::size_t>(status.st_size));
        text.resize(std::fread(text.data(), 1, text.size(), file));
    }
    std::fclose(file);
    return text;
}

// Whether the object names folders of its own for what it needs (elf(5)).
bool namesFolders(const dl_phdr_info& object) {
    const ElfW(Phdr)* end = object.dlpi_phdr + object.dlpi_phnum;
    const auto* part =
        std::find_if(object.dlpi_phdr, end, [](const auto& header) { return header.p_type == PT_DYNAMIC; });
    if (part == end) {
        return false;
    }
    const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + part->p_vaddr);
    while (entry->d_tag != DT_NULL && entry->d_tag != DT_RPATH && entry->d_tag != DT_RUNPATH) {
        ++entry;
    }
    return entry->d_tag != DT_NULL;
}

struct Loaded {
    std::vector<std::string> files;
    std::vector<std::string> thatNameFolders;
};

int addLoaded(dl_phdr_info* object, std::size_t /*size*/, void* all) {
    if (object->dlpi_name != nullptr && *object->dlpi_name == '/') {
        Loaded& loaded = *static_cast<Loaded*>(all);
        loaded.files.emplace_back(object->dlpi_name);
        if (namesFolders(*object)) {
            loaded.thatNameFolders.emplace_back(object->dlpi_name);
        }
    }
    return 0;
}

}  // namespace

std::vector<std::string> decidingFiles() {
    Loaded loaded;
    dl_iterate_phdr(addLoaded, &loaded);
    for (const std::string& object : loaded.thatNameFolders) {
        addSearched(dlopen(object.c_str(), RTLD_LAZY | RTLD_NOLOAD), loaded.files);
    }
    return loaded.files;
}

KeptAnswers::KeptAnswers() : circumstances_(circumstances()) {
    const std::string path = pathOfKept();
    if (!path.empty() && !read(readOwn(path))) {
        kept_.clear();
    }
}

// False when it is not what save() wrote in these circumstances.
bool KeptAnswers::read(const std::string& all) {
    Texts texts(all);
    if (circumstances_.empty() || texts.next() != circumstances_) {
        return false;
    }
    while (const std::optional<std::string_view> library = texts.next()) {
        if (*library == kEnd) {
            return true;
        }
        Kept& kept = kept_[std::string(*library)];
        for (int i = 0; i < kTexts; ++i) {
            append(kept.texts, texts.next().value_or(""));
        }
        for (std::string_view file; !(file = texts.next().value_or("")).empty();) {
            kept.states[std::string(file)] = texts.next().value_or("");
        }
    }
    return false;
}

const std::string* KeptAnswers::find(const std::string& library) const {
    const auto found = kept_.find(library);
    const auto holds = [](const auto& file) { return stateOf(file.first) == file.second; };
    return found != kept_.end() && std::all_of(found->second.states.begin(), found->second.states.end(), holds)
               ? &found->second.texts
               : nullptr;
}

void KeptAnswers::keep(const std::string& library, const std::string& texts, const std::vector<std::string>& files,
                       std::time_t begin) {
    // What is found from the current directory is another file tomorrow.
    const auto isAbsolute = [](const std::string& file) { return file.starts_with('/'); };
    if (files.empty() || !isAbsolute(library) || !std::all_of(files.begin(), files.end(), isAbsolute)) {
        return;
    }
    Kept kept{texts, {}};
    for (const std::string& file : files) {
        struct stat status {};
        const bool isThere = stat(file.c_str(), &status) == 0;
        if (isThere && isNew(status, begin)) {
            return;
        }
        kept.states[file] = isThere ? stateOf(status) : "";
    }
    kept_[library] = kept;
    hasNew_ = true;
}

void KeptAnswers::save() const {
    const std::string path = hasNew_ && !circumstances_.empty() ? pathOfKept() : "";
    if (path.empty()) {
        return;
    }
    std::string all;
    append(all, circumstances_);
    for (const auto& [library, kept] : kept_) {
        if (access(library.c_str(), F_OK) != 0) {
            continue;
        }
        append(all, library);
        all += kept.texts;
        for (const auto& [file, state] : kept.states) {
            append(all, file);
            append(all, state);
        }
        append(all, "");
    }
    append(all, kEnd);
    writeWhole(path, all);
}
