// The one way in which configuration files are changed: ".odbc.ini", the driver file, and file data sources that are
// there already. The ODBC installer library makes the change, on a private copy, and so is the judge of what the file
// then says; what is put into the place of the file is its old text with that change alone. docs/careful-writing.md
// tells the rules.
// GUI thread only: the library is told of the copy through the environment.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "installer/file_replacement.h"
#include "installer/ini_text.h"

namespace installer {

class PrivateFile;

// Why a file was not changed. It is then as it was, but for kLeftHalf.
struct ChangeFailure {
    enum Reason {
        kSystem,       // `error` says what the system did not do.
        kBadLine,      // The library can't keep line number `line` of the file.
        kRefused,      // The library refuses the change.
        kLineTooLong,  // What is to be written does not fit into a line, or has a line break in it.
        kBusy,         // Others changed the file again and again.
        kLeftHalf      // As kSystem, and the old text, which could not be put back, is in the file `copy`.
    };
    Reason reason = kSystem;
    std::string file;
    int error = 0;  // An errno.
    int line = 0;
    std::string copy{};
};

// Why no change of the file `path` can be made, as far as its text tells: the library can't read it, and would find
// nothing there.
[[nodiscard]] std::optional<ChangeFailure> findReadFailure(const std::string& path);

class ConfigurationChange {
public:
    // A change of the file in which the library has data sources in its present mode (SQLSetConfigMode): the user's, or
    // the system's. What the user's file was before the first change of a run of the program is kept beside it, under
    // its name with a "~".
    ConfigurationChange();
    // A change of the file data source `path`, or of the driver file (driverFilePath()). `startsAnew` forgets what it
    // holds now.
    explicit ConfigurationChange(const std::string& path, bool startsAnew = false);

    // What is to be done, in this order. A null `value` deletes the key, as often as it stands in the section. Blanks
    // at the ends are left out: no reader gets them.
    void write(const std::string& section, const std::string& key, const char* value);
    // Removes a section, as often as it stands there.
    void removeSection(const std::string& section);
    // Removes a data source, its section and its line in the list of names.
    void removeDataSource(const std::string& name);
    // The file is to be readable for its owner alone.
    void makeOwnerOnly() { permission_ = Permission::kOwnerOnly; }

    // Does it: all of it, or nothing and the reason. A file that has all of it already is not touched.
    [[nodiscard]] std::optional<ChangeFailure> commit() const;

private:
    struct Step {
        enum Kind { kSet, kDeleteKey, kDeleteSection } kind;
        std::string section;
        std::string key;
        std::string value;
    };

    struct Division;

    static bool apply(const Step& step, IniText& text);
    static bool applyByLibrary(const Step& step, const std::string& file);
    static bool isMeant(const Step& step, const std::string& section, const IniLine& line);
    static bool anyNames(std::span<const Step> steps, std::string_view section);
    static std::vector<std::string> findPreceding(std::string_view plainText, std::span<const Step> steps);
    static Division divide(std::string_view plainText, std::span<const Step> steps,
                           const std::vector<std::string>& preceding);
    std::vector<Step> stepsFor(const std::string& text) const;
    bool fitsIntoLines() const;
    int findLostLine(const std::string& before, const std::string& after) const;
    std::optional<ChangeFailure> make(std::span<const Step> steps, const PrivateFile& copy, std::string& text) const;
    bool makeInParts(std::span<const Step> steps, const PrivateFile& copy, std::string& text) const;
    std::optional<ChangeFailure> findNewText(const FileText& old, std::string& text) const;

    std::string path_;
    bool isDataSourceFile_;
    bool startsAnew_ = false;
    Permission permission_ = Permission::kKept;
    std::vector<Step> steps_;
};

}  // namespace installer
