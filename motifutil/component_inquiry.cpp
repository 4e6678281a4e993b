#include "motifutil/component_inquiry.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <deque>
#include <list>
#include <map>
#include <tuple>

#include "bos/host.h"
#include "bos/library.h"
#include "kvlib/debug_mask.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience(2);
// One that has not answered by now waits for something, and keeps no processor from the next.
constexpr std::chrono::milliseconds kBusyTime(200);
constexpr std::ptrdiff_t kMostBusy = 8;
constexpr std::size_t kMostProcesses = 100;

constexpr std::size_t kMostAnswer = 4096;
constexpr std::size_t kMostPrinted = 300;

// Both ends are closed in every program that is started; what is to be kept there is duplicated.
class Pipe {
public:
    Pipe() {
        if (pipe2(ends_.data(), O_CLOEXEC) == 0) {
            fcntl(ends_[0], F_SETFL, O_NONBLOCK);
        }
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int input() const { return ends_[0]; }
    int output() const { return ends_[1]; }
    void closeOutput() { closeEnd(1); }
    // Appends what is there to `text`, of which at most `most` bytes are kept. True at the end.
    bool readInto(std::string& text, std::size_t most) {
        std::array<char, 4096> part{};
        ssize_t count = 0;
        while ((count = read(ends_[0], part.data(), part.size())) > 0) {
            text.append(part.data(), std::min(static_cast<std::size_t>(count), most - text.size()));
        }
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            return false;
        }
        closeEnd(0);
        return true;
    }

private:
    void closeEnd(std::size_t end) {
        if (ends_[end] >= 0) {
            close(ends_[end]);
            ends_[end] = -1;
        }
    }
    std::array<int, 2> ends_{-1, -1};
};

// One library and the process that asks it, which ends with this.
class Inquiry {
public:
    explicit Inquiry(const std::string& path) : path_(path), begin_(Clock::now()) { start(); }
    ~Inquiry() { finish(); }
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;

    const std::string& path() const { return path_; }
    void watch(std::vector<pollfd>& watched) const {
        // A closed one is negative, which poll passes over.
        watched.push_back({answer_.input(), POLLIN, 0});
        watched.push_back({printed_.input(), POLLIN, 0});
    }
    bool isBusy(Clock::time_point now) const { return now < begin_ + kBusyTime; }
    // When it is to be looked at even if nothing comes.
    Clock::time_point nextLook(Clock::time_point now) const { return begin_ + (isBusy(now) ? kBusyTime : kPatience); }

    // Takes what has come. True when nothing more is waited for.
    bool isOver(Clock::time_point now) {
        printed_.readInto(printedText_, kMostPrinted);
        const bool isEnd = answer_.readInto(answerText_, kMostAnswer);
        isLate_ = !isEnd && !isComplete() && now >= begin_ + kPatience;
        return isEnd || isComplete() || isLate_;
    }

    // Ends the process, if it has not ended itself. The answer is what has come until then.
    ComponentAnswer finish();
    // What is to be said of the library; empty when all is well. After finish().
    std::string complaint() const;

private:
    void start();
    bool isComplete() const { return std::count(answerText_.begin(), answerText_.end(), '\0') >= 3; }
    bool hasVersion() const { return isComplete() && answerText_[answerText_.find('\0') + 1] != '\0'; }
    std::string reason() const;

    std::string path_;
    Clock::time_point begin_;
    Pipe answer_;
    Pipe printed_;
    pid_t process_ = -1;
    int startError_ = 0;
    int status_ = 0;
    bool isLate_ = false;
    std::string answerText_;
    std::string printedText_;
};

