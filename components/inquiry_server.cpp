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

#include "components/kept_answers.h"
#include "components/zero_ended.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience(2);
// One that has not answered by now waits for something, and keeps no processor from the next.
constexpr std::chrono::milliseconds kBusyTime(200);
constexpr std::ptrdiff_t kMostBusy = 8;
constexpr std::size_t kMostProcesses = 100;

// Texts, and the names of some hundred files: with more the answer is not kept.
constexpr std::size_t kMostAnswer = 65536;
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
    std::vector<std::string> texts;
    std::string complaint;
    std::vector<std::string> files;  // That decide it, and their states; none when they are not all known.
};

// One library and the process that asks it, which ends with this.
class Inquiry {
public:
    Inquiry(const std::string& path, Describe* describe) : path_(path), begin_(Clock::now()) { start(describe); }
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
        const bool isEnd = takeAnswer();
        const bool isLate = !isEnd && now >= begin_ + kPatience;
        isLate_ = isLate && !isComplete();
        // The files may be on a file system that does not answer.
        return isEnd || isWhole() || isLate || (isComplete() && !isBusy(now));
    }

    // Ends the process, if it has not ended itself. The answer is what has come until then.
    Answer finish();

private:
    void start(Describe* describe);
    bool takeAnswer() {
        const bool isEnd = answer_.readInto(answerText_, kMostAnswer);
        told_ = splitTexts(answerText_);
        return isEnd;
    }
    std::string complaint() const;
    bool isComplete() const { return told_.size() >= kAnswerTexts; }
    // With the names of the files.
    bool isWhole() const { return told_.size() > kAnswerTexts && told_.back().empty(); }
    bool hasVersion() const { return isComplete() && !told_[1].empty(); }
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
    std::vector<std::string> told_;  // Of that, texts and then files.
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
        describe(path_, answer);
    }
    startError_ = process_ < 0 ? errno : 0;
    answer_.closeOutput();
    printed_.closeOutput();
}

Answer Inquiry::finish() {
    if (process_ > 0) {
        // It may not have come to make its group yet.
        kill(process_, SIGKILL);
        kill(-process_, SIGKILL);
        while (waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
        printed_.readInto(printedText_, kMostPrinted);
    }
    Answer answer{told_, complaint(), {}};
    if (isWhole()) {
        answer.files.assign(told_.begin() + kAnswerTexts, told_.end() - 1);
    } else if (!isComplete()) {
        // A version alone is none.
        answer.texts.resize(std::min<std::size_t>(told_.size(), 1));
    }
    answer.texts.resize(kAnswerTexts);
    return answer;
}

std::string Inquiry::reason() const {
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

// The paths that come on standard input, and the answers that go to standard output.
class Server {
public:
    Server(Describe* describe, const std::string& kept) : describe_(describe), kept_(kept) {
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
        kept_.save();
    }

private:
    void startMore(Clock::time_point now) {
        const auto isBusy = [&now](const Inquiry& inquiry) { return inquiry.isBusy(now); };
        while (!waiting_.empty() && running_.size() < kMostProcesses &&
               std::count_if(running_.begin(), running_.end(), isBusy) < kMostBusy) {
            running_.emplace_back(waiting_.front(), describe_);
            waiting_.pop_front();
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
        for (const std::string& path : splitTexts(incoming_)) {
            if (const std::string* texts = kept_.find(path)) {
                tell(path, "", *texts);
            } else {
                waiting_.push_back(path);
            }
        }
        incoming_.erase(0, incoming_.rfind('\0') + 1);
    }
    void takeAnswers() {
        const Clock::time_point now = Clock::now();
        for (auto inquiry = running_.begin(); inquiry != running_.end();) {
            if (inquiry->isOver(now)) {
                const Answer answer = inquiry->finish();
                std::string texts;
                for (const std::string& text : answer.texts) {
                    appendText(texts, text);
                }
                tell(inquiry->path(), answer.complaint, texts);
                if (answer.complaint.empty()) {
                    kept_.keep(inquiry->path(), texts, answer.files);
                }
                inquiry = running_.erase(inquiry);
            } else {
                ++inquiry;
            }
        }
    }
    void tell(const std::string& path, const std::string& complaint, const std::string& texts) {
        appendText(toSend_, path);
        appendText(toSend_, complaint);
        toSend_ += texts;
    }
    void send() {
        if (toSend_.empty()) {
            // Where nobody reads any more, even a write of nothing ends the process, and the answers are not saved yet.
            return;
        }
        const ssize_t count = write(STDOUT_FILENO, toSend_.data(), toSend_.size());
        toSend_.erase(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }

    Describe* describe_;
    KeptAnswers kept_;
    bool isOver_ = false;
    std::string incoming_;
    std::string toSend_;
    std::deque<std::string> waiting_;
    std::list<Inquiry> running_;
};

}  // namespace

void serveInquiries(Describe* describe, const std::string& kept) {
    Server(describe, kept).serve();
}
