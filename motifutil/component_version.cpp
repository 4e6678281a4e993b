#include "motifutil/component_version.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>

#include "bos/file.h"
#include "bos/library.h"
#include "kvlib/catalog.h"
#include "kvlib/private_error_list.h"
#include "kvlib/text.h"
#include "motifutil/catalog_text.h"

char fileName[kComponentTextSize];
char fileDate[kShortTextSize];
char fileSize[20];
char CompanyName[kComponentTextSize];
char FileVersion[kComponentTextSize];
char compAddr1[kShortTextSize];
char compAddr2[kShortTextSize];

namespace {

void describe(void* handle, const char* libraryName, char* companyOut, char* versionOut) {
    const char* company = getCompany(handle);
    strCopy(companyOut, kComponentTextSize, company == nullptr ? "" : company);
    const char* version = getVersion(handle);
    if (version == nullptr) {
        endWithoutVersion(handle, libraryName);
    }
    strCopy(versionOut, kComponentTextSize, version);
}

}  // namespace

void getCompNameAndVersion(char* libraryName, char* companyOut, char* versionOut, int flag) {
    if (companyOut == nullptr && versionOut == nullptr) {
        // The list outlives the call, so it can't be one of the stack.
        if (auto* errors = new (std::nothrow) KvErrorList(nullptr, 0)) {
            KvErrorKeeper::setErrorList(errors);
        }
        bosLoadLibrary(libraryName, flag);
        return;
    }
    char unwantedCompany[kComponentTextSize];
    char unwantedVersion[kComponentTextSize];
    companyOut = companyOut == nullptr ? unwantedCompany : companyOut;
    versionOut = versionOut == nullptr ? unwantedVersion : versionOut;
    companyOut[0] = '\0';
    versionOut[0] = '\0';

    const PrivateErrorList errors;
    const std::unique_ptr<void, LibraryCloser> library(bosLoadLibrary(libraryName, flag));
    if (library) {
        describe(library.get(), libraryName, companyOut, versionOut);
    }
}

void formatFileDate(std::size_t date, char (&text)[kShortTextSize]) {
    const auto seconds = static_cast<std::time_t>(date);
    std::tm local{};
    text[0] = '\0';
    if (localtime_r(&seconds, &local) == nullptr || std::strftime(text, sizeof text, "%x", &local) == 0) {
        text[0] = '\0';
    }
}

int setAboutInfo(unsigned char* path) {
    char* name = reinterpret_cast<char*>(path);
    strCopy(fileName, sizeof fileName, name);
    std::uint32_t date = 0;
    std::uint64_t size = 0;
    const int status = bosFileDateSize(name, &date, &size);
    if (status == 0) {
        formatFileDate(date, fileDate);
        std::snprintf(fileSize, sizeof fileSize, "%u kb", static_cast<unsigned int>(size >> 10));
    } else {
        fileDate[0] = '\0';
    }
    getCompNameAndVersion(name, CompanyName, FileVersion, 0);
    LoadStringFromOpenFile(Rfile, Message::kCompanyAddressLine1, compAddr1, sizeof compAddr1);
    LoadStringFromOpenFile(Rfile, Message::kCompanyAddressLine2, compAddr2, sizeof compAddr2);
    return status;
}