void Inquiry::start() {
    const std::string program = programDirectory() + "/describe-component";
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    // The debug traces of the library search go where they always went.
    posix_spawn_file_actions_adddup2(&files, BOS_RUNTIME_DEBUG != 0 ? STDOUT_FILENO : printed_.output(), STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&files, answer_.output(), STDOUT_FILENO);
    // A group of its own ends with all that the library started.
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    std::array<char*, 3> arguments{const_cast<char*>(program.c_str()), path_.data(), nullptr};
    startError_ = posix_spawn(&process_, program.c_str(), &files, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (startError_ != 0) {
        process_ = -1;
    }
    answer_.closeOutput();
    printed_.closeOutput();
}

ComponentAnswer Inquiry::finish() {
    if (process_ > 0) {
        kill(-process_, SIGKILL);
        while (waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
        printed_.readInto(printedText_, kMostPrinted);
    }
    ComponentAnswer answer;
    std::array<std::string, 3> texts;
    std::size_t begin = 0;
    for (std::string& text : texts) {
        const std::size_t end = answerText_.find('\0', begin);
        text = end == std::string::npos ? "" : answerText_.substr(begin, end - begin);
        begin = end == std::string::npos ? answerText_.size() : end + 1;
    }
    answer.isSetupLibrary = !texts[0].empty();
    if (isComplete()) {
        answer.version = texts[1];
        answer.company = texts[2];
    }
    return answer;
}

std::string Inquiry::reason() const {
    std::string line = printedText_.substr(0, printedText_.find('\n'));
    std::replace_if(
        line.begin(), line.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; }, '?');
    if (startError_ != 0) {
        return std::string("describe-component can't be started: ") + std::strerror(startError_);
    }
    if (isLate_) {
        return "gave no answer within 2 seconds";
    }
    if (!line.empty()) {
        return hasVersion() ? "printed: " + line : line;
    }
    if (!isComplete()) {
        return WIFSIGNALED(status_) ? std::string("ended the process that asked it: ") + strsignal(WTERMSIG(status_))
                                    : "ended the process that asked it";
    }
    return "tells no version";
}

std::string Inquiry::complaint() const {
    if (hasVersion() && printedText_.empty()) {
        return {};
    }
    const std::string text = reason();
    return text.starts_with(path_) ? text : path_ + ": " + text;
}

// A file as it was when it was asked; all zero for one that is not there.
using FileState = std::tuple<dev_t, ino_t, off_t, time_t, long, time_t, long>;

FileState stateOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return {};
    }
    return {status.st_dev,          status.st_ino,         status.st_size,        status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

// Everything that was ever asked in this run of the program.
class Inquiries {
public:
    // Returns under what the answer will be found: the path, or the name of a library that is found nowhere.
    std::string begin(const std::string& library, Complaints complaints) {
        const std::string path = library.empty() ? "" : locateLibrary(library.c_str());
        std::string key = path.empty() ? library : path;
        const FileState state = stateOf(path);
        const auto known = known_.find(key);
        if (known != known_.end() && known->second.state == state) {
            return key;
        }
        known_[key] = {state, complaints, {}};
        if (!path.empty()) {
            waiting_.push_back(path);
            startMore(Clock::now());
        } else if (!library.empty()) {
            complain(library + ": no such library", complaints);
        }
        return key;
    }
    void finishAll() {
        while (!running_.empty() || !waiting_.empty()) {
            const Clock::time_point now = Clock::now();
            startMore(now);
            waitForAny(now);
            takeAnswers();
        }
    }
    const ComponentAnswer& answer(const std::string& key) { return known_[key].answer; }

private:
    struct Known {
        FileState state;
        Complaints complaints;
        ComponentAnswer answer;
    };

    static void complain(const std::string& text, Complaints complaints) {
        if (complaints == Complaints::kToStandardError && !text.empty()) {
            std::fprintf(stderr, "%s\n", text.c_str());
        }
    }
    void startMore(Clock::time_point now) {
        const auto isBusy = [&now](const Inquiry& inquiry) { return inquiry.isBusy(now); };
        while (!waiting_.empty() && running_.size() < kMostProcesses &&
               std::count_if(running_.begin(), running_.end(), isBusy) < kMostBusy) {
            running_.emplace_back(waiting_.front());
            waiting_.pop_front();
        }
    }
    void waitForAny(Clock::time_point now) const {
        std::vector<pollfd> watched;
        Clock::time_point look = now + kPatience;
        for (const Inquiry& inquiry : running_) {
            inquiry.watch(watched);
            look = std::min(look, inquiry.nextLook(now));
        }
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(look - now);
        poll(watched.data(), watched.size(), std::max(static_cast<int>(wait.count()), 0));
    }
    void takeAnswers() {
        const Clock::time_point now = Clock::now();
        for (auto inquiry = running_.begin(); inquiry != running_.end();) {
            if (inquiry->isOver(now)) {
                Known& known = known_[inquiry->path()];
                known.answer = inquiry->finish();
                complain(inquiry->complaint(), known.complaints);
                inquiry = running_.erase(inquiry);
            } else {
                ++inquiry;
            }
        }
    }

    std::map<std::string, Known> known_;
    std::deque<std::string> waiting_;
    std::list<Inquiry> running_;
};

Inquiries& inquiries() {
    static Inquiries all;
    return all;
}

}  // namespace

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
