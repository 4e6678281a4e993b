// Which texts are plain, with the installer library as the judge: of each that is said to be, it finds the sections,
// keys and values that we find, in the same order, and the reader of files tells the same. Most texts are built from
// the input, and plain but for a few oddities; the others are the input.
#include "installer/plain_text.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <odbcinst.h>

#include "installer/configuration_reader.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

namespace {

using installer::Growth;
using Names = std::vector<std::string>;

std::string buildName(FuzzedDataProvider& input, int number) {
    static const Names kNames{"Driver", "driver", "x y", "\u00e9", "\u00c9", ".", "{'}", "#",    ";",
                              " ",      "[",      "]",   "\"",     "\t",     "=", "",    "\xa0", "\\"};
    const std::size_t which = input.ConsumeIntegral<std::uint8_t>();
    return which < kNames.size() ? kNames[which] + (input.ConsumeBool() ? std::to_string(number) : "")
                                 : "k" + std::to_string(number);
}

std::string buildLine(FuzzedDataProvider& input, int number) {
    static const char* const kBlanks[] = {"", "", "", "", "", "", " ", " ", " ", "  ", "   ", "\t", "\v", "\f"};
    static const char* const kValues[] = {"", "v", "/a.so", "=", "a=b;c=[d]", " # x", "; x", "  ", "[", "]", "\"q\""};
    const std::string end = input.ConsumeIntegral<std::uint8_t>() != 1 ? "\n" : input.PickValueInArray({"", "\r\n"});
    const std::string name = buildName(input, number);
    switch (input.ConsumeIntegralInRange(0, 15)) {
        case 0:
        case 1:
            return "[" + name + "]" + end;
        case 2:
            return input.PickValueInArray({"#", "; [", "", "#\t", "  "}) + end;
        case 3:
            return name + "=" + std::string(input.ConsumeIntegralInRange<std::size_t>(980, 1005), 'v') + end;
        default:
            const std::string gap = input.PickValueInArray(kBlanks);
            return name + gap + "=" + gap + input.PickValueInArray(kValues) + gap + end;
    }
}

// All but the one that lists data sources.
Names sectionsByLibrary(const std::string& file, std::size_t size) {
    std::string buffer(size, '\0');
    SQLWritePrivateProfileString("ODBC", nullptr, nullptr, "/dev/null");  // empties its cache
    SQLGetPrivateProfileString(nullptr, nullptr, "", buffer.data(), static_cast<int>(size), file.c_str());
    return installer::attributeItems(buffer.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    static const std::string file = folder.path("odbc.ini");
    FuzzedDataProvider input(data, size);
    std::string text = input.ConsumeBool() ? "[ODBC Data Sources]\n" : input.ConsumeRemainingBytesAsString();
    for (int number = 0; input.remaining_bytes() > 0; ++number) {
        text += buildLine(input, number);
    }
    if (!installer::isPlain(text)) {
        return 0;
    }
    setenv("ODBCINI", folder.write("odbc.ini", text).c_str(), 1);
    installer::useUserConfiguration();
    installer::ConfigurationReader reader(installer::kDataSourceFile);
    Names sections;
    for (const std::string_view line : installer::splitLines(text)) {
        const installer::IniLine parsed = installer::parseIniLine(line);
        if (parsed.kind == installer::IniLineKind::kSection &&
            !installer::sameName(parsed.name, installer::kDataSourceList)) {
            sections.emplace_back(parsed.name);
        }
    }
    require(sectionsByLibrary(file, text.size() + 2000) == sections, "the sections are the library's");
    sections.insert(sections.end(), {installer::kDataSourceList, "not there"});
    for (const std::string& name : sections) {
        const std::string section = installer::foldedName(name);
        Names keys;
        for (const installer::IniLine& entry : installer::entriesIn(installer::sectionIn(text, section))) {
            const std::string key = installer::foldedName(keys.emplace_back(entry.name));
            require(installer::readValue(section, key, file) == entry.value, "the values are the library's");
            require(reader.readValue(section, key) == entry.value, "the reader has the same values");
        }
        require(installer::listKeys(section, file, Growth::kByDoubling).names == keys, "the keys are the library's");
        require(reader.listKeys(section, Growth::kByKilobyte).names == keys, "the reader has the same keys");
    }
    return 0;
}
