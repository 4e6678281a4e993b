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
    return withSubjects(catalogText(number), subjects);
}

std::string withSubjects(std::string text, std::initializer_list<std::string> subjects) {
    // What is put in may look like a mark.
    std::size_t place = 0;
    while ((place = text.find('%', place)) < text.size() - 1) {
        const auto index = static_cast<std::size_t>(text[place + 1] - '1');
        const std::string subject = index < subjects.size() ? subjects.begin()[index] : text.substr(place, 2);
        text.replace(place, 2, subject);
        place += subject.size();
    }
    return text;
}
