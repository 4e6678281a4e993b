#include "kvini/trace.h"

#include <algorithm>

#include "kvlib/console.h"
#include "kvlib/debug_mask.h"

namespace {

constexpr const char* kPutPrefix = "PutProfileString:";

const char* orNull(const char* text) {
    return text == nullptr ? "NULL" : text;
}

int asInt(unsigned long length) {
    return static_cast<int>(length);
}

}  // namespace

void traceIniOpening(const char* name) {
    if (debugEnabled(DebugBit::kIniOpen)) {
        printOnConsole("KvIniOpen: File:%s \n", name);
    }
}

void traceIniLoaded(const char* path, std::uint64_t size) {
    if (debugEnabled(DebugBit::kIniOpen)) {
        printOnConsole("KvIniOpen: File:%s FileSize %d\n", path, asInt(size));
    }
}

void IniReadTrace::beginString(const char* path, const char* section, const char* entry) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        printOnConsole("GetProfileString: File:%s Section:[%s] Entry:%s\n", path, orNull(section), orNull(entry));
    }
}

void IniReadTrace::beginSection(const char* path, const char* section) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        printOnConsole("GetProfileSection: File:%s Section:[%s] ", path, orNull(section));
    }
}

void IniReadTrace::defaultText(const char* text) const {
    if (debugEnabled(DebugBit::kIniRead) && text != nullptr) {
        printOnConsole("%s defaultStr:%s\n", prefix_, *text == '\0' ? "NULL" : text);
    }
}

void IniReadTrace::found(const char* kind, const char* name, bool isFound) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        printOnConsole("%s %s %s %s.\n", prefix_, kind, name, isFound ? "found" : "not found");
    }
}

void IniReadTrace::value(std::string_view text) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        printOnConsole("%s Value=%.*s\n", prefix_, asInt(text.size()), text.data());
    }
}

void IniReadTrace::beginList(const char* section) const {
    if (debugEnabled(DebugBit::kIniWrite)) {
        printOnConsole("%s Fecthing all entries for %s\n", prefix_, section);
    }
}

void IniReadTrace::list(std::string_view names) const {
    if (!debugEnabled(DebugBit::kIniWrite)) {
        return;
    }
    printOnConsole("%s Multi-Entry Output Requested.\n", prefix_);
    if (names.size() < 2) {
        printOnConsole("%s No data found.\n", prefix_);
    }
    while (names.size() > 1) {
        const std::string_view name = names.substr(0, names.find('\0'));
        printOnConsole("%s Entry %.*s Len=%d\n", prefix_, asInt(name.size()), name.data(), asInt(name.size()));
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
}

void IniReadTrace::result(unsigned long length, const char* buffer) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        printOnConsole("%s Return Len=%d returnBuf=%s\n", prefix_, asInt(length), buffer);
    }
}

void traceIniPut(const char* path, const char* section, const char* entry, const char* value) {
    if (debugEnabled(DebugBit::kIniWrite)) {
        printOnConsole("PutProfileString: File:%s Section:[%s] Entry:%s\n", path, section, orNull(entry));
        printOnConsole("%s newStr:%s\n", kPutPrefix, orNull(value));
    }
}

void traceIniChange(IniChange change, const char* section, const char* entry, const char* value) {
    if (!debugEnabled(DebugBit::kIniWrite)) {
        return;
    }
    switch (change) {
        case IniChange::kNone:
            break;
        case IniChange::kEntryUpdated:
            printOnConsole("%s %s %s\n", kPutPrefix, "Updating Entry Value with:", value);
            break;
        case IniChange::kEntryDeleted:
            printOnConsole("%s %s %s\n", kPutPrefix, "Deleting Entry:", entry);
            break;
        case IniChange::kSectionDeleted:
            printOnConsole("%s Deleting section %s\n", kPutPrefix, section);
            break;
        case IniChange::kSectionAdded:
            printOnConsole("%s Section missing adding it.\n|->[%s]\n", kPutPrefix, section);
            [[fallthrough]];
        case IniChange::kEntryAdded:
            printOnConsole("%s Entry missing adding it.\n|->%s=%s\n", kPutPrefix, entry, value);
            break;
    }
}

void traceIniRewritten(const std::string& text) {
    if (!debugEnabled(DebugBit::kIniWrite)) {
        return;
    }
    printOnConsole("%s Updated FileCache: Len=%d\n", kPutPrefix, asInt(text.size()));
    if (text.empty()) {
        printOnConsole("%s FileCache is empty.\n", kPutPrefix);
    } else {
        printOnConsole("%s Updated FileCache:\n|->%s\n", kPutPrefix, text.c_str());
    }
}
