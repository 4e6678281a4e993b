// Parallel lists: row i of every list tells of the same thing. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

// Fills a list with `count` rows; an empty or null row is shown as one blank, so that it can be selected. As many rows
// are visible as there are: the scrolled window around the list scrolls, not the list.
void populateList(Widget list, char** strings, int count);

void populateList(Widget list, const std::vector<std::string>& rows);

// The same for rows in fixed buffers; an empty row stays an empty item.
using FixedRow = std::array<char, 1024>;
void populateList(Widget list, const FixedRow* rows, int count);

// Frees every non-null element (from malloc), then the array itself. A null array is ignored; with a count of zero or
// less only the array is freed.
void FreeListMemory(char** strings, int count) noexcept;

// Sorts in place, ascending, without regard to case, in the order that exchanging leaves (admin/exchange_sort.h).
// sortRows() takes any number of rows.
void sortList(char** strings, short count);
void sortRows(std::vector<std::string>& rows);

// The position, from 1, of the selected row, when exactly one is selected.
[[nodiscard]] std::optional<int> selectedRow(Widget list);
// The text of the row at `position`, from 1; empty when there is no such row.
[[nodiscard]] std::string rowText(Widget list, int position);

// Inserts a row that is to be at `position`, from 1, and shows one row more.
void insertRow(Widget list, int position, const std::string& text);

// Deletes the row at `position`, from 1, and shows one row less.
void deleteRow(Widget list, int position);
