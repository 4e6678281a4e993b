// The search for a file: lines with the flags and the directories, then the name.
#include <cstring>

#include "bos/library.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    static const bool ready = !(folder.write("file", "") + folder.write("sub/other", "")).empty();
    std::string_view text = asText(data, size);
    const std::string flags = takeLine(text);
    const std::string directories = folder.path("sub:") + takeLine(text);
    const std::string name(text.substr(0, text.find('\0')));
    for (const char* variable : {"PATH", "HOME", "KV", "KVLIB", "LD_LIBRARY_PATH", "LD_RUN_PATH"}) {
        setenv(variable, directories.c_str(), 1);
    }
    char result[kPathSize];
    std::memset(result, '#', sizeof result);
    const std::uint32_t bits = flags.empty() ? 0 : static_cast<unsigned char>(flags.front());
    const bool found = bosLocateFile(result, name.c_str(), bits) == 0;
    require(ready && std::memchr(result, '\0', sizeof result) != nullptr, "the path ends within its buffer");
    require(found == ((bosfattr(result) & FileKind::kRegular) != 0), "what is found is a file");
    require(found || *result == '\0', "what is not found has no path");
    require((bosLocateFile(nullptr, name.c_str(), bits) == 0) == found, "the answer needs no buffer");
    return 0;
}
