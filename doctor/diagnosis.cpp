#include "doctor/diagnosis.h"

#include <algorithm>

#include "doctor/connection_findings.h"
#include "doctor/data_source_findings.h"
#include "doctor/driver_findings.h"
#include "doctor/driver_list.h"
#include "doctor/file_findings.h"
#include "doctor/key_findings.h"
#include "doctor/trace_findings.h"
#include "installer/configuration.h"

namespace doctor {

Findings diagnose(const Account& account, const std::string& name) {
    Findings findings;
    findFileFaults(account, findings);
    findDriverFaults(account, findings);
    findDataSourceFaults(account, findings);
    findLineFaults(account, findings);
    findKeyFaults(account, findings);
    findTraceFaults(account, findings);
    if (!name.empty()) {
        const std::optional<DataSource> source = findDataSource(account, name);
        const std::string driver = source ? source->section.value("Driver") : "";
        const auto concerns = [&](const Finding& finding) {
            return !finding.about.empty() &&
                   (installer::sameName(finding.about, name) || installer::sameName(finding.about, driver));
        };
        std::erase_if(findings, [&](const Finding& finding) { return !finding.about.empty() && !concerns(finding); });
        if (!source && std::none_of(findings.begin(), findings.end(), concerns)) {
            findMissingName(account, name, findings);
        }
        const bool isExplained = std::any_of(findings.begin(), findings.end(), [&](const Finding& finding) {
            return finding.kind.severity == Severity::kError && concerns(finding);
        });
        if (source && !isExplained) {
            findConnectionFaults(account, *source, findings);
        }
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.kind.severity < b.kind.severity; });
    return findings;
}

}  // namespace doctor
