#include "doctor/diagnosis.h"

#include <algorithm>

#include "doctor/data_source_findings.h"
#include "doctor/driver_findings.h"
#include "doctor/driver_list.h"
#include "doctor/file_findings.h"
#include "doctor/trace_findings.h"
#include "installer/configuration.h"

namespace doctor {

namespace {

// The driver of the data source, by name.
std::string driverOf(const Account& account, const std::string& name) {
    for (const DataSourceFile& file : dataSourceFiles(account)) {
        if (const IniSection* section = file.view.find(name)) {
            return section->value("Driver");
        }
    }
    return {};
}

}  // namespace

Findings diagnose(const Account& account, const std::string& name) {
    Findings findings;
    findFileFaults(account, findings);
    findDriverFaults(account, findings);
    findDataSourceFaults(account, findings);
    findLineFaults(account, findings);
    findTraceFaults(account, findings);
    if (!name.empty()) {
        const std::string driver = driverOf(account, name);
        std::erase_if(findings, [&](const Finding& finding) {
            return !finding.about.empty() && !installer::sameName(finding.about, name) &&
                   !installer::sameName(finding.about, driver);
        });
        const bool isTold = std::any_of(findings.begin(), findings.end(), [&name](const Finding& finding) {
            return installer::sameName(finding.about, name);
        });
        if (!isTold) {
            findMissingName(account, name, findings);
        }
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.kind.severity < b.kind.severity; });
    return findings;
}

}  // namespace doctor
