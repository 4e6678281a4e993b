// The connection string and the attribute list of a file data source: its name, its driver, the attributes, by lines.
#include "admin/file_dsn_writer.h"
#include "admin/globals.h"
#include "installer/configuration.h"
#include "tests/fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLongestName = 1000;
    std::string_view text = asText(data, size);
    // A name without a folder would read the files of the system; one that is too long is told in a window.
    replaceText(FileDSNName, ("/" + takeLine(text).substr(0, kLongestName)).c_str());
    const std::string driver = takeLine(text);
    const std::string attributes(text.substr(0, text.find('\0')));
    require(createArray(driver.c_str(), attributes.c_str()), "a name that fits makes a string");
    require(TempStr.view().ends_with(';') && TempStr.view().find('\n') == std::string::npos, "it is one line of items");
    char* list = nullptr;
    getAdvancedArgumentString(&list);
    require((list != nullptr) == (static_cast<short>(TempStr.view().size()) >= 3),
            "a list is made of what 16 bits can count");
    const std::string again = installer::copyOfAttributeList(list);
    require(installer::copyOfAttributeList(again.c_str()) == again, "it reads back as made");
    std::free(list);
    return 0;
}
