#include "motifutil/catalog_text.h"

#include <array>

#include "kvlib/catalog.h"

nl_catd Rfile = invalidCatalog();

std::string catalogText(Message::Number number) {
    std::array<char, 512> text{};
    LoadStringFromOpenFile(Rfile, number, text.data(), text.size());
    return text.data();
}

std::string catalogText(Message::Number number, std::initializer_list<std::string> subjects) {
    std::string text = catalogText(number);
    std::size_t place = 0;
    int index = 0;
    for (const std::string& subject : subjects) {
        const std::string mark = "%" + std::to_string(++index);
        // Behind what was put in: that may look like a mark.
        place = text.find(mark, place);
        if (place == std::string::npos) {
            return text;
        }
        text.replace(place, mark.size(), subject);
        place += subject.size();
    }
    return text;
}
