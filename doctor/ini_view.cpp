#include "doctor/ini_view.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "installer/configuration.h"
#include "installer/ini_text.h"

namespace doctor {

namespace {

// Letters and digits alone, in lower case: people mistake the rest most often.
std::string plain(std::string_view name) {
    std::string result;
    for (const char letter : name) {
        const auto byte = static_cast<unsigned char>(letter);
        if (std::isalnum(byte) != 0 || byte >= 0x80) {
            result += static_cast<char>(std::tolower(byte));
        }
    }
    return result;
}

// How many letters are to be put in, taken out, changed or exchanged with their neighbour to make one of the other
// (optimal string alignment).
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t k = 1; k <= b.size(); ++k) {
            row[k] = std::min({last[k] + 1, row[k - 1] + 1, last[k - 1] + (a[i - 1] == b[k - 1] ? 0 : 1)});
            if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1]) {
                row[k] = std::min(row[k], before[k - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace

const IniEntry* IniSection::find(std::string_view key) const {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [key](const IniEntry& entry) { return installer::sameName(entry.key, key); });
    return found == entries.end() ? nullptr : &*found;
}

std::string IniSection::value(std::string_view key) const {
    const IniEntry* entry = find(key);
    return entry != nullptr ? entry->value : "";
}

const IniSection* IniView::find(std::string_view name) const {
    const auto found = std::find_if(sections.begin(), sections.end(), [name](const IniSection& section) {
        return installer::sameName(section.name, name);
    });
    return found == sections.end() ? nullptr : &*found;
}

IniView viewOf(std::string_view text) {
    IniView view;
    std::size_t number = 0;
    for (const std::string_view line : installer::splitLines(text)) {
        ++number;
        const installer::IniLine parsed = installer::parseIniLine(line);
        if (parsed.kind == installer::IniLineKind::kSection) {
            view.sections.push_back({std::string(parsed.name), number, line.find(']') != std::string_view::npos});
        } else if (parsed.kind == installer::IniLineKind::kEntry) {
            std::vector<IniEntry>& entries = view.sections.empty() ? view.strays : view.sections.back().entries;
            entries.push_back({std::string(parsed.name), std::string(parsed.value), number,
                               line.find('=') != std::string_view::npos});
        }
    }
    return view;
}

std::size_t refusedLine(std::string_view text) {
    const std::size_t line = installer::findFirstLine(text);
    return line == 0 || installer::splitLines(text)[line - 1].front() == '[' ? 0 : line;
}

std::string nearest(std::string_view name, const std::vector<std::string>& names, bool hasParts) {
    const std::string wanted = plain(name);
    std::string best;
    std::size_t bestDistance = 0;
    std::size_t bestShared = 0;
    for (const std::string& candidate : names) {
        const std::string other = plain(candidate);
        std::size_t between = distance(wanted, other);
        // One may be the other with a version or a maker's name around it.
        const std::size_t shared = std::min(wanted.size(), other.size());
        const bool isPart = hasParts && shared >= 3 &&
                            (wanted.find(other) != std::string::npos || other.find(wanted) != std::string::npos);
        between = isPart ? std::min<std::size_t>(between, 1) : between;
        const bool isNearer = between < bestDistance || (between == bestDistance && shared > bestShared);
        // Of two letters that are exchanged, or one of three that is another, each short name would do.
        const std::size_t most = std::max<std::size_t>(std::max(wanted.size(), other.size()) / 3, 1);
        if (between <= most && shared > 1 && (best.empty() || isNearer)) {
            best = candidate;
            bestDistance = between;
            bestShared = isPart ? shared : 0;
        }
    }
    return best;
}

}  // namespace doctor
