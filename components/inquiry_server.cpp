#include "components/inquiry_server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <deque>
#include <list>
#include <string_view>
#include <tuple>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience(2);
// One that has not answered by now waits for something, and keeps no processor from the next.
constexpr std::chrono::milliseconds kBusyTime(200);
constexpr std::ptrdiff_t kMostBusy = 8;
constexpr std::size_t kMostProcesses = 100;

// As many libraries may share a process, which takes a seventh of the time, since most drivers bring the same others
// along; and how long such a process may take before each is asked alone.
constexpr std::size_t kMostTogether = 8;
constexpr std::chrono::milliseconds kPatienceTogether(500);

constexpr std::size_t kTexts = 3;  // Of each library.
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

// What is told of a library.
struct Answer {
    std::string path;
    std::string complaint;
    std::string texts;  // Three, each with its end.
};

// Libraries, mostly one, and the process that asks them, which ends with this.
class Inquiry {
public:
    Inquiry(std::vector<std::string> paths, Describe* describe) : paths_(std::move(paths)), begin_(Clock::now()) {
        start(describe);
    }
    ~Inquiry() { finish(); }
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;

    const std::vector<std::string>& paths() const { return paths_; }
    void watch(std::vector<pollfd>& watched) const {
        // A closed one is negative, which poll passes over.
        watched.push_back({answer_.input(), POLLIN, 0});
        watched.push_back({printed_.input(), POLLIN, 0});
    }
    bool isBusy(Clock::time_point now) const { return now < begin_ + kBusyTime; }
    // When it is to be looked at even if nothing comes.
    Clock::time_point nextLook(Clock::time_point now) const { return begin_ + (isBusy(now) ? kBusyTime : patience()); }

    // Takes what has come. True when nothing more is waited for.
    bool isOver(Clock::time_point now) {
        printed_.readInto(printedText_, kMostPrinted);
        const bool isEnd = answer_.readInto(answerText_, paths_.size() * kMostAnswer);
        isLate_ = !isEnd && !isComplete() && now >= begin_ + patience();
        return isEnd || isComplete() || isLate_;
    }

    // Ends the process, if it has not ended itself. The answers are what has come until then; none of several libraries
    // that did not all answer without a word, since any of them may be to blame.
    std::vector<Answer> finish();

private:
    void start(Describe* describe);
    std::chrono::milliseconds patience() const { return paths_.size() == 1 ? kPatience : kPatienceTogether; }
    bool isComplete() const {
        return std::count(answerText_.begin(), answerText_.end(), '\0') >=
               static_cast<std::ptrdiff_t>(kTexts * paths_.size());
    }
    std::string complaint(const std::string& path, const std::string& texts) const;
    std::string reason(bool hasVersion) const;

