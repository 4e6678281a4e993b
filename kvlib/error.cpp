#include "kvlib/error.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "kvlib/error_report.h"
#include "kvlib/out_of_memory.h"

constinit KvError MemoryError{ErrSpecialError::kMemory};
constinit KvError DummyError{ErrSpecialError::kDummy};

namespace {

constexpr const char* kMemoryText = "Out Of Memory";
constexpr const char16_t* kMemoryTextW = u"Out Of Memory";

template <typename Char>
std::basic_string_view<Char> viewOrEmpty(const Char* text) {
    return text == nullptr ? std::basic_string_view<Char>() : std::basic_string_view<Char>(text);
}

// The rank of a state by its code alone; smaller sorts first.
int exactRank(std::u16string_view state) {
    if (state == u"08S01") {
        return 0;
    }
    return state == u"01S01" ? 1 : 2;
}

int classRank(std::u16string_view state) {
    std::u16string_view stateClass = state.substr(0, 2);
    return stateClass >= u"03" && stateClass <= u"HZ" ? 0 : 1;
}

int driverManagerRank(std::u16string_view state) {
    return state.starts_with(u"IM") ? 0 : 1;
}

}  // namespace

KvError::KvError(std::uint16_t number, const char* text, kvCPType codePage, int errorType, std::uint16_t stateNumber,
                 std::int64_t nativeError)
    : nativeError_(nativeError), number_(number), stateNumber_(stateNumber), codePage_(codePage) {
    text_.initialize(viewOrEmpty(text), codePage_);
    setErrorType(errorType);
}

KvError::KvError(std::uint16_t number, const char16_t* text, int errorType, std::uint16_t stateNumber,
                 std::int64_t nativeError)
    : nativeError_(nativeError), number_(number), stateNumber_(stateNumber) {
    text_.initialize(viewOrEmpty(text));
    setErrorType(errorType);
}

std::int16_t KvError::compare(const KvObject* other) const {
    const auto& that = static_cast<const KvError&>(*other);
    if (recordPosition_ != that.recordPosition_) {
        return recordPosition_ < that.recordPosition_ ? -1 : 1;
    }
    char16_t buffer[kLibraryTextSize];
    char16_t thatBuffer[kLibraryTextSize];
    std::u16string_view state = orderingState(buffer);
    // A state that the other error was given explicitly does not count: this error's own explicit state stands in for
    // it. The order in which errors come out, which callers have come to expect, rests on that.
    std::u16string_view thatState =
        that.state_[0] != u'\0' ? std::u16string_view(state_) : that.orderingState(thatBuffer);
    for (int (*rank)(std::u16string_view) : {exactRank, classRank, driverManagerRank}) {
        int difference = rank(state) - rank(thatState);
        if (difference != 0) {
            return difference < 0 ? -1 : 1;
        }
    }
    return 0;
}

std::u16string_view KvError::orderingState(char16_t (&buffer)[kLibraryTextSize]) const {
    if (state_[0] != u'\0') {
        return state_;
    }
    if (stateNumber_ != 0) {
        std::uint32_t length = winGetString(buffer, stateNumber_);
        return std::u16string_view(buffer, length).substr(0, kStateLength);
    }
    return isOutOfMemory() ? u"HY001" : u"HY000";
}

void KvError::setErrorType(int errorType) {
    if (!isStatic()) {
        flags_ = static_cast<std::uint8_t>(errorType == kErrorTypeWarning ? flags_ | kWarning : flags_ & ~kWarning);
    }
}

void KvError::setState(const char16_t* state) {
    if (!isStatic()) {
        std::u16string_view given = viewOrEmpty(state).substr(0, kStateLength);
        *std::copy(given.begin(), given.end(), state_) = u'\0';
    }
}

void KvError::setPositions(std::int64_t recordPosition, std::int64_t secondPosition) {
    if (!isStatic()) {
        recordPosition_ = recordPosition;
        secondPosition_ = secondPosition;
    }
}

const char* KvError::getErrorText() const {
    if (isOutOfMemory()) {
        return kMemoryText;
    }
    if (text_.isEmpty()) {
        return "";
    }
    text8_.unInitialize();
    const int failed =
        orMemoryError(1, [this] { return text8_.initialize(fromUtf16(text_.view(), codePage_).c_str()); });
    return failed == 0 ? text8_.data() : kMemoryText;
}

const char16_t* KvError::getErrorTextW() const {
    return isOutOfMemory() ? kMemoryTextW : text_.text();
}

int KvError::appendText(const char* text) {
    return isStatic() ? 0 : text_.concat(viewOrEmpty(text), codePage_);
}

int KvError::appendText(const char16_t* text) {
    return isStatic() ? 0 : text_.concat(viewOrEmpty(text));
}

KvError& KvError::fillPlace(std::u16string_view value) {
    return isStatic() || text_.setParam(value) == 0 ? *this : *currentDummyError();
}

KvError& KvError::fillPlace(std::string_view value) {
    return isStatic() || text_.setParam(value, codePage_) == 0 ? *this : *currentDummyError();
}

KvError& KvError::operator<<(const char16_t* value) {
    return fillPlace(viewOrEmpty(value));
}

KvError& KvError::operator<<(const char* value) {
    return fillPlace(viewOrEmpty(value));
}

KvError& KvError::operator<<(unsigned long value) {
    char digits[24];
    return fillPlace(std::string_view(digits, std::to_chars(digits, std::end(digits), value).ptr));
}

KvError& KvError::operator<<(long value) {
    char digits[24];
    return fillPlace(std::string_view(digits, std::to_chars(digits, std::end(digits), value).ptr));
}

KvError& KvError::operator<<(const KvSubString& value) {
    return fillPlace(value.view());
}

KvError& KvError::operator<<(const KvSubStringW& value) {
    return fillPlace(value.view());
}

void destroyUnlessStatic(KvError* error) {
    if (error != nullptr && !error->isStatic()) {
        delete error;
    }
}
