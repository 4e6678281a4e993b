// Errors and the lists that collect them. A function of the support library that fails records errors on the calling
// thread's current list and returns a plain failure code; whoever wants to see them installs a list of its own first.
// Installed lists form a stack per thread. Errors and lists belong to one thread and are not locked. Nothing here
// throws; a failed allocation shows as the list's memory error.
#pragma once

#include <cstdint>
#include <string_view>

#include "catalogs/message_numbers.h"
#include "kvlib/error_report.h"
#include "kvlib/kv_array.h"
#include "kvlib/kv_string.h"
#include "kvlib/kv_string_w.h"
#include "kvlib/per_thread_data.h"
#include "kvlib/text.h"

// Largest text of the library's own catalog, with its terminator, in units or bytes.
inline constexpr std::uint32_t kLibraryTextSize = 1024;

// Values of the error type arguments.
inline constexpr int kErrorTypeError = 0;
inline constexpr int kErrorTypeWarning = 1;

enum class ErrSpecialError { kMemory = 1, kDummy = 2 };

// An element of a list.
class KvNode : public KvObject {
public:
    constexpr KvNode() = default;
};

class KvError : public KvNode {
public:
    // `text` (null means "") may hold parameter places (see KvParamStringW). `errorType` 1 makes a warning.
    // `stateNumber`, when not 0, is the library text that holds the five-character state code. `nativeError` is the
    // code of an outside party, 0 if none.
    KvError(std::uint16_t number, const char* text, kvCPType codePage, int errorType, std::uint16_t stateNumber,
            std::int64_t nativeError);
    KvError(std::uint16_t number, const char16_t* text, int errorType, std::uint16_t stateNumber,
            std::int64_t nativeError);
    // The shared errors; evaluated at compile time, so that they exist before any other static object.
    constexpr explicit KvError(ErrSpecialError kind)
        : number_(kind == ErrSpecialError::kMemory ? std::uint16_t{LibraryMessage::kMemoryError} : std::uint16_t{0}),
          flags_(static_cast<std::uint8_t>(kStatic | (kind == ErrSpecialError::kMemory ? kOutOfMemory : kDummy))) {}

    // Orders by record position, then by state code: 08S01, 01S01, the classes 03 to HZ, others, with IM before
    // anything else of its rank. Reads the library's catalog for states given by number.
    std::int16_t compare(const KvObject* other) const override;

    std::uint16_t number() const { return number_; }
    std::int64_t nativeError() const { return nativeError_; }
    std::uint16_t stateNumber() const { return stateNumber_; }
    kvCPType codePage() const { return codePage_; }
    std::int64_t recordPosition() const { return recordPosition_; }
    std::int64_t secondPosition() const { return secondPosition_; }
    bool isWarning() const { return (flags_ & kWarning) != 0; }
    bool isStatic() const { return (flags_ & kStatic) != 0; }
    bool isOutOfMemory() const { return (flags_ & kOutOfMemory) != 0; }
    bool isDummy() const { return (flags_ & kDummy) != 0; }

    // These change nothing on a static error, since all threads share it. Set what `compare` looks at before adding
    // the error to a list. The state is cut to five characters; null or "" removes it.
    void setErrorType(int errorType);
    void setState(const char16_t* state);
    void setPositions(std::int64_t recordPosition, std::int64_t secondPosition);

    // The text in the error's code page (that of the locale when it was given as UTF-16), or "Out Of Memory". The
    // error owns it; valid until the error changes or goes.
    const char* getErrorText() const;
    const char16_t* getErrorTextW() const;

    // The explicit state code, "" if none.
    const char16_t* getInterfaceCode() const { return state_; }

    // Append plain text (null appends nothing), 8-bit text in the error's code page. Return 0, or 1 after recording a
    // memory error. Nothing on a static error.
    int appendText(const char* text);
    int appendText(const char16_t* text);

    // Each fills the next place of the text (8-bit text in the error's code page) and returns this error, or the
    // current list's dummy error when memory runs out. Nothing on a static error.
    KvError& operator<<(const char16_t* value);
    KvError& operator<<(const char* value);
    KvError& operator<<(unsigned long value);
    KvError& operator<<(long value);
    KvError& operator<<(const KvSubString& value);
    KvError& operator<<(const KvSubStringW& value);

private:
    enum Flag : std::uint8_t { kWarning = 0x01, kStatic = 0x02, kOutOfMemory = 0x04, kDummy = 0x08 };
    static constexpr std::size_t kStateLength = 5;

