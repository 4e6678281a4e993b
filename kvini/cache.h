// INI files held in memory: looked up in place, rewritten whole on every change, and read again when another program
// changed them. docs/ini-format.md tells the grammar and where the files are.
//
// Lookups never fail: whatever goes wrong yields the default. Updates return 1 when written, else 0 with the reason on
// the calling thread's current error list. Unless a declaration says otherwise, everything may be called from any
// thread while the cache exists. The text in memory is that of the file at the last call; lookups do not see a change
// by another program that keeps both size and modification second.
//
// An update locks byte 1 of the file (bos/file.h) against the updates of other programs; readers take no lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvini/grammar.h"
#include "kvlib/critical_section.h"
#include "kvlib/kv_object.h"

class KvIniFileCache : public KvObject {
public:
    KvIniFileCache() = default;
    ~KvIniFileCache() override;

    // Loads the file `name` (a configuration file's name or a path) with the open flags `flags` (bos/file.h) on top of
    // name recognition and read/write; a file that can only be read is loaded for reading. Returns 0, or 1 with the
    // failure recorded as a warning. A missing driver file counts as success and leaves the cache unloaded, so that
    // all lookups yield their defaults. Takes no lock: for a cache that no other thread can reach yet.
    [[nodiscard]] std::uint32_t bosKvIniOpen(const char* name, std::uint32_t flags);

    // Loads the file again if its date or size changed. Returns 0 when the text is current, else 1.
    std::uint32_t proFileSync();

    // Copies the value of `entry` in `section` into `buffer` (at most `size` - 1 bytes, always terminated unless `size`
    // is 0) and returns its length; a value that does not fit, one of exactly `size` bytes included, is cut and `size`
    // is returned, so that callers can tell. Values count up to 2,047 bytes; names may have any length.
    // A missing or empty value is replaced by `defaultText` (null means ""), cut to the buffer; the copy's length is
    // returned. A null `entry` lists the keys of the section and a null `section` all sections, as listIniKeys and
    // listIniSections (kvini/grammar.h) say; the default stands for a list of keys that is not there.
    unsigned long bosGetProfileString(const char* section, const char* entry, const char* defaultText, char* buffer,
                                      unsigned long size);

    // The same on UTF-16, converted by the code page of the locale; `size` and the result count units, and a cut list
    // has two zero units at its end.
    unsigned long bosGetProfileStringW(const char16_t* section, const char16_t* entry, const char16_t* defaultText,
                                       char16_t* buffer, unsigned long size);

    // bosGetProfileString with a null entry and no default.
    unsigned long bosGetProfileSection(const char* section, char* buffer, unsigned long size);

    // The number that the value begins with, or `defaultValue` when it begins with none or does not fit 32 bits.
    std::uint32_t bosGetProfileInt(const char* section, const char* entry, std::uint32_t defaultValue);

    // Stores `value` under `entry` in `section`; a null value removes the entry, a null entry the section. A new entry
    // becomes the first of its section, a new section the last of the file. The file is rewritten even when nothing
    // changes, and a copy of the old text stands beside it meanwhile, where the folder takes one (kvini/backup.h).
    // When the new text can't be written whole, the old one is put back and the result is 0; where even that fails, the
    // copy stays. What is updated is what the file holds once it is locked; while another program has it locked, the
    // update fails at once. A file that another program rewrites without a lock is waited for, up to 0.1 seconds and
    // under the cache's lock; an empty one, which may be about to be rewritten, for 0.01 seconds.
    [[nodiscard]] int bosPutProfileString(const char* section, const char* entry, const char* value);

    // Forgets path and text. Takes no lock, as bosKvIniOpen.
    void Close();

    // How many users share the cache; it starts with one. Both return the new count.
    std::uint32_t incrementUseCount();
    std::uint32_t decrementUseCount();

private:
    friend class KvIniFileCacheList;

    enum class State : std::int32_t { kNotLoaded = 0, kLoaded = 1 };
    enum class Opening { kOpened, kNothingToRead, kFailed };
    struct ReadCall;

    // For KvIniFileCacheList: loads the file unless that was done, also when `flags` are to create it and it is gone.
    // False when it never could be opened.
    bool openShared(const char* name, std::uint32_t flags);

    // All of these are called under the lock.
    std::uint32_t load(const std::string& name, std::uint32_t flags);
    Opening openForLoading(const std::string& name);
    int tryToOpen(const std::string& name);
    std::uint32_t readText();
    std::uint32_t sync();
    std::uint32_t reload(const char* name, std::uint32_t flags);
    bool isCurrent();
    bool rewrite(const char* section, const char* entry, const char* value, IniChange& change);
    unsigned long readString(const char* section, const char* entry, const char* defaultText, char* buffer,
                             unsigned long size, bool& found);
    unsigned long read(const ReadCall& call, bool& found);
    bool copyValue(const ReadCall& call, unsigned long& length) const;
    bool copyKeys(const ReadCall& call, unsigned long& length) const;
    void closeDescriptor();

    std::int32_t descriptor_ = 0;  // 0 unless the file is being read
    std::uint64_t size_ = 0;
    std::uint32_t openFlags_ = 0;
    std::string path_;
    std::uint32_t date_ = 0;
    // Changed without the lock by the list, which must not wait for an update.
    std::atomic<std::uint32_t> useCount_ = 1;
    std::string listedPath_;  // the list's own, under its lock
    bool wasOpened_ = false;
    std::string text_;
    State state_ = State::kNotLoaded;
    KvSemaphore lock_;
};
