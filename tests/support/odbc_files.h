// The ODBC configuration of a test.
#pragma once

#include <string>
#include <string_view>

#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

// An empty home with configuration files, named by the environment. The installer library remembers the first folder of
// the driver file that it meets, so all tests of a process have the same folder, emptied before and after each.
class OdbcFiles {
public:
    OdbcFiles();
    ~OdbcFiles();

    static constexpr const char* kUser = ".odbc.ini";
    static constexpr const char* kSystem = "odbc.ini";
    static constexpr const char* kDrivers = "odbcinst.ini";
    std::string path(std::string_view name) const { return folder().path(name); }
    std::string write(std::string_view name, std::string_view text) const { return folder().write(name, text); }
    std::string read(std::string_view name) const { return folder().read(name); }

    // The sections of the user's file in order, without the blanks around "=": "Section{line|line} Section{line}".
    std::string summary() const;
    // The lines of one of them, "(none)" without it.
    std::string section(const std::string& name) const;

private:
    static const TemporaryFolder& folder();
    static void empty();

    ScopedEnvironment environment_;
};