    std::vector<std::string> paths_;
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

void Inquiry::start(Describe* describe) {
    process_ = fork();
    if (process_ == 0) {
        // A group of its own ends with all that the library started; whatever the library prints, the answer stays out
        // of its reach.
        setpgid(0, 0);
        constexpr int kLikelyFree = 100;
        const int answer = fcntl(answer_.output(), F_DUPFD, kLikelyFree);
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(printed_.output(), STDOUT_FILENO);
        dup2(printed_.output(), STDERR_FILENO);
        close_range(STDERR_FILENO + 1, static_cast<unsigned int>(answer - 1), 0);
        close_range(static_cast<unsigned int>(answer + 1), ~0U, 0);
        const bool areTold =
            std::all_of(paths_.begin(), paths_.end(), [&](const std::string& path) { return describe(path, answer); });
        // Nothing of the libraries runs any more.
        _exit(areTold ? 0 : 1);
    }
    startError_ = process_ < 0 ? errno : 0;
    answer_.closeOutput();
    printed_.closeOutput();
}

std::vector<Answer> Inquiry::finish() {
    if (process_ > 0) {
        // It may not have come to make its group yet.
        kill(process_, SIGKILL);
        kill(-process_, SIGKILL);
        while (waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
        printed_.readInto(printedText_, kMostPrinted);
    }
    const bool isWhole = isComplete();
    if (paths_.size() > 1 && !(isWhole && printedText_.empty())) {
        return {};
    }
    std::vector<Answer> answers;
    std::size_t begin = 0;
    for (const std::string& path : paths_) {
        std::size_t end = begin;
        for (std::size_t count = 0; isWhole && count < kTexts; ++count) {
            end = answerText_.find('\0', end) + 1;
        }
        // A version alone is none.
        std::string texts = isWhole ? answerText_.substr(begin, end - begin)
                                    : answerText_.substr(0, answerText_.find('\0')) + std::string(kTexts, '\0');
        answers.push_back({path, complaint(path, texts), std::move(texts)});
        begin = end;
    }
    return answers;
}

std::string Inquiry::reason(bool hasVersion) const {
    std::string line = printedText_.substr(0, printedText_.find('\n'));
    std::replace_if(
        line.begin(), line.end(), [](unsigned char byte) { return std::iscntrl(byte) != 0; }, '?');
    if (startError_ != 0) {
        return std::string("no process could be started for it: ") + std::strerror(startError_);
    }
    if (isLate_) {
        return "gave no answer within 2 seconds";
    }
    if (!line.empty()) {
        return hasVersion ? "printed: " + line : line;
    }
    if (!isComplete()) {
        return WIFSIGNALED(status_) ? std::string("ended the process that asked it: ") + strsignal(WTERMSIG(status_))
                                    : "ended the process that asked it";
    }
    return "tells no version";
}

std::string Inquiry::complaint(const std::string& path, const std::string& texts) const {
    const bool hasVersion = texts[texts.find('\0') + 1] != '\0';
    if (hasVersion && printedText_.empty()) {
        return {};
    }
    const std::string text = reason(hasVersion);
    return text.starts_with(path) ? text : path + ": " + text;
}

// The paths that come on standard input, and the answers that go to standard output.
class Server {
public:
    explicit Server(Describe* describe) : describe_(describe) {
        fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK);
        fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK);
    }
    void serve() {
        while (!isOver_) {
            startMore(Clock::now());
            waitForAny(Clock::now());
            takePaths();
            takeAnswers();
            send();
        }
    }

private:
    void startMore(Clock::time_point now) {
        const auto isBusy = [&now](const Inquiry& inquiry) { return inquiry.isBusy(now); };
        while (!(waiting_.empty() && suspects_.empty()) && running_.size() < kMostProcesses &&
               std::count_if(running_.begin(), running_.end(), isBusy) < kMostBusy) {
            const bool areSuspects = !suspects_.empty();
            std::deque<std::string>& from = areSuspects ? suspects_ : waiting_;
            const std::size_t together =
                areSuspects ? 1 : std::clamp<std::size_t>(waiting_.size() / std::size_t{kMostBusy}, 1, kMostTogether);
            const auto end = from.begin() + static_cast<std::ptrdiff_t>(together);
            running_.emplace_back(std::vector<std::string>(from.begin(), end), describe_);
            from.erase(from.begin(), end);
        }
    }
    void waitForAny(Clock::time_point now) const {
        std::vector<pollfd> watched{{STDIN_FILENO, POLLIN, 0}, {toSend_.empty() ? -1 : STDOUT_FILENO, POLLOUT, 0}};
        Clock::time_point look = Clock::time_point::max();
        for (const Inquiry& inquiry : running_) {
            inquiry.watch(watched);
            look = std::min(look, inquiry.nextLook(now));
        }
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(look - now);
        poll(watched.data(), watched.size(), running_.empty() ? -1 : std::max(static_cast<int>(wait.count()), 0));
    }
    void takePaths() {
        std::array<char, 4096> part{};
        const ssize_t count = read(STDIN_FILENO, part.data(), part.size());
        isOver_ = count == 0;
        incoming_.append(part.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        for (std::size_t end = 0; (end = incoming_.find('\0')) != std::string::npos;) {
            waiting_.push_back(incoming_.substr(0, end));
            incoming_.erase(0, end + 1);
        }
    }
    void takeAnswers() {
        const Clock::time_point now = Clock::now();
        for (auto inquiry = running_.begin(); inquiry != running_.end();) {
            if (inquiry->isOver(now)) {
                const std::vector<Answer> answers = inquiry->finish();
                for (const Answer& answer : answers) {
                    toSend_.append(answer.path).push_back('\0');
                    toSend_.append(answer.complaint).push_back('\0');
                    toSend_ += answer.texts;
                }
                if (answers.empty()) {
                    suspects_.insert(suspects_.end(), inquiry->paths().begin(), inquiry->paths().end());
                }
                inquiry = running_.erase(inquiry);
            } else {
                ++inquiry;
            }
        }
    }
    void send() {
        const ssize_t count = write(STDOUT_FILENO, toSend_.data(), toSend_.size());
        toSend_.erase(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }

    Describe* describe_;
    bool isOver_ = false;
    std::string incoming_;
    std::string toSend_;
    std::deque<std::string> waiting_;
    std::deque<std::string> suspects_;  // To be asked alone.
    std::list<Inquiry> running_;
};

}  // namespace

void serveInquiries(Describe* describe) {
    Server(describe).serve();
}
