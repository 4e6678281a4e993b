// Findings in words: for people and for scripts.
#pragma once

#include <string>

#include "doctor/account.h"
#include "doctor/finding.h"

namespace doctor {

// Opens the texts of the doctor's catalog while it lives. The install directory must be known (kvini/install_dir.h).
class Texts {
public:
    Texts();
    ~Texts();
    Texts(const Texts&) = delete;
    Texts& operator=(const Texts&) = delete;
};
[[nodiscard]] std::string doctorText(DoctorMessage::Number number, std::initializer_list<std::string> subjects = {});

// UTF-8 without control characters, whatever the files hold. `name` is the data source that was asked for, if any;
// `hasColours` for a terminal.
[[nodiscard]] std::string reportForPeople(const Account& account, const Findings& findings, const std::string& name,
                                          bool hasColours);
[[nodiscard]] std::string reportForScripts(const Account& account, const Findings& findings);

// 0 without findings, 1 with warnings alone, 2 with errors.
[[nodiscard]] int exitStatus(const Findings& findings);

}  // namespace doctor
