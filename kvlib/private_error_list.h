// An error list of one's own for the length of a scope.
#pragma once

#include "kvlib/error_keeper.h"

// Collects what is recorded on this thread while it lives, so that it neither reaches the caller's list nor is shown.
// It is given up even when an exception passes.
class PrivateErrorList {
public:
    PrivateErrorList() : list_(nullptr, 0) { KvErrorKeeper::setErrorList(&list_); }
    ~PrivateErrorList() { KvErrorKeeper::giveUpErrorList(); }
    PrivateErrorList(const PrivateErrorList&) = delete;
    PrivateErrorList& operator=(const PrivateErrorList&) = delete;

private:
    KvErrorList list_;
};
