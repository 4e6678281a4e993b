// What the support library prints for people: reports of programs without windows, and debug traces.
#pragma once

// Prints to standard output as printf does, at once and behind what the program itself printed. Nothing stays in a
// buffer, where a program that ends in a signal would lose it and a child process would print it a second time.
[[gnu::format(printf, 1, 2)]] void printOnConsole(const char* format, ...) noexcept;
