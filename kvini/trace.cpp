#include "kvini/trace.h"

#include <algorithm>
#include <cstdio>

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
        std::printf("KvIniOpen: File:%s \n", name);
    }
}

void traceIniLoaded(const char* path, std::uint64_t size) {
    if (debugEnabled(DebugBit::kIniOpen)) {
        std::printf("KvIniOpen: File:%s FileSize %d\n", path, asInt(size));
    }
}

void IniReadTrace::beginString(const char* path, const char* section, const char* entry) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        std::printf("GetProfileString: File:%s Section:[%s] Entry:%s\n", path, orNull(section), orNull(entry));
    }
}

void IniReadTrace::beginSection(const char* path, const char* section) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        std::printf("GetProfileSection: File:%s Section:[%s] ", path, orNull(section));
    }
}

void IniReadTrace::defaultText(const char* text) const {
    if (debugEnabled(DebugBit::kIniRead) && text != nullptr) {
        std::printf("%s defaultStr:%s\n", prefix_, *text == '\0' ? "NULL" : text);
    }
}

void IniReadTrace::found(const char* kind, const char* name, bool isFound) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        std::printf("%s %s %s %s.\n", prefix_, kind, name, isFound ? "found" : "not found");
    }
}

void IniReadTrace::value(std::string_view text) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        std::printf("%s Value=%s\n", prefix_, std::string(text).c_str());
    }
}

void IniReadTrace::beginList(const char* section) const {
    if (debugEnabled(DebugBit::kIniWrite)) {
        std::printf("%s Fecthing all entries for %s\n", prefix_, section);
    }
}

void IniReadTrace::list(std::string_view names) const {
    if (!debugEnabled(DebugBit::kIniWrite)) {
        return;
    }
    std::printf("%s Multi-Entry Output Requested.\n", prefix_);
    if (names.size() < 2) {
        std::printf("%s No data found.\n", prefix_);
    }
    while (names.size() > 1) {
        const std::string name(names.substr(0, names.find('\0')));
        std::printf("%s Entry %s Len=%d\n", prefix_, name.c_str(), asInt(name.size()));
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
}

void IniReadTrace::result(unsigned long length, const char* buffer) const {
    if (debugEnabled(DebugBit::kIniRead)) {
        std::printf("%s Return Len=%d returnBuf=%s\n", prefix_, asInt(length), buffer);
    }
}

void traceIniPut(const char* path, const char* section, const char* entry, const char* value) {
    if (debugEnabled(DebugBit::kIniWrite)) {
        std::printf("PutProfileString: File:%s Section:[%s] Entry:%s\n", path, section, orNull(entry));
        std::printf("%s newStr:%s\n", kPutPrefix, orNull(value));
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
            std::printf("%s %s %s\n", kPutPrefix, "Updating Entry Value with:", value);
            break;
        case IniChange::kEntryDeleted:
            std::printf("%s %s %s\n", kPutPrefix, "Deleting Entry:", entry);
            break;
        case IniChange::kSectionDeleted:
            std::printf("%s Deleting section %s\n", kPutPrefix, section);
            break;
        case IniChange::kSectionAdded:
            std::printf("%s Section missing adding it.\n|->[%s]\n", kPutPrefix, section);
            [[fallthrough]];
        case IniChange::kEntryAdded:
            std::printf("%s Entry missing adding it.\n|->%s=%s\n", kPutPrefix, entry, value);
            break;
    }
}

void traceIniRewritten(const std::string& text) {
    if (!debugEnabled(DebugBit::kIniWrite)) {
        return;
    }
    std::printf("%s Updated FileCache: Len=%d\n", kPutPrefix, asInt(text.size()));
    if (text.empty()) {
        std::printf("%s FileCache is empty.\n", kPutPrefix);
    } else {
        std::printf("%s Updated FileCache:\n|->%s\n", kPutPrefix, text.c_str());
    }
}
