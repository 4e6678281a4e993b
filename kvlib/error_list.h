// The lists that collect errors. A list belongs to one thread and is not locked. Nothing here throws; a failed
// allocation shows as the list's memory error.
#pragma once

#include <cstdint>

#include "kvlib/error.h"
#include "kvlib/kv_array.h"
#include "kvlib/kv_string.h"
#include "kvlib/text.h"

// Flag argument of KvErrorList.
inline constexpr unsigned kErrorListKeepAll = 0x01;

class KvErrorList : public KvSortedArray {
public:
    // `owner` is the caller's own mark, see KvErrorKeeper::getOwnerOfList. A list keeps the first real error only and
    // all warnings, unless `flags` holds kErrorListKeepAll. A list must be given up before it is destroyed; its errors
    // go with it.
    explicit KvErrorList(void* owner = nullptr, unsigned flags = 0);
    ~KvErrorList() override;

    virtual KvError* getMemoryError();
    virtual KvError* getDummyError();

    // A new error for this list, owned by the caller, with the arguments of KvError; null after recording a memory
    // error.
    [[nodiscard]] virtual KvError* allocError(std::uint16_t number, const char16_t* text, int errorType,
                                              std::uint16_t stateNumber, std::int64_t nativeError);
    [[nodiscard]] virtual KvError* allocError(std::uint16_t number, const char* text, kvCPType codePage, int errorType,
                                              std::uint16_t stateNumber, std::int64_t nativeError);

    // The pending memory error, else the last element, else null. The list keeps owning it.
    KvError* getLastError();

    // Take the first or last element out; the caller owns it then, unless it is static. Both hand out the pending
    // memory error before any element, once. Null when there is nothing.
    [[nodiscard]] KvError* removeFirstError();
    [[nodiscard]] KvError* removeLastError();

    // 0 empty, 1 errors and warnings, 2 errors only, 3 warnings only. This and the next two look at the elements alone,
    // not at a pending memory error.
    int getErrorsMix() const;
    // 1 when there are elements and all are warnings.
    int isWarningOnly() const;
    // 1 when any element is not a warning.
    int isExistingError() const;

    // Appends the 8-bit texts of all elements to `string`, with `separator` between them. Returns 0, or 1 when memory
    // ran out.
    int concatErrors(KvString& string, char separator) const;

    // Positions count from 0. Makes every element behind position `pos` a warning; all of them when `pos` is negative.
    void setWarningAfterPos(std::int64_t pos);
    // Appends `text` (8-bit in the error's code page) to every element from position `pos` on.
    void appendTextStartingAtPos(const char* text, std::uint64_t pos);
    void appendTextStartingAtPos(const char16_t* text, std::uint64_t pos);
    // Moves the last element to position `pos`, whatever the order says; nothing when there is no such position.
    void moveLastErrorToPos(std::uint64_t pos);

    // Walk over the elements in order; null at the end. Removing elements during a walk may skip some.
    KvError* getFirstNode();
    KvError* getNextNode();
    KvError* getNodeAtPos(std::uint64_t pos) const;

private:
    friend class KvErrorKeeper;

    static constexpr unsigned kMemoryErrorPending = 0x02;  // beside kErrorListKeepAll

    void install(void** slot);
    void uninstall();
    bool keepsAll() const noexcept { return (flags_ & kErrorListKeepAll) != 0; }
    bool isMemoryErrorPending() const noexcept { return (flags_ & kMemoryErrorPending) != 0; }
    void setMemoryErrorPending(bool on) noexcept;
    KvError* element(std::uint64_t index) const;
    KvError* takePendingMemoryError();

    void* owner_;
    std::uint8_t flags_;
    KvErrorList* previous_ = nullptr;
    void** slot_ = nullptr;  // Where this list is installed.
    std::uint64_t iteration_ = 0;
};
