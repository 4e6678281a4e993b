// The one place that asks the ODBC installer library for the configuration of data sources and drivers, which
// installer/configuration_change.h changes.
// It knows what the library leaves to its callers: lists that are cut without a word, negative lengths, values cached
// for seconds, names left behind by a removal. Every reading function looks into the files anew; who asks for many
// values takes a ConfigurationReader. GUI thread only: the installer library keeps process-wide state.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace installer {

inline constexpr const char* kDataSourceFile = ".odbc.ini";
inline constexpr const char* kDriverFile = ".odbcinst.ini";
inline constexpr const char* kDataSourceList = "ODBC Data Sources";

// The longest name, value or line that the installer library keeps; the rest is cut by it.
inline constexpr std::size_t kLongestName = 1000;

// The longest "key=value" line that it reads back whole. Of a longer one it makes two lines at its next write, so
// nobody may write one.
inline constexpr std::size_t kLongestLine = 999;

// How the buffer for a list grows until the whole list fits. Both rules begin with a buffer of 2,048 bytes.
enum class Growth { kByKilobyte, kByDoubling };

// A list of names and the byte count that the installer library reported for it: the names with one terminator each,
// below 1 for a list that could not be read or is empty.
struct NameList {
    int length = 0;
    bool isCut = false;  // There is more than the library can tell.
    std::vector<std::string> names;
};

// Limits all reads and writes of ".odbc.ini" to the user's own file (SQLSetConfigMode, ODBC_USER_DSN). By default the
// library means the system's file as well. Call it at start-up, and after foreign code such as a driver's setup ran.
void useUserConfiguration() noexcept;

// The same while it lives, for code that others call: a caller that chose the system's data sources gets those, and the
// mode that was set before comes back. Setting the mode empties the list of installer errors, so post afterwards.
class WritableConfiguration {
public:
    WritableConfiguration();
    ~WritableConfiguration();
    WritableConfiguration(const WritableConfiguration&) = delete;
    WritableConfiguration& operator=(const WritableConfiguration&) = delete;

private:
    unsigned short modeBefore_;
};

// Keeps the memory that one read took for the next. The library builds the whole file in memory for each value that it
// is asked for, some 13 MB for 1,000 data sources; given back to the system after each value, that is most of the time
// that a long list takes to fill. For the whole process, so only for programs: call it once at start-up (mallopt(3)).
void keepMemoryBetweenReads() noexcept;

// Where the library has the user's data sources (ODBC_USER_DSN): the file named by ODBCINI, else ".odbc.ini" in the
// home directory of the password entry, whatever HOME says.
[[nodiscard]] std::string userDataSourcePath();

// Where the library has data sources in its present mode: the user's, or the system's.
[[nodiscard]] std::string dataSourcePath();

// False when there is a user's ".odbc.ini" that can't be read, for want of permission or because it is no file. To the
// library that looks like an empty one. One that is missing is no failure.
[[nodiscard]] bool isDataSourceFileReadable();

// The keys of `section` in `file`, in file order, never cut short. What an absolute path names is looked at only when
// it is a regular file. Sizes in which `expected` bytes would not be a whole list are passed over.
[[nodiscard]] NameList listKeys(const std::string& section, const std::string& file, Growth growth,
                                std::size_t expected = 0);

// The value of `key`, at most `size` - 1 bytes of it; empty when missing, empty, or when the file can't be read.
[[nodiscard]] std::string readValue(const std::string& section, const std::string& key, const std::string& file,
                                    std::size_t size = 1024);

// The installed drivers in file order; the library tells at most 65,535 bytes of them.
[[nodiscard]] NameList listDrivers();

struct Attribute {
    std::string key;
    std::string value;
};

// The form in which attributes pass to a driver's setup library: "key=value" strings, each with a terminator, and one
// more terminator at the end (ODBC ConfigDSN, lpszAttributes).
[[nodiscard]] std::string attributeList(const std::vector<Attribute>& attributes);

// The items of such a list, whatever they hold; none of a null list.
[[nodiscard]] std::vector<std::string> attributeItems(const char* list);
// The same list once more, with all its terminators; empty for a null list.
[[nodiscard]] std::string copyOfAttributeList(const char* list);

// Without the blanks at both ends, which configuration files do not keep.
[[nodiscard]] std::string trimmed(std::string_view text);
[[nodiscard]] std::string_view trimmedView(std::string_view text);
// One line of it: without the blanks at both ends, and with line breaks, tabs and runs of blanks inside as one blank
// each.
[[nodiscard]] std::string oneLine(std::string_view text);

// Whether the key is one of a password: its value is never shown, and a file that holds one is its owner's alone.
[[nodiscard]] bool isPasswordKey(std::string_view key);

// Whether a data source may have this name (SQLValidDSN): its length and characters.
[[nodiscard]] bool isValidDataSourceName(const std::string& name);

// Leaves an error for the installer library's caller to find in SQLInstallerError (SQLPostInstallerError). `code` is
// one of the ODBC_ERROR codes. An empty text would be dropped with its code. Most calls of this header empty the list
// again.
void postError(unsigned int code, const std::string& text);

// Whether two section or key names mean the same to the installer library: ASCII case does not count.
[[nodiscard]] bool sameName(std::string_view a, std::string_view b) noexcept;
// The one spelling of all names that mean the same, for tables.
[[nodiscard]] std::string foldedName(std::string_view name);

}  // namespace installer
