// What the platform says of itself: environment, host, user, processes, and the files that a shell pattern names.
// Output buffers hold `size` bytes or units, are always terminated (unless `size` is 0), and get "" on failure.
// Functions return 0, or 1 with the reason on the calling thread's current error list. Everything may be called from
// any thread as long as none changes the environment.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

// The value of an environment variable or null, owned by the environment (POSIX getenv).
[[nodiscard]] const char* bosGetEnv(const char* name);
// The twin copies the value to `buffer`; 1 when the variable is unset or its value does not fit.
[[nodiscard]] int bosGetEnv(const char16_t* name, char16_t* buffer, std::uint32_t size);

// The name of this host (POSIX gethostname), and of the user that the process runs as (POSIX getpwuid_r, the decimal
// user id without an entry there). Failing includes a name that does not fit.
[[nodiscard]] int bosGetMachineName(char* buffer, std::uint32_t size);
[[nodiscard]] int bosGetHostUser(char* buffer, std::uint32_t size);

// The command name of process `pid` as "ps" tells it, cut to the buffer; 1 when there is no such process.
[[nodiscard]] int bosGetCommand(pid_t pid, char* buffer, std::uint32_t size);

// The directory of the program that runs, without a slash at the end, wherever it was started from; empty when the
// system does not tell.
[[nodiscard]] std::string programDirectory();

// The names that "ls" prints for a shell pattern such as "/tmp/*.dsn". A pattern with characters that would make the
// shell do anything but match names ($ ` \ ' " ; & | < > ( ) and control characters) names no file. 1 when none was
// found.
[[nodiscard]] int bosFindFiles(const char* pattern, std::vector<std::string>& result);
