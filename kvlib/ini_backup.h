// The copy of an INI file's text that stands beside the file while the file is rewritten, for the person whose program
// or machine ends in the middle. docs/ini-format.md tells its name and what can be lost.
#pragma once

#include <string>
#include <string_view>

class IniBackup {
public:
    IniBackup() = default;
    // Removes the copy unless it was kept.
    ~IniBackup();
    IniBackup(const IniBackup&) = delete;
    IniBackup& operator=(const IniBackup&) = delete;

    // Writes `text` to a new file beside `file`, with the permission of `file`, and waits until the disk has it. A file
    // that is there already is never touched. False with the reason recorded when there is no whole copy; nothing
    // is left then. May throw std::bad_alloc.
    bool make(const std::string& file, std::string_view text);

    void keep() { path_.clear(); }

private:
    int create(const std::string& file);

    std::string path_;  // empty without a copy
};
