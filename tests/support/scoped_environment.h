// Environment variables for the length of a test.
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>

// Sets variables, or unsets those without a value, and puts the old ones back at the end of its life.
class ScopedEnvironment {
public:
    using Setting = std::pair<const char*, std::optional<std::string>>;
    ScopedEnvironment(std::initializer_list<Setting> settings);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    void set(const char* name, const std::optional<std::string>& value);

private:
    std::map<std::string, std::optional<std::string>> before_;
};
