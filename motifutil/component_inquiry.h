// Asks libraries of any maker what they say of themselves. Each is loaded by a process of its own, which the program
// describe-component beside the one that runs starts, so that nothing it does when it is loaded or asked does harm
// here. From one thread.
#pragma once

#include <string>
#include <vector>

struct ComponentAnswer {
    bool isSetupLibrary = false;  // It has a dialog (ConfigDSN).
    std::string version;          // Both empty for a library that was not found, not loaded, or does not tell.
    std::string company;
};

// Where the complaints go: one line for each library that gave no version, or that printed something.
enum class Complaints { kToStandardError, kNowhere };

// The option with which describe-component keeps answers.
inline constexpr const char* kKeepOption = "--keep";

// From now on an answer may be that of an earlier run, as long as no file has changed that decided it, and new ones are
// kept for the next.
void keepAnswers();

// Begins to ask, for whoever will want the answer and has something else to do until then.
void beginAsking(const std::string& library);

// Asks all of these, named as bosLoadLibrary takes them, several at a time, and returns the answers in the same order.
// One that takes longer than two seconds is given up. Each file is asked once in a run, however often and under
// whatever names it is given, until it changes.
[[nodiscard]] std::vector<ComponentAnswer> askComponents(const std::vector<std::string>& libraries,
                                                         Complaints complaints = Complaints::kToStandardError);
