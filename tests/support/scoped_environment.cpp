#include "tests/support/scoped_environment.h"

#include <cstdlib>

namespace {
void apply(const char* name, const std::optional<std::string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
}
}  // namespace

ScopedEnvironment::ScopedEnvironment(std::initializer_list<Setting> settings) {
    for (const Setting& setting : settings) {
        set(setting.first, setting.second);
    }
}

ScopedEnvironment::~ScopedEnvironment() {
    for (const auto& [name, value] : before_) {
        apply(name.c_str(), value);
    }
}

void ScopedEnvironment::set(const char* name, const std::optional<std::string>& value) {
    const char* old = std::getenv(name);
    before_.try_emplace(name, old == nullptr ? std::nullopt : std::optional<std::string>(old));
    apply(name, value);
}
