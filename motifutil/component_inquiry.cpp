#include "motifutil/component_inquiry.h"

#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "bos/host.h"
#include "bos/library.h"
#include "motifutil/file_state.h"

namespace {

// The program that asks, as long as there is something to ask. It ends when its input does.
class Asker {
public:
    ~Asker() { stop(); }
    Asker(const Asker&) = delete;
    Asker& operator=(const Asker&) = delete;
    Asker() = default;

    void keepAnswers() { keeps_ = true; }
    void ask(const std::string& path) {
        if (process_ < 0) {
            start();
        }
        // What can't be sent is not answered.
        std::ignore = send(line_, path.c_str(), path.size() + 1, MSG_NOSIGNAL);
    }
    // The next text of those that it tells; nothing when it has ended.
    std::optional<std::string> nextText() {
        std::size_t end = 0;
        while ((end = text_.find('\0')) == std::string::npos) {
            std::array<char, 4096> part{};
            const ssize_t count = read(line_, part.data(), part.size());
            if (count <= 0 && !(count < 0 && errno == EINTR)) {
                return std::nullopt;
            }
            text_.append(part.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
        std::string text = text_.substr(0, end);
        text_.erase(0, end + 1);
        return text;
    }
    void stop() {
        if (line_ >= 0) {
            close(line_);
        }
        line_ = -1;
        if (process_ > 0) {
            while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
        process_ = -1;
        text_.clear();
    }

private:
    void start() {
        std::array<int, 2> ends{-1, -1};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            std::perror("socketpair");
        }
        const std::string program = programDirectory() + "/describe-component";
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, ends[1], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
        char* option = keeps_ ? const_cast<char*>(kKeepOption) : nullptr;
        std::array<char*, 3> arguments{const_cast<char*>(program.c_str()), option, nullptr};
        const int error = posix_spawn(&process_, program.c_str(), &files, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&files);
        if (error != 0) {
            process_ = -1;
            std::fprintf(stderr, "%s: %s\n", program.c_str(), std::strerror(error));
        }
        close(ends[1]);
        line_ = ends[0];
    }

    bool keeps_ = false;
    pid_t process_ = -1;
    int line_ = -1;
    std::string text_;
};

// Everything that was ever asked in this run of the program.
class Inquiries {
public:
    void keepAnswers() { asker_.keepAnswers(); }
    // Returns under what the answer will be found: the path, or the name of a library that is found nowhere.
    std::string begin(const std::string& library, Complaints complaints) {
        const std::string path = library.empty() ? "" : locateLibrary(library.c_str());
        std::string key = path.empty() ? library : path;
        const FileState state = fileState(path);
        const auto [known, isNew] = known_.try_emplace(key);
        if (!isNew && known->second.state == state) {
            return key;
        }
        known->second.state = state;
        known->second.complaints = complaints;
        known->second.answer = {};
        if (!path.empty()) {
            asker_.ask(path);
            ++pending_;
        } else if (!library.empty()) {
            complain(library + ": no such library", complaints);
        }
        return key;
    }
    // All answers, since who has one has the others soon.
    void finishAll() {
        while (pending_ > 0 && takeAnswer()) {
            --pending_;
        }
        pending_ = 0;
        asker_.stop();
    }
    const ComponentAnswer& answer(const std::string& key) { return known_[key].answer; }

private:
    struct Known {
        FileState state;
        Complaints complaints = Complaints::kNowhere;
        ComponentAnswer answer;
    };

    static void complain(const std::string& text, Complaints complaints) {
        if (complaints == Complaints::kToStandardError && !text.empty()) {
            std::fprintf(stderr, "%s\n", text.c_str());
        }
    }
    // False when there is none.
    bool takeAnswer() {
        std::array<std::string, 5> texts;
        for (std::string& text : texts) {
            std::optional<std::string> next = asker_.nextText();
            if (!next) {
                return false;
            }
            text = std::move(*next);
        }
        Known& known = known_[texts[0]];
        known.answer = {!texts[2].empty(), texts[3], texts[4]};
        complain(texts[1], known.complaints);
        return true;
    }

    std::map<std::string, Known> known_;
    int pending_ = 0;
    Asker asker_;
};

Inquiries& inquiries() {
    static Inquiries all;
    return all;
}

}  // namespace

void keepAnswers() {
    inquiries().keepAnswers();
}

void beginAsking(const std::string& library) {
    inquiries().begin(library, Complaints::kToStandardError);
}

std::vector<ComponentAnswer> askComponents(const std::vector<std::string>& libraries, Complaints complaints) {
    std::vector<std::string> keys;
    for (const std::string& library : libraries) {
        keys.push_back(inquiries().begin(library, complaints));
    }
    inquiries().finishAll();
    std::vector<ComponentAnswer> answers;
    for (const std::string& key : keys) {
        answers.push_back(inquiries().answer(key));
    }
    return answers;
}