    KvError& fillPlace(std::u16string_view value);
    KvError& fillPlace(std::string_view value);
    // The state code that orders this error; its first five characters count.
    std::u16string_view orderingState(char16_t (&buffer)[kLibraryTextSize]) const;

    std::int64_t nativeError_ = 0;
    std::uint16_t number_ = 0;
    std::uint16_t stateNumber_ = 0;
    KvParamStringW text_;
    kvCPType codePage_ = kCPUtf16;
    char16_t state_[kStateLength + 1] = {};
    std::int64_t recordPosition_ = -1;
    std::int64_t secondPosition_ = -1;
    std::uint8_t flags_ = 0;
    mutable KvString text8_;  // What getErrorText gave last.
};

// The two errors that all lists and threads share. They are never changed or deleted and exist from before the first
// constructor of a static object.
extern KvError MemoryError;
extern KvError DummyError;

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
    virtual KvError* allocError(std::uint16_t number, const char16_t* text, int errorType, std::uint16_t stateNumber,
                                std::int64_t nativeError);
    virtual KvError* allocError(std::uint16_t number, const char* text, kvCPType codePage, int errorType,
                                std::uint16_t stateNumber, std::int64_t nativeError);

    // The pending memory error, else the last element, else null. The list keeps owning it.
    KvError* getLastError();

    // Take the first or last element out; the caller owns it then, unless it is static. Both hand out the pending
    // memory error before any element, once. Null when there is nothing.
    KvError* removeFirstError();
    KvError* removeLastError();

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

    void install(void** slot);
    void uninstall();
    KvError* element(std::uint64_t index) const;
    KvError* takePendingMemoryError();

    void* owner_;
    bool keepAll_;
    bool memoryErrorPending_ = false;
    KvErrorList* previous_ = nullptr;
    void** slot_ = nullptr;  // Where this list is installed.
    std::uint64_t iteration_ = 0;
};

// Everything that happens to the calling thread's current list (slot 0 of its per-thread data). Without a list all of
// it is harmless.
class KvErrorKeeper {
public:
    // Makes `list` current, on top of the one that is; the caller keeps owning it. Pair with giveUpErrorList. The
    // second form uses the slot of the given record, whose thread must not run meanwhile, and leaves the store alone.
    static void setErrorList(KvErrorList* list);
    static void setErrorList(KvErrorList* list, KvThreadInfo* record);

    // Makes the list below current again. Returns the list that was current, null if there was none.
    static KvErrorList* giveUpErrorList();
    static KvErrorList* giveUpErrorList(KvThreadInfo* record);

    // The current list, or null.
    static KvErrorList* currentList();

    // Hands `error` to the current list. A list that does not keep all deletes it when it holds a real error already:
    // the first failure explains the ones it caused. Returns the error when it was added, else the dummy error; never
    // null.
    static KvError* addError(KvError* error);

    // What ramAddMemoryError does: makes the memory error the list's last one, in place of the last error of a list
    // that holds a real one already and does not keep all.
    static void addMemoryError();

    static KvError* getLastError();
    static std::uint16_t getLastErrorNumber();
    static std::int64_t getLastNativeError();
    // Type 1 makes the last error a warning, anything else an error.
    static void setLastErrorType(int errorType);
    // Append to the last error's text and clear its explicit state, which described the text as it was.
    static void appendTextToLastError(const char* text);
    static void appendTextToLastError(const char16_t* text);
    // Takes the last error out and deletes it; nothing when there is none.
    static void clearLastError();
    // What the current list's creator named as its owner; null without a list.
    static void* getOwnerOfList();
};

// Loads text `id` of the library's own catalog, opening the catalog when needed, into a buffer of kLibraryTextSize
// units or bytes. Returns the length; a text that is missing leaves "" and 0.
std::uint32_t winGetString(char16_t* buffer, std::uint32_t id);
std::uint32_t winGetString(char* buffer, std::uint32_t id);

// As addError(id), but a warning.
KvError* addWarning(std::uint16_t id);

// Records an error of an outside party with its own text and code. Returns as addError does.
KvError* addDatabaseError(std::uint16_t number, std::int64_t nativeError, const char* text, int errorType,
                          kvCPType codePage);

// Append library text `id` to the last error, clearing its explicit state, or to the one at position `pos`.
void appendTextToLastError(std::uint16_t id);
void appendTextToErrorAtPos(std::uint16_t id, std::uint64_t pos);
