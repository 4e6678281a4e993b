#include "motifutil/change_report.h"

#include <system_error>

#include "motifutil/catalog_text.h"

using installer::ChangeFailure;

std::string changeReport(const ChangeFailure& failure) {
    switch (failure.reason) {
        case ChangeFailure::kBadLine:
            return catalogText(Message::kChangeBadLine, {failure.file, std::to_string(failure.line)});
        case ChangeFailure::kRefused:
            return catalogText(Message::kChangeRefused, {failure.file});
        case ChangeFailure::kLineTooLong:
            return catalogText(Message::kChangeLineTooLong, {failure.file});
        case ChangeFailure::kBusy:
            return catalogText(Message::kChangeBusy, {failure.file});
        case ChangeFailure::kLeftHalf:
            return catalogText(Message::kChangeLeftHalf,
                               {failure.file, std::generic_category().message(failure.error), failure.copy});
        default:
            return catalogText(Message::kChangeFailed, {failure.file, std::generic_category().message(failure.error)});
    }
}
