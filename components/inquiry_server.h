// Asks many libraries in processes of their own, several at a time: the part of describe-component that the
// administrator talks to. Processes are copied, since to start a program takes longer than to ask. A few libraries have
// one in common where many wait; each of them is asked again alone when not all of them answer without a word.
#pragma once

#include <string>

// Loads the library at `path` and writes three texts to the descriptor `answer`, each with a zero byte behind it; false
// when they could not be written. Called in a process of its own, which may end in any way.
using Describe = bool(const std::string& path, int answer);

// Takes paths from standard input, each with a zero byte behind it, until that ends, and writes for each to standard
// output: the path, a complaint (one line, empty when all is well) and the three texts, each with a zero byte behind
// it, in the order in which they come. One that takes longer than two seconds is given up.
void serveInquiries(Describe* describe);
