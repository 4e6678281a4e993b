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
    return isPlain(read.text) ? std::optional(std::move(read.text)) : std::nullopt;
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

// The value in the section that was asked for last. Many ask for one value of a long section, and to put it in order
// takes longer than to go through it once.
std::string_view ConfigurationReader::valueInSection(const std::string& key) {
    if (values_.empty() && !wasAsked_) {
        wasAsked_ = true;
        const auto found = std::find_if(entries_.begin(), entries_.end(),
                                        [&key](const IniLine& entry) { return sameName(entry.name, key); });
        return found == entries_.end() ? std::string_view() : found->value;
    }
    if (values_.empty()) {
        for (const IniLine& entry : entries_) {
            values_.emplace(foldedName(entry.name), entry.value);
        }
    }
    const auto found = values_.find(foldedName(key));
    return found == values_.end() ? std::string_view() : found->second;
}

std::string ConfigurationReader::readValue(const std::string& section, const std::string& key, std::size_t size) {
    if (!text_) {
        return installer::readValue(section, key, file_, size);
    }
    if (section_ != section) {
        section_ = section;
        entries_ = entriesIn(sectionIn(*text_, section));
        values_.clear();
        wasAsked_ = false;
    }
    return std::string(valueInSection(key).substr(0, size - 1));
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
