// What is wrong with a configuration.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "catalogs/message_numbers.h"

namespace doctor {

enum class Severity { kError, kWarning };

struct FindingKind {
    DoctorMessage::Number text;  // Three lines: what it is, why it fails, what mends it.
    Severity severity;
    const char* name;  // For scripts.
};

struct Finding {
    FindingKind kind;
    std::string file;  // Empty when no file is at fault.
    std::size_t line;  // 0 for the whole file.
    std::vector<std::string> subjects;
    std::string about{};  // The data source or driver that it is about; empty when it concerns all.
};

using Findings = std::vector<Finding>;

}  // namespace doctor
