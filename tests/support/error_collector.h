// What a call under test records on the error list.
#pragma once

#include <cstdint>
#include <string>

#include "kvlib/error_keeper.h"

// Makes a list that keeps all errors the calling thread's current one.
class ErrorCollector {
public:
    ErrorCollector() : list_(nullptr, kErrorListKeepAll) { KvErrorKeeper::setErrorList(&list_); }
    ~ErrorCollector() { KvErrorKeeper::giveUpErrorList(); }
    ErrorCollector(const ErrorCollector&) = delete;
    ErrorCollector& operator=(const ErrorCollector&) = delete;

    // All errors in order: "1509", a warning as "1509w", several with a blank between them, "" for none.
    std::string numbers() {
        std::string result;
        for (KvError* error = list_.getFirstNode(); error != nullptr; error = list_.getNextNode()) {
            result += (result.empty() ? "" : " ") + std::to_string(error->number()) + (error->isWarning() ? "w" : "");
        }
        return result;
    }
    std::string lastText() {
        const KvError* error = list_.getLastError();
        return error == nullptr ? "" : error->getErrorText();
    }

private:
    KvErrorList list_;
};
