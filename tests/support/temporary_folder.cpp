#include "tests/support/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : path_((fs::temp_directory_path() / "vh-test-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::write(std::string_view name, std::string_view text) const {
    std::string file = path(name);
    fs::create_directories(fs::path(file).parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file;
}

std::string TemporaryFolder::read(std::string_view name) const {
    const std::ifstream file(path(name), std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return file ? text.str() : "(missing)";
}

std::string TemporaryFolder::makeCatalog(std::string_view name, const std::map<int, std::string>& texts) const {
    std::string source = "$ codeset=UTF-8\n$set 1\n";
    for (const auto& [number, text] : texts) {
        source += std::to_string(number) + " " + text + "\n";
    }
    const std::string sourceFile = write(std::string(name) + ".msg", source);
    std::string catalog = path(name);
    if (std::system(("gencat '" + catalog + "' '" + sourceFile + "'").c_str()) != 0) {
        throw std::runtime_error("gencat failed");
    }
    return catalog;
}
