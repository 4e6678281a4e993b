#include "kvlib/console.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>

void printOnConsole(const char* format, ...) noexcept {
    std::fflush(stdout);
    std::va_list values;
    va_start(values, format);
    vdprintf(STDOUT_FILENO, format, values);
    va_end(values);
}
