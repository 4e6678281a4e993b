// Zero-terminated 8-bit text: raw memory and string primitives (BUT*), routines that step by whole characters of a
// code page (str*), and conversion to and from UTF-16. Nothing here keeps state; every routine may be called from any
// thread. Only toUtf16 and fromUtf16 allocate.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// How 8-bit text is encoded, and so how the str* routines step through it.
enum kvCPType : short {
    kCPLocale = 1,  // The text of the process locale (mbrlen), by one byte before setlocale; converted with ICU's
                    // default converter.
    kCPUtf8 = 2,
    kCPUtf16 = 3,  // Marks text that was given as UTF-16; as 8-bit text it is stepped by one byte.
    kCPShiftJis = 932,
    kCPGbk = 936,
    kCPKorean = 949,
    kCPBig5 = 950
};

// Copies `n` bytes upward in memory, first to last. Correct for overlapping ranges too.
void BUTMEMCP(void* dst, const void* src, std::size_t n) noexcept;

// Copies `n` bytes, last to first, for moving a range up in memory. Correct for overlapping ranges too.
void BUTMMCPD(void* dst, const void* src, std::size_t n) noexcept;

// Compares `n` bytes as unsigned values: -1, 0 or 1; 0 when `n` is 0.
int BUTMMCMP(const void* a, const void* b, std::size_t n) noexcept;

// Copies `src` with its terminator; `dst` must have room for it. Returns the terminator written in `dst`.
char* BUTSTCPY(char* dst, const char* src) noexcept;

// Appends `src` at the terminator of `dst`, which must have room for it. Returns the new terminator.
char* BUTSTCAT(char* dst, const char* src) noexcept;

// Compares byte by byte as unsigned values: -1, 0 or 1.
int BUTSTCMP(const char* a, const char* b) noexcept;

// Length of `s` in bytes, without its terminator.
std::size_t BUTSTLEN(const char* s) noexcept;

// Copies at most `size` - 1 bytes of `src` and always terminates `dst`, which holds `size` bytes; with `size` 0
// nothing is written. The last byte of `dst` is zero afterwards even when `src` is shorter.
void strCopy(char* dst, std::size_t size, const char* src) noexcept;

// Copies exactly `n` bytes and writes a terminator at `dst[n]`; `dst` holds `n` + 1 bytes. Returns `dst + n`.
char* strCopy(char* dst, const char* src, std::size_t n) noexcept;

// Copies as much of `text` as fits `size` bytes with the terminator; with `size` 0 nothing is written. Returns the
// length of the copy.
std::size_t copyCut(char* dst, std::size_t size, std::string_view text) noexcept;

// Copies `text` when it fits `size` bytes with its terminator. False when it does not; `dst` is empty then, unless
// `size` is 0.
[[nodiscard]] bool copyWhole(char* dst, std::size_t size, std::string_view text) noexcept;

// Length of a zero-terminated UTF-16 text in 16-bit units.
std::size_t strLen(const char16_t* s) noexcept;

// True when `c` begins a character of a double-byte code page; never for single-byte pages and UTF-8.
bool kvIsLeadByte(char c, kvCPType cp) noexcept;

// True for blank, tab, line feed, vertical tab, form feed and carriage return, in every code page: a byte from 0x80
// up may be part of a longer character, so it never counts.
bool kvIsWhiteSpace(char c, kvCPType cp) noexcept;

// The start of the character after the one at `s`: one byte on, two at a lead byte, a whole sequence in UTF-8 and in
// other encodings of the locale.
// Never steps over the terminator: at the terminator `s` itself is returned.
const char* kvCharNext(const char* s, kvCPType cp) noexcept;
char* kvCharNext(char* s, kvCPType cp) noexcept;

// The same in counted text that ends before `end`, where a zero byte is an ordinary character.
const char* kvCharNext(const char* s, const char* end, kvCPType cp) noexcept;

// The first character position whose byte equals `ch`, or null; null in an empty `s` and for a zero `ch`.
const char* strFind(const char* s, char ch, kvCPType cp) noexcept;

// The first occurrence of `sub` at a character boundary of `s`, or null; an empty `sub` is never found.
const char* strFind(const char* s, const char* sub, kvCPType cp) noexcept;

// The same for counted texts, which need no terminator and may hold zero bytes.
const char* strFind(const char* s, std::size_t sLength, const char* sub, std::size_t subLength, kvCPType cp) noexcept;

// The last character position whose byte equals `ch`, or null.
const char* strFindReverse(const char* s, char ch, kvCPType cp) noexcept;

// Removes trailing white space in place; text of white space only becomes empty.
void strRightTrim(char* s, kvCPType cp) noexcept;

// Compares without regard to case: -1, 0 or 1. Single bytes are upper-cased by the process locale when they differ;
// characters of more than one byte must match exactly.
int strCompareCi(const char* a, const char* b, kvCPType cp = kCPLocale);

// Upper-cases in place by the multibyte encoding of the process locale (mbtowc) and Unicode's simple mapping (ICU
// u_toupper). Bytes that are no character of the locale, all from 0x80 up before setlocale, are left alone, and so
// are characters whose upper-case form needs another number of bytes.
void strUpper(char* s) noexcept;

// Converts 8-bit text to UTF-16 through ICU; what is malformed becomes U+FFFD. kCPUtf16 counts as kCPLocale.
// May throw std::bad_alloc, which C interfaces must catch.
[[nodiscard]] std::u16string toUtf16(std::string_view text, kvCPType cp);

// Converts UTF-16 to 8-bit text through ICU; what the code page lacks becomes its substitution character.
// kCPUtf16 counts as kCPLocale. May throw std::bad_alloc, which C interfaces must catch.
[[nodiscard]] std::string fromUtf16(std::u16string_view text, kvCPType cp);
