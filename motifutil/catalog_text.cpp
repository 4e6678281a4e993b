#include "motifutil/catalog_text.h"

#include <array>

#include "kvlib/catalog.h"

nl_catd Rfile = invalidCatalog();

std::string catalogText(Message::Number number) {
    std::array<char, 512> text{};
    LoadStringFromOpenFile(Rfile, number, text.data(), text.size());
    return text.data();
}
