// The debug traces of the INI caches, on standard output (kvlib/debug_mask.h). Each function prints nothing unless its
// bit of the mask is set. Texts that may be null are printed as "NULL".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvini/grammar.h"

void traceIniOpening(const char* name);
void traceIniLoaded(const char* path, std::uint64_t size);

// The lines of one read, each under the name of the public operation.
class IniReadTrace {
public:
    explicit IniReadTrace(const char* prefix) : prefix_(prefix) {}

    void beginString(const char* path, const char* section, const char* entry) const;
    void beginSection(const char* path, const char* section) const;
    void defaultText(const char* text) const;
    void found(const char* kind, const char* name, bool isFound) const;
    void value(std::string_view text) const;
    void beginList(const char* section) const;
    void list(std::string_view names) const;
    void result(unsigned long length, const char* buffer) const;

private:
    const char* prefix_;
};

void traceIniPut(const char* path, const char* section, const char* entry, const char* value);
void traceIniChange(IniChange change, const char* section, const char* entry, const char* value);
void traceIniRewritten(const std::string& text);
