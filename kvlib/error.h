// One error or warning: a number, a text with places for values, and a state code. An error belongs to one thread and
// is not locked. Nothing here throws; a failed allocation is recorded as a memory error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "catalogs/message_numbers.h"
#include "kvlib/kv_object.h"
#include "kvlib/kv_string.h"
#include "kvlib/kv_string_w.h"
#include "kvlib/library_text.h"
#include "kvlib/text.h"

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

    std::uint16_t number() const noexcept { return number_; }
    std::int64_t nativeError() const noexcept { return nativeError_; }
    std::uint16_t stateNumber() const noexcept { return stateNumber_; }
    kvCPType codePage() const noexcept { return codePage_; }
    std::int64_t recordPosition() const noexcept { return recordPosition_; }
    std::int64_t secondPosition() const noexcept { return secondPosition_; }
    bool isWarning() const noexcept { return (flags_ & kWarning) != 0; }
    bool isStatic() const noexcept { return (flags_ & kStatic) != 0; }
    bool isOutOfMemory() const noexcept { return (flags_ & kOutOfMemory) != 0; }
    bool isDummy() const noexcept { return (flags_ & kDummy) != 0; }

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
    const char16_t* getInterfaceCode() const noexcept { return state_; }

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

// Deletes an error that is neither null nor static.
void destroyUnlessStatic(KvError* error);
