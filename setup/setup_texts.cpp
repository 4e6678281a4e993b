#include "setup/setup_texts.h"

#include <array>

#include "kvini/install_dir.h"
#include "kvlib/catalog.h"
#include "motifutil/catalog_text.h"

namespace {

nl_catd SetupCatalog = invalidCatalog();

}  // namespace

SetupCatalogs::SetupCatalogs() {
    bosSetInstallDir(nullptr);
    SetupCatalog = OpenStrings("vhsetup23", nullptr);
    Rfile = OpenStrings(nullptr, "odbc.m");
}

SetupCatalogs::~SetupCatalogs() {
    CloseStrings(Rfile);
    CloseStrings(SetupCatalog);
    Rfile = invalidCatalog();
    SetupCatalog = invalidCatalog();
}

std::string setupText(SetupMessage::Number number, const std::string& subject, const std::string& second) {
    std::array<char, 512> buffer{};
    LoadStringFromOpenFile(SetupCatalog, number, buffer.data(), buffer.size());
    return withSubjects(buffer.data(), {subject, second});
}

std::string setupMnemonic(SetupMessage::Number label) {
    constexpr int kOffset = 100;
    return setupText(static_cast<SetupMessage::Number>(label + kOffset));
}
