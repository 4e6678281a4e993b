// A folder of its own for each test.
#pragma once

#include <map>
#include <string>
#include <string_view>

// Made empty, and removed with everything in it. Names are relative to the folder.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }

    // Writes a file, its folders included, and returns its path.
    std::string write(std::string_view name, std::string_view text) const;
    // The whole file, or "(missing)".
    std::string read(std::string_view name) const;
    // Makes a message catalog with gencat. Returns its path.
    std::string makeCatalog(std::string_view name, const std::map<int, std::string>& texts) const;

private:
    std::string path_;
};
