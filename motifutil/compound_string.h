// Texts and arguments in the forms that Motif takes. GUI thread only.
#pragma once

#include <Xm/Xm.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

struct XmStringDeleter {
    void operator()(XmString text) const noexcept { XmStringFree(text); }
};
using XmStringPtr = std::unique_ptr<std::remove_pointer_t<XmString>, XmStringDeleter>;

struct XtTextDeleter {
    void operator()(char* text) const noexcept { XtFree(text); }
};
using XtTextPtr = std::unique_ptr<char, XtTextDeleter>;

// A compound string in the encoding of the locale; a newline in `text` begins a new line.
[[nodiscard]] XmStringPtr compoundString(const std::string& text);
// The text of a compound string, newlines between its lines.
[[nodiscard]] std::string plainText(XmString text);

// The text with more line breaks, in the place of blanks or between characters of East Asia, where a line of it would
// be wider than `most` pixels. What stands between quotation marks stays as it is: it may be a name.
[[nodiscard]] std::string wrapped(const std::string& text, XmRenderTable fonts, int most);

// A plain Xt argument list, for the creation calls that take no variable arguments.
class ArgumentList {
public:
    template <typename Value>
    ArgumentList& set(const char* name, Value value) {
        Arg argument;
        XtSetArg(argument, const_cast<char*>(name), value);
        arguments_.push_back(argument);
        return *this;
    }
    // Of two with the same name Xt takes the later.
    ArgumentList& add(const ArgumentList& others) {
        arguments_.insert(arguments_.end(), others.arguments_.begin(), others.arguments_.end());
        return *this;
    }
    Arg* data() noexcept { return arguments_.data(); }
    Cardinal size() const noexcept { return static_cast<Cardinal>(arguments_.size()); }

private:
    std::vector<Arg> arguments_;
};
