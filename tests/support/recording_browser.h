// A browser that writes down the addresses that it is to show, for tests of whoever opens help.
#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <string>

#include "tests/support/program.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_folder.h"

// Makes a program of `name` in the folder.
inline void writeScript(const TemporaryFolder& folder, const std::string& name, const std::string& actions) {
    chmod(folder.write(name, "#!/bin/sh\n" + actions + "\n").c_str(), 0755);
}

// A browser without remote control: it appends the address to `file` and removes the launcher's temporary file.
inline std::string recordAddress(const std::string& file) {
    return "[ \"$1\" = -remote ] || {\necho \"$1\" >>'" + file + "'\nrm -f \"$(readlink /proc/$$/fd/2)\"\n}";
}

// The first browser of PATH while it lives; the help book is said to be in /book.
class RecordingBrowser {
public:
    RecordingBrowser() {
        writeScript(folder_, "iexplorer", recordAddress(folder_.path("opened")));
        folder_.write("odbcinst.ini", "[Administrator]\nHelpRootDirectory=/book\n");
    }
    // The topics opened so far, as soon as there are so many.
    std::string topics(long count) const {
        std::string text;
        waitUntil([&] {
            text = folder_.read("opened");
            return std::count(text.begin(), text.end(), '\n') >= count;
        });
        for (const std::string around : {"File:////book/wwhelp/wwhimpl/api.htm?context=ODBC&topic=", "&single=true"}) {
            for (std::size_t at = 0; (at = text.find(around)) != std::string::npos;) {
                text.erase(at, around.size());
            }
        }
        return text;
    }

private:
    TemporaryFolder folder_;
    ScopedEnvironment environment_{{"PATH", folder_.path() + ":/usr/bin:/bin"},
                                   {"ODBCINST", folder_.path("odbcinst.ini")}};
};
