// What libraries said of themselves, kept from one run of the administrator to the next: to load a driver with all that
// it needs takes milliseconds, and each is asked at each start.
#pragma once

#include <ctime>
#include <map>
#include <string>
#include <vector>

// The files that decide what the libraries loaded in this process answer, each with its state behind it: those that are
// loaded, and the folders where the loader, and our stand-ins for drivers, look for them. None when nothing can be kept
// because one is named from the current directory, or may have changed since `askedAt`, when the first was loaded.
std::vector<std::string> decidingFiles(std::time_t askedAt);

// All answers that are kept. Nothing is known when one of the files that decided them has changed since, or the
// environment, or this program, or when what is kept is damaged.
class KeptAnswers {
public:
    // In the file at `path`; nothing is kept where it is empty.
    explicit KeptAnswers(std::string path);

    // The texts that the library told (components/zero_ended.h); null when none are known.
    const std::string* find(const std::string& library) const;

    // Keeps the texts of a library, and the files that decided them, each with its state behind it.
    void keep(const std::string& library, const std::string& texts, const std::vector<std::string>& files);

    // Writes them for the next run when there is a new one, in a process of its own: nobody waits for that. What can't
    // be written is asked again then.
    void save() const;

private:
    bool read();
    bool statesHold() const;
    std::string text() const;

    std::string path_;
    std::map<std::string, std::string> states_;  // Of all deciding files.
    std::map<std::string, std::string> answers_;
    bool hasNew_ = false;
};
