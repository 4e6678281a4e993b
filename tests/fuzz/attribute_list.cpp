// Attribute lists as drivers get them; the input is the list.
#include "installer/configuration.h"
#include "tests/fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string given = std::string(asText(data, size)) + '\0';
    const std::vector<installer::Attribute> attributes = installer::parseAttributeList(given.c_str());
    const std::string list = installer::attributeList(attributes);
    require(list.back() == '\0', "a list ends in an empty string");
    require(installer::attributeList(installer::parseAttributeList(list.c_str())) == list, "a list reads back as made");
    return 0;
}
