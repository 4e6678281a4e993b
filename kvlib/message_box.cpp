#include "kvlib/message_box.h"

#include "kvlib/console.h"

namespace {
constexpr int kAnswerCancel = 2;
}  // namespace

int MessageBox(const void* /*window*/, const char* text, const char* caption, std::uint32_t style) {
    if (caption != nullptr && style != 0) {
        printOnConsole("%s:\n%s\n", caption, text);
    } else {
        printOnConsole("\n%s\n", text);
    }
    return kAnswerCancel;
}

int guiMessageBox(const void* window, const char* text, const char* caption, std::uint32_t style) {
    return MessageBox(window, text, caption, style);
}
