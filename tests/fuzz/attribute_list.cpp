// Attribute lists as drivers get them; the input is the list.
#include "installer/configuration.h"
#include "tests/fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string given = std::string(asText(data, size)) + '\0';
    const std::vector<installer::Attribute> attributes = installer::parseAttributeList(given.c_str());
    for (const installer::Attribute& attribute : attributes) {
        require(attribute.key.find('=') == std::string::npos, "a key ends at the first equal sign");
    }
    const std::string list = installer::attributeList(attributes);
    require(list.back() == '\0', "a list ends in an empty string");
    const std::vector<installer::Attribute> again = installer::parseAttributeList(list.c_str());
    require(std::equal(attributes.begin(), attributes.end(), again.begin(), again.end(),
                       [](const auto& a, const auto& b) { return a.key == b.key && a.value == b.value; }),
            "a list made of attributes holds these attributes");
    return 0;
}
