#include "help/window_property.h"

#include <X11/Xatom.h>

#include <cstring>
#include <memory>
#include <string_view>

#include "kvlib/text.h"

namespace {

constexpr long kLongestProperty = 8192;

struct XDeleter {
    void operator()(unsigned char* data) const { XFree(data); }
};

// What one read of a property brings.
class PropertyValue {
public:
    PropertyValue(Display* display, Window window, Atom atom, bool destroy = false) {
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        const int status = XGetWindowProperty(display, window, atom, 0, kLongestProperty, destroy ? True : False,
                                              XA_STRING, &type_, &format_, &items_, &rest, &data);
        data_.reset(data);
        exists_ = status == Success && type_ != None;
    }
    bool exists() const { return exists_; }
    std::string_view text() const {
        return exists_ && format_ == 8 && data_ ? std::string_view(reinterpret_cast<const char*>(data_.get()), items_)
                                                : std::string_view();
    }

private:
    Atom type_ = None;
    int format_ = 0;
    unsigned long items_ = 0;
    std::unique_ptr<unsigned char, XDeleter> data_;
    bool exists_ = false;
};

}  // namespace

int private_WWHelp_Platform_WindowPropertyExists(Display* display, Window window, Atom atom) {
    return PropertyValue(display, window, atom).exists() ? 0 : -1;
}

int private_WWHelp_Platform_WindowPropertyGet(Display* display, Window window, Atom atom, char* buffer,
                                              std::size_t size) {
    const PropertyValue value(display, window, atom);
    if (size < 2 || value.text().empty()) {
        return -1;
    }
    copyCut(buffer, size, value.text());
    return 0;
}

int private_WWHelp_Platform_WindowPropertyCreate(Display* display, Window window, Atom atom, const char* text) {
    if (private_WWHelp_Platform_WindowPropertyExists(display, window, atom) == 0) {
        return -1;
    }
    writeWindowProperty(display, window, atom, text);
    return 0;
}

int private_WWHelp_Platform_WindowPropertyDestroy(Display* display, Window window, Atom atom) {
    return PropertyValue(display, window, atom, /*destroy=*/true).exists() ? 0 : -1;
}

void writeWindowProperty(Display* display, Window window, Atom atom, const char* text) {
    XChangeProperty(display, window, atom, XA_STRING, 8, PropModeReplace, reinterpret_cast<const unsigned char*>(text),
                    static_cast<int>(std::strlen(text)));
}
