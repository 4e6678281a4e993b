#include "setup/connection_test.h"

#include "installer/configuration.h"
#include "installer/file_replacement.h"
#include "installer/ini_text.h"

std::string connectionString(const std::string& driver, const Settings& settings) {
    std::string text = "DRIVER=" + bracedValue(driver) + ";";
    for (const installer::Attribute& setting : settings) {
        if (!setting.value.empty() && !isNamingKey(setting.key) && !installer::sameName(setting.key, kDescriptionKey)) {
            text += setting.key + "=" + connectionValue(setting.value) + ";";
        }
    }
    return text;
}

ConnectionTest testOfDataSource(const std::string& name, const Settings& settings, const Settings& unstored) {
    // Any name will do, since nobody but the attempt sees it.
    const std::string used = !name.empty() && installer::isValidDataSourceName(name) ? name : "Test";
    installer::FileText file;
    if (!installer::readFile(installer::followLinks(installer::userDataSourcePath()), file)) {
        file.text.clear();
    }
    installer::IniText text(file.text);
    while (text.removeSection(used)) {
    }
    for (const installer::Attribute& setting : settings) {
        text.set(used, setting.key, setting.value);
    }
    std::string connection = "DSN=" + used + ";";
    for (const installer::Attribute& setting : unstored) {
        connection += setting.key + "=" + connectionValue(setting.value) + ";";
    }
    return {connection, text.text()};
}
