// Changes of ".odbc.ini", with the installer library as the judge: lines with a section, a key and a value, then the
// text of the file. What the library reads before and after differs in the change alone; a change that fails changes
// nothing.
#include "installer/configuration_change.h"

#include <strings.h>

#include <algorithm>
#include <vector>

#include "installer/configuration.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

namespace {

using installer::sameName;

struct Section {
    std::string name;
    std::vector<installer::Attribute> entries;
    bool operator==(const Section& other) const {
        return sameName(name, other.name) &&
               installer::attributeList(entries) == installer::attributeList(other.entries);
    }
};
using Sections = std::vector<Section>;

// All that the library can tell of the file; of sections with one name it reads the first.
Sections readAll(const std::string& text) {
    Sections sections;
    for (const std::string_view line : installer::splitLines(text)) {
        const std::string name(installer::parseIniLine(line.substr(0, installer::kLongestLine)).name);
        const bool isKnown = std::any_of(sections.begin(), sections.end(),
                                         [&name](const Section& section) { return sameName(section.name, name); });
        if (!name.empty() && !isKnown) {
            sections.push_back({name, {}});
            for (const std::string& key :
                 installer::listKeys(name, installer::kDataSourceFile, installer::Growth::kByDoubling).names) {
                sections.back().entries.push_back({key, installer::readValue(name, key, installer::kDataSourceFile)});
            }
        }
    }
    std::erase_if(sections, [](const Section& section) { return section.entries.empty(); });
    return sections;
}

void set(Sections& sections, const std::string& section, const std::string& key, const std::string& value) {
    auto place = std::find_if(sections.begin(), sections.end(),
                              [&section](const Section& other) { return sameName(other.name, section); });
    if (place == sections.end()) {
        place = sections.insert(place, {section, {}});
    }
    bool isFirst = true;
    for (installer::Attribute& entry : place->entries) {
        if (sameName(entry.key, key)) {
            entry = {isFirst ? key : entry.key, value};
            isFirst = false;
        }
    }
    if (isFirst) {
        place->entries.push_back({key, value});
    }
}

void erase(Sections& sections, const std::string& section, const std::string& key) {
    for (Section& other : sections) {
        if (sameName(other.name, section)) {
            std::erase_if(other.entries, [&key](const auto& entry) { return sameName(entry.key, key); });
        }
    }
    std::erase_if(sections, [](const Section& other) { return other.entries.empty(); });
}

bool isPlainName(const std::string& name) {
    return !name.empty() && name == installer::trimmed(name) && name.find_first_of("[]=;#\r") == std::string::npos;
}

// Of a line with a zero byte the library reads what stands before it, and its lists end at a key without a name.
bool canBeListed(const std::string& text) {
    const std::vector<std::string_view> lines = installer::splitLines(text);
    return text.find('\0') == std::string::npos && std::all_of(lines.begin(), lines.end(), [](std::string_view line) {
               const installer::IniLine parsed = installer::parseIniLine(line);
               return parsed.kind == installer::IniLineKind::kNothing || !parsed.name.empty();
           });
}

bool sameInAnyOrder(Sections some, Sections others) {
    const auto byName = [](const Section& a, const Section& b) {
        return strcasecmp(a.name.c_str(), b.name.c_str()) < 0;
    };
    std::sort(some.begin(), some.end(), byName);
    std::sort(others.begin(), others.end(), byName);
    return some == others;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    static const std::string file = folder.path("odbc.ini");
    setenv("ODBCINI", file.c_str(), 1);
    installer::useUserConfiguration();
    std::string_view rest = asText(data, size);
    const std::string section = takeLine(rest);
    const std::string key = takeLine(rest);
    const std::string value = installer::trimmed(takeLine(rest));
    const std::string text(rest);
    if (!isPlainName(section) || !isPlainName(key) || !canBeListed(text)) {
        return 0;
    }
    for (const bool deletes : {false, true}) {
        folder.write("odbc.ini", text);
        Sections expected = readAll(text);
        installer::ConfigurationChange change;
        change.write(section, key, deletes ? nullptr : value.c_str());
        if (change.commit()) {
            require(folder.read("odbc.ini") == text, "a change that fails changes nothing");
            continue;
        }
        if (deletes) {
            erase(expected, section, key);
        } else {
            set(expected, section, key, value);
        }
        require(sameInAnyOrder(readAll(folder.read("odbc.ini")), expected),
                "the library reads the change and no other");
    }
    return 0;
}
