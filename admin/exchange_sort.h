// The order that an exchange sort gives, without its square of comparisons.
#pragma once

#include <span>

// Sorts by strCompareCi. Strings that compare equal come to stand as if each position in turn had been compared with
// every later one and both exchanged when the earlier was the greater: people know their lists in that order.
void exchangeSort(std::span<char*> strings);
