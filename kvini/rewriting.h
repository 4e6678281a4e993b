// One rewriting of an INI file, from its lock to its new text. A copy of the old text stands beside the file while it
// is rewritten, where the folder takes one (kvini/backup.h).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "kvini/file_turn.h"

// The file at a path, open and locked against the rewritings of other programs and of other threads, until this object
// goes. Functions return false with the reason recorded.
class LockedIniFile {
public:
    explicit LockedIniFile(const std::string& path) : path_(path) {}
    ~LockedIniFile() { close(); }
    LockedIniFile(const LockedIniFile&) = delete;
    LockedIniFile& operator=(const LockedIniFile&) = delete;

    // Waits for other threads and not for other programs: another program's lock fails it with kFileBusy. The file is
    // as it was.
    [[nodiscard]] bool open();

    // Reads the whole text. `isWhole` is false when the file's length changed meanwhile: some programs rewrite it
    // without a lock. May throw std::bad_alloc.
    [[nodiscard]] bool read(std::string& text, bool& isWhole) const;

    // Makes `text` the whole of the file, which holds `oldText`. On failure the old text is put back, and where even
    // that fails, the copy stays. May throw std::bad_alloc, before the file is touched.
    [[nodiscard]] bool replaceText(std::string_view oldText, std::string_view text);

    // Lets the others have the file.
    void close();

private:
    int openAs(std::uint32_t flags);
    int openLocked();
    bool write(std::string_view text) const;
    bool putBack(std::string_view oldText);

    const std::string& path_;
    std::optional<FileTurn> turn_;
    std::uint32_t flags_ = 0;  // those that opened the file
    int descriptor_ = 0;       // 0 when not open
};
