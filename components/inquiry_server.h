// Asks many libraries, each in a process of its own, several at a time: the part of describe-component that the
// administrator talks to. One process is copied for each library, since to start a program takes longer than to ask.
#pragma once

#include <string>

// Loads the library at `path`, writes three texts to the descriptor `answer`, then the files that decide them with
// their states, and an empty text, each with a zero byte behind it, and ends the process. Called in a process of its
// own, which may end in any way.
using Describe = void(const std::string& path, int answer);

// Takes paths from standard input, each with a zero byte behind it, until that ends, and writes for each to standard
// output: the path, a complaint (one line, empty when all is well) and the three texts, each with a zero byte behind
// it, in the order in which they come. One that takes longer than two seconds is given up. An answer without a
// complaint is kept (components/kept_answers.h) in the file at `kept`, unless that is empty, and the library is not
// loaded again as long as it holds; what is new is written when the input has ended.
void serveInquiries(Describe* describe, const std::string& kept);
