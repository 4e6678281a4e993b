// The routines on help URLs; the input is the URL.
#include "help/url_routines.h"
#include "tests/fuzz/fuzz.h"

namespace {

template <typename Routine>
std::string resultOf(Routine routine, std::string_view in) {
    char* out = nullptr;
    std::size_t length = 0;
    if (routine(in.data(), in.size(), &out, &length) != 0) {
        return "";
    }
    require(length > 0 && out[length] == '\0', "a result is not empty and terminated");
    std::string result(out, length);
    std::free(out);
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view url = asText(data, size);
    const std::string escaped = resultOf(WWHelp_URL_EscapeForJavaScript, url);
    require(escaped.find_first_of("\"&'?\\") == std::string::npos, "an escaped URL ends no string of a script");
    require(resultOf(WWHelp_URL_Unescape, escaped) == url, "unescaping undoes escaping");
    require(resultOf(WWHelp_URL_Unescape, url).size() <= url.size(), "unescaping makes nothing longer");
    resultOf(WWHelp_URL_BuildSmartURL, url);
    return 0;
}
