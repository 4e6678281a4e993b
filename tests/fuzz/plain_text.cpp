// Which texts are plain, with the installer library as the judge: of each that is said to be, it finds the sections,
// keys and values that we find, in the same order, and the reader of files tells the same. The input is the text, or
// names lines and what stands in them by their numbers, so that most texts are plain or nearly so.
#include "installer/plain_text.h"

#include <odbcinst.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <vector>

#include "installer/configuration_reader.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

namespace {

using installer::Growth;
using Names = std::vector<std::string>;

constexpr std::size_t kMostOfALine = 1010;

class Numbers {
public:
    explicit Numbers(std::string_view bytes) : bytes_(bytes) {}
    bool areLeft() const { return !bytes_.empty(); }
    std::size_t next() {
        const auto number = static_cast<unsigned char>(bytes_.empty() ? '\0' : bytes_.front());
        bytes_.remove_prefix(std::min<std::size_t>(1, bytes_.size()));
        return number;
    }
    std::string pick(std::string_view some) { return std::string(1, some[next() % some.size()]); }
    // What was not there before.
    std::string takeNew() { return std::to_string(++last_); }

private:
    std::string_view bytes_;
    int last_ = 0;
};

// One or two pieces, of which few are odd.
std::string buildName(Numbers& numbers) {
    static const Names kUsual{"a", "Driver", "driver", "x y", "\u00e9", "\u00c9", "K2", ".", "-", "'", "\\", "$", "{}"};
    static const Names kOdd{"#", ";", " ", "[", "]", "\"", "\t", "\xff", "\xa0", "\x85", "=", ""};
    constexpr std::size_t kFirstOdd = 244;
    std::string name;
    for (std::size_t left = numbers.next() % 2 + 1; left > 0; --left) {
        const std::size_t piece = numbers.next();
        name += piece >= kFirstOdd      ? kOdd[piece - kFirstOdd]
                : piece < kUsual.size() ? kUsual[piece]
                                        : "k" + numbers.takeNew();
    }
    return name;
}

std::string buildValue(Numbers& numbers) {
    static const Names kPieces{"",  "value", "/usr/lib/a.so", "=",     "a=b;c=[d]", " # no comment", "; nor this", "  ",
                               "[", "]",     "\"quoted\"",    "\u00e9"};
    return numbers.next() % 4 != 0 ? kPieces[numbers.next() % kPieces.size()] : buildName(numbers);
}

std::string buildLine(Numbers& numbers) {
    constexpr std::string_view kBlanks = "                            \t\r\v\f";
    const std::size_t kind = numbers.next() % 32;
    std::string line;
    if (kind < 6) {
        line = "[" + buildName(numbers) + "]";
    } else if (kind < 26) {
        const bool isSpaced = numbers.next() % 4 == 0;
        const std::string gap = isSpaced ? numbers.pick(kBlanks) : "";
        line = buildName(numbers) + gap + "=" + gap + buildValue(numbers) + gap;
    } else if (kind < 28) {
        line = numbers.pick("#;") + buildValue(numbers);
    } else if (kind == 28) {
        line = buildName(numbers) + "=" + std::string(numbers.next() % 24 + kMostOfALine - 24, 'v');
    } else if (kind == 29) {
        line = std::string(numbers.next() % 24 + kMostOfALine - 24, 'k') + "=" + buildValue(numbers);
    } else if (kind == 30) {
        line = numbers.pick(" \t[;") + buildValue(numbers);
    }
    return line + (numbers.next() != 1 ? "\n" : numbers.pick("\r\n"));
}

std::string buildText(std::string_view bytes) {
    Numbers numbers(bytes);
    std::string text = numbers.next() % 8 != 0 ? "[ODBC Data Sources]\n" : "";
    while (numbers.areLeft()) {
        text += buildLine(numbers);
    }
    return text;
}

Names namesOf(const std::vector<installer::IniLine>& lines) {
    Names names;
    std::transform(lines.begin(), lines.end(), std::back_inserter(names),
                   [](const installer::IniLine& line) { return std::string(line.name); });
    return names;
}

std::vector<installer::IniLine> headersIn(std::string_view text) {
    std::vector<installer::IniLine> headers;
    for (const std::string_view line : installer::splitLines(text)) {
        if (const installer::IniLine parsed = installer::parseIniLine(line);
            parsed.kind == installer::IniLineKind::kSection) {
            headers.push_back(parsed);
        }
    }
    return headers;
}

// In the other case.
std::string respelled(std::string_view name) {
    std::string result(name);
    std::transform(result.begin(), result.end(), result.begin(), [](unsigned char byte) {
        return static_cast<char>(std::isupper(byte) != 0 ? std::tolower(byte) : std::toupper(byte));
    });
    return result;
}

// All but the one that lists data sources.
Names sectionsByLibrary(const std::string& file, std::size_t most) {
    std::string buffer(most, '\0');
    SQLWritePrivateProfileString("ODBC", nullptr, nullptr, "/dev/null");  // empties its cache
    SQLGetPrivateProfileString(nullptr, nullptr, "", buffer.data(), static_cast<int>(buffer.size()), file.c_str());
    return installer::attributeItems(buffer.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    static const std::string file = folder.path("odbc.ini");
    setenv("ODBCINI", file.c_str(), 1);
    installer::useUserConfiguration();
    std::string_view input = asText(data, size);
    const bool isText = !input.empty() && input.front() == 'T';
    input.remove_prefix(std::min<std::size_t>(1, input.size()));
    const std::string text = isText ? std::string(input) : buildText(input);
    if (!installer::isPlain(text)) {
        return 0;
    }
    folder.write("odbc.ini", text);
    installer::ConfigurationReader reader(installer::kDataSourceFile);
    Names sections = namesOf(headersIn(text));
    std::erase_if(sections, [](const auto& name) { return installer::sameName(name, installer::kDataSourceList); });
    require(sectionsByLibrary(file, text.size() + kMostOfALine * 2) == sections, "the sections are the library's");
    sections.insert(sections.end(), {installer::kDataSourceList, "not there"});
    for (const std::string& section : sections) {
        const std::vector<installer::IniLine> entries = installer::entriesIn(installer::sectionIn(text, section));
        const Names keys = namesOf(entries);
        const std::string other = respelled(section);
        require(installer::listKeys(other, file, Growth::kByDoubling).names == keys, "the keys are the library's");
        require(reader.listKeys(other, Growth::kByKilobyte).names == keys, "the reader has the same keys");
        for (const installer::IniLine& entry : entries) {
            const std::string key = respelled(entry.name);
            require(installer::readValue(other, key, file) == entry.value, "the values are the library's");
            require(reader.readValue(other, key) == entry.value, "the reader has the same values");
        }
        require(reader.readValue(section, "not there") == installer::readValue(section, "not there", file),
                "what is not there is there for neither");
    }
    return 0;
}
