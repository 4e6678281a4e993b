#include "motifutil/text_verifiers.h"

#include <Xm/Text.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

// The bytes of the character at `text`, of which `left` bytes remain; an invalid sequence counts byte by byte.
std::size_t characterBytes(const char* text, std::size_t left, std::mbstate_t& state) {
    const std::size_t bytes = std::mbrlen(text, left, &state);
    if (bytes == 0 || bytes > left) {
        state = {};
        return 1;
    }
    return bytes;
}

// The byte offset of character number `position` in `text`, or its length when it has fewer characters. Motif counts
// positions in characters, and the field shows one asterisk for each.
std::size_t byteOffset(const char* text, XmTextPosition position) {
    const std::size_t length = std::strlen(text);
    std::size_t offset = 0;
    std::mbstate_t state{};
    for (; position > 0 && offset < length; --position) {
        offset += characterBytes(text + offset, length - offset, state);
    }
    return offset;
}

int countCharacters(const char* text, std::size_t length) {
    int count = 0;
    std::mbstate_t state{};
    for (std::size_t offset = 0; offset < length; ++count) {
        offset += characterBytes(text + offset, length - offset, state);
    }
    return count;
}

}  // namespace

void checkPassword(Widget /*widget*/, XtPointer clientData, XtPointer callData) {
    const auto* change = static_cast<XmTextVerifyCallbackStruct*>(callData);
    char*& password = *static_cast<char**>(clientData);
    if (change->reason == XmCR_ACTIVATE) {
        return;
    }
    if (password != nullptr && change->startPos < change->endPos) {
        char* start = password + byteOffset(password, change->startPos);
        const char* end = password + byteOffset(password, change->endPos);
        std::memmove(start, end, std::strlen(end) + 1);
    }
    if (change->text == nullptr || change->text->length <= 0) {
        return;
    }
    const auto added = static_cast<std::size_t>(change->text->length);
    const std::size_t length = password != nullptr ? std::strlen(password) : 0;
    const std::size_t start = password != nullptr ? byteOffset(password, change->startPos) : 0;
    char* grown = XtRealloc(password, static_cast<Cardinal>(length + added + 1));
    if (password == nullptr) {
        grown[0] = '\0';
    }
    password = grown;
    std::memmove(password + start + added, password + start, length - start + 1);
    std::memcpy(password + start, change->text->ptr, added);

    const int characters = countCharacters(change->text->ptr, added);
    std::fill_n(change->text->ptr, characters, '*');
    change->text->length = characters;
}

void discardNewLine(Widget /*widget*/, XtPointer /*clientData*/, XtPointer callData) {
    auto* change = static_cast<XmTextVerifyCallbackStruct*>(callData);
    if (change->text != nullptr && change->text->length == 1 && change->text->ptr[0] == '\n') {
        change->doit = False;
    }
}
