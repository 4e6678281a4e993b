// What libraries said of themselves, kept from one run of the administrator to the next: to load a driver with all that
// it needs takes milliseconds, and each is asked at each start.
#pragma once

#include <sys/types.h>

#include <ctime>
#include <map>
#include <string>
#include <vector>

// What decides how a library answers which this process has loaded, besides what decides all answers: the loaded files,
// and the folders of their own where they want the loader to look for others.
std::vector<std::string> decidingFiles();

// All answers that were kept. An answer holds as long as none of its deciding files has changed.
class KeptAnswers {
public:
    // Nothing of what is kept counts that comes from another person, another version of this program, another
    // environment or other libraries of the system, or is damaged.
    KeptAnswers();

    // The three texts of the library, each with a zero byte behind it; null when none are known that hold.
    const std::string* find(const std::string& library) const;

    // Keeps the texts of a library that was asked from `begin` on, unless a file has changed since then.
    void keep(const std::string& library, const std::string& texts, const std::vector<std::string>& files,
              std::time_t begin);

    // Writes them for the next run when there is a new one. Those of libraries that are gone go.
    void save() const;

private:
    struct Kept {
        std::string texts;
        std::map<std::string, std::string> states;  // Of each deciding file.
    };
    bool read(const std::string& all);

    std::string circumstances_;  // What decides all answers.
    std::map<std::string, Kept> kept_;
    bool hasNew_ = false;
};
