#include "installer/configuration_reader.h"

#include <odbcinst.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "installer/file_replacement.h"
#include "installer/plain_text.h"
#include "installer/private_file.h"

namespace installer {

namespace {

// Which file the library would read, as far as it is a single one; empty otherwise. Whatever has "odbcinst" in its name
// it takes for its file of drivers.
std::string pathOf(const std::string& file) {
    if (file == kDataSourceFile) {
        UWORD mode = ODBC_BOTH_DSN;
        SQLGetConfigMode(&mode);
        return mode == ODBC_BOTH_DSN ? std::string() : dataSourcePath();
    }
    const bool isFile = file.starts_with('/') && file.find("odbcinst") == std::string::npos &&
                        file.find("ODBCINST") == std::string::npos;
    return isFile ? file : std::string();
}

std::optional<std::string> readPlainText(const std::string& file) {
    FileText read;
    const std::string path = pathOf(file);
    if (path.empty() || !readFile(path, read) || !read.status) {
        return std::nullopt;
    }
    // Several parts of a window read one file after the other.
    static std::string lastPlain;
    if (read.text != lastPlain) {
        if (!isPlain(read.text)) {
            return std::nullopt;
        }
        lastPlain = read.text;
    }
    return std::move(read.text);
}

}  // namespace

ConfigurationReader::ConfigurationReader(std::string file) : file_(std::move(file)), text_(readPlainText(file_)) {}

NameList ConfigurationReader::listKeys(const std::string& section, Growth growth) {
    if (text_) {
        const std::string_view part = sectionIn(*text_, section);
        const PrivateFile copy;
        if (copy && copy.write(std::string(part))) {
            const bool isNamedByLibrary = file_ == kDataSourceFile;
            const CopyForLibrary asFile(copy.path());
            const std::vector<IniLine> entries = entriesIn(part);
            const std::size_t size =
                std::accumulate(entries.begin(), entries.end(), std::size_t{0},
                                [](std::size_t sum, const IniLine& entry) { return sum + entry.name.size() + 1; });
            NameList list = installer::listKeys(section, isNamedByLibrary ? file_ : copy.path(), growth, size);
            if (std::equal(list.names.begin(), list.names.end(), entries.begin(), entries.end(),
                           [](const std::string& key, const IniLine& entry) { return key == entry.name; })) {
                return list;
            }
        }
        text_.reset();
    }
    return installer::listKeys(section, file_, growth);
}

void ConfigurationReader::index(const std::string& section) {
    values_.clear();
    for (const IniLine& entry : entriesIn(sectionIn(*text_, section))) {
        values_.emplace(foldedName(entry.name), entry.value);
    }
    indexed_ = section;
}

std::string ConfigurationReader::readValue(const std::string& section, const std::string& key, std::size_t size) {
    if (!text_) {
        return installer::readValue(section, key, file_, size);
    }
    if (indexed_ != section) {
        index(section);
    }
    const auto found = values_.find(foldedName(key));
    return found == values_.end() ? std::string() : std::string(found->second.substr(0, size - 1));
}

std::vector<Attribute> ConfigurationReader::readSection(const std::string& section) {
    std::vector<Attribute> attributes;
    for (std::string& key : listKeys(section, Growth::kByDoubling).names) {
        std::string value = readValue(section, key);
        attributes.push_back({std::move(key), std::move(value)});
    }
    return attributes;
}

std::vector<Attribute> readSection(const std::string& section, const std::string& file) {
    return ConfigurationReader(file).readSection(section);
}

}  // namespace installer
