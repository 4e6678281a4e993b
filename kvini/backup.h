// The copy of an INI file's text that stands beside the file while the file is rewritten, for the person whose program
// or machine ends in the middle. docs/ini-format.md tells its name and what can be lost.
#pragma once

#include <string>
#include <string_view>

// The copy stays until `remove` is called, so that it is there whatever goes wrong in between.
class IniBackup {
public:
    // Writes `text` to a new file beside `file`, with the permission of `file` or less, and waits until the disk has
    // it. A file that is there already is never touched. True without a copy where the folder takes none: that must not
    // keep users from saving. False with the reason recorded when the disk or the memory does not suffice; nothing is
    // left then. May throw std::bad_alloc, before there is a copy.
    [[nodiscard]] bool make(const std::string& file, std::string_view text);

    // Removes the copy, if there is one.
    void remove();

private:
    int create(const std::string& file);
    bool fill(int descriptor, std::string_view text) const;

    std::string path_;  // empty without a copy
};
