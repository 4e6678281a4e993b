#include "help/url_routines.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "kvlib/out_of_memory.h"

namespace {

constexpr std::string_view kEscaped = "\"%&'?\\";

// Hands a result over in the form that the callers free.
int handOut(const std::string& text, char** out, std::size_t* outLength) {
    if (text.empty()) {
        return -1;
    }
    auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) {
        return -1;
    }
    std::memcpy(copy, text.c_str(), text.size() + 1);
    *out = copy;
    *outLength = text.size();
    return 0;
}

std::string escaped(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string result;
    for (const char byte : text) {
        if (kEscaped.find(byte) == std::string_view::npos) {
            result += byte;
        } else {
            const auto value = static_cast<unsigned char>(byte);
            result += {'%', kDigits[value >> 4], kDigits[value & 15]};
        }
    }
    return result;
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
        } else if (i + 2 < text.size()) {
            // What spells no number is a byte of zero.
            result += static_cast<char>(std::strtoul(std::string(text.substr(i + 1, 2)).c_str(), nullptr, 16));
            i += 2;
        }
    }
    return result;
}

}  // namespace

int WWHelp_URL_EscapeForJavaScript(const char* in, std::size_t length, char** out, std::size_t* outLength) {
    return orFailure(-1, [&] { return handOut(escaped({in, length}), out, outLength); });
}

int WWHelp_URL_Unescape(const char* in, std::size_t length, char** out, std::size_t* outLength) {
    return orFailure(-1, [&] { return handOut(unescaped({in, length}), out, outLength); });
}

int private_WWHelp_URL_BuildSmartURLWithReset(const char* url, std::size_t length, const char* reset,
                                              std::size_t resetLength, char** out, std::size_t* outLength) {
    return orFailure(-1, [&] {
        const std::string address = escaped({url, length});
        if (address.empty()) {
            return -1;
        }
        return handOut(
            "javascript:x=unescape('" + address +
                "');if(typeof(window.WWHFrame)!='undefined'){window.WWHFrame.WWHHelp.fSetContextDocument(x);}else{" +
                std::string(reset, resetLength) + "}",
            out, outLength);
    });
}

int WWHelp_URL_BuildSmartURL(const char* url, std::size_t length, char** out, std::size_t* outLength) {
    constexpr std::string_view kReset =
        "y=eval('document.open();document.writeln(\\'<a href=\\\"'+x+'\\\">'+x+'</a>\\');document.close();');";
    return private_WWHelp_URL_BuildSmartURLWithReset(url, length, kReset.data(), kReset.size(), out, outLength);
}
