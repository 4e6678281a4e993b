// Replaces the text of an INI file as a whole. A copy of the old text stands beside the file meanwhile, where the
// folder takes one (kvini/backup.h).
#pragma once

#include <string>
#include <string_view>

// Makes `text` the whole of the file at `path`, which holds `oldText`. False with the reason recorded when that can't
// be done; the old text is put back then, and where even that fails, the copy stays. May throw std::bad_alloc, before
// the file is touched.
[[nodiscard]] bool rewriteIniFile(const std::string& path, std::string_view oldText, std::string_view text);
