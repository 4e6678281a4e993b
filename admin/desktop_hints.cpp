#include "admin/desktop_hints.h"

#include <X11/Xatom.h>
#include <Xm/Protocols.h>

#include <algorithm>
#include <cmath>

#include "motifutil/icons.h"
#include "motifutil/true_color.h"

namespace {

constexpr int kLogoSize = 48;
constexpr unsigned long kBlue = 0x2f6db5;
constexpr unsigned long kBody = 0xd1deeb;
constexpr unsigned long kLid = 0xffffff;

struct Point {
    double x, y;
};

// Every start draws hundreds of thousands of points: std::hypot, which guards against overflow, would take ten times as
// long.
double length(double x, double y) {
    return std::sqrt(x * x + y * y);
}

// How far outside (above 1) or inside of an ellipse of the logo's width a point is.
double inEllipse(const Point& at, double middle, double height) {
    return length((at.x - 24) / 14, (at.y - middle) / height);
}

double distanceToSegment(const Point& at, const Point& from, const Point& to) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double along = std::clamp(((at.x - from.x) * dx + (at.y - from.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    return length(at.x - from.x - along * dx, at.y - from.y - along * dy);
}

// The lower half of an ellipse as a line.
bool isOnRim(const Point& at, double middle) {
    constexpr double kHalfWidth = 0.8;
    constexpr double kHeight = 5;
    return at.y > middle && std::abs(inEllipse(at, middle, kHeight) - 1) * kHeight < kHalfWidth;
}

// The logo at a point of its 48 by 48 units, as packaging/odbcadmin.svg draws it: a drum with a lid, two rims and a
// tick.
unsigned long logoColour(const Point& at) {
    constexpr double kHalfTick = 2.25;
    // Most of it is ground.
    if (std::abs(at.x - 24) > 14 || at.y < 7.5 || at.y > 40.5) {
        return kBlue;
    }
    if (inEllipse(at, 13, 5.5) <= 1) {
        return kLid;
    }
    const bool isInBody = at.y >= 17 && (at.y <= 35 || inEllipse(at, 35, 5.5) <= 1);
    const bool isInTick = distanceToSegment(at, {15.5, 28}, {24, 39}) <= kHalfTick ||
                          distanceToSegment(at, {24, 39}, {32.5, 28}) <= kHalfTick;
    return isInBody && !isInTick && !isOnRim(at, 16.5) && !isOnRim(at, 25.5) ? kBody : kBlue;
}

// One pixel of the logo in a picture of `size` by `size`, opaque (0xffRRGGBB), its edges smooth.
unsigned long logoPixel(int column, int row, int size) {
    constexpr int kSteps = 4;
    unsigned long sums[3]{};
    for (int step = 0; step < kSteps * kSteps; ++step) {
        const auto at = [size](int pixel, int part) { return (pixel + (part + 0.5) / kSteps) * kLogoSize / size; };
        const unsigned long colour = logoColour({at(column, step % kSteps), at(row, step / kSteps)});
        for (int part = 0; part < 3; ++part) {
            sums[part] += colour >> (16 - 8 * part) & 255;
        }
    }
    unsigned long pixel = 0xff;
    for (const unsigned long sum : sums) {
        pixel = pixel << 8 | sum / (kSteps * kSteps);
    }
    return pixel;
}

// Row by row.
std::vector<unsigned long> drawLogo(int size) {
    std::vector<unsigned long> picture;
    for (int pixel = 0; pixel < size * size; ++pixel) {
        picture.push_back(logoPixel(pixel % size, pixel / size, size));
    }
    return picture;
}

XColor colourOf(unsigned long pixel) {
    XColor colour{};
    const auto part = [pixel](int shift) { return static_cast<unsigned short>((pixel >> shift & 255) * 257); };
    colour.red = part(16);
    colour.green = part(8);
    colour.blue = part(0);
    return colour;
}

// For window managers that take a pixmap: the picture of the logo's own size.
void setIconPixmap(Widget shell, const std::vector<unsigned long>& picture) {
    Display* connection = XtDisplay(shell);
    const int screen = DefaultScreen(connection);
    const auto depth = static_cast<unsigned int>(DefaultDepth(connection, screen));
    constexpr int kBitsOfAPixel = 32;
    std::vector<char> data(picture.size() * kBitsOfAPixel / 8);
    XImage* image = XCreateImage(connection, DefaultVisual(connection, screen), depth, ZPixmap, 0, data.data(),
                                 kLogoSize, kLogoSize, kBitsOfAPixel, 0);
    if (image == nullptr) {
        return;
    }
    bool isDrawn = true;
    for (int pixel = 0; pixel < kLogoSize * kLogoSize; ++pixel) {
        XColor colour = colourOf(picture[static_cast<std::size_t>(pixel)]);
        isDrawn = isDrawn && setPixel(connection, DefaultColormap(connection, screen), colour);
        XPutPixel(image, pixel % kLogoSize, pixel / kLogoSize, colour.pixel);
    }
    // A server of few colours shows no icon, which it could show only in colours of others.
    if (isDrawn) {
        const Pixmap icon = XCreatePixmap(connection, RootWindow(connection, screen), kLogoSize, kLogoSize, depth);
        GC context = XCreateGC(connection, icon, 0, nullptr);
        XPutImage(connection, icon, context, image, 0, 0, 0, 0, kLogoSize, kLogoSize);
        XFreeGC(connection, context);
        setIcon(shell, XmNiconPixmap, icon);
    }
    image->data = nullptr;
    XDestroyImage(image);
}

// Xt calls it when there is nothing else to do (XtWorkProc).
Boolean drawIcon(XtPointer window) {
    auto* shell = static_cast<Widget>(window);
    // Each picture begins with its width and height.
    std::vector<unsigned long> pictures;
    for (const int size : {16, 32, kLogoSize, 64}) {
        const std::vector<unsigned long> picture = drawLogo(size);
        if (size == kLogoSize) {
            setIconPixmap(shell, picture);
        }
        pictures.insert(pictures.end(), 2, static_cast<unsigned long>(size));
        pictures.insert(pictures.end(), picture.begin(), picture.end());
    }
    // What has 32 bits on the wire is a long for Xlib (XChangeProperty).
    XChangeProperty(XtDisplay(shell), XtWindow(shell), XInternAtom(XtDisplay(shell), "_NET_WM_ICON", False),
                    XA_CARDINAL, 32, PropModeReplace, reinterpret_cast<const unsigned char*>(pictures.data()),
                    static_cast<int>(pictures.size()));
    return True;
}

std::vector<std::string>& restartCommand() {
    static std::vector<std::string> command;
    return command;
}

// Nothing has to be saved: what was applied is in the files. To set the command again says so.
void saveYourself(Widget shell, XtPointer /*clientData*/, XtPointer /*callData*/) {
    std::vector<char*> arguments;
    for (std::string& argument : restartCommand()) {
        arguments.push_back(argument.data());
    }
    XSetCommand(XtDisplay(shell), XtWindow(shell), arguments.data(), static_cast<int>(arguments.size()));
}

}  // namespace

void publishIcon(Widget shell) {
    XtAppAddWorkProc(XtWidgetToApplicationContext(shell), drawIcon, shell);
}

void publishRestartCommand(Widget shell, std::vector<std::string> command) {
    restartCommand() = std::move(command);
    saveYourself(shell, nullptr, nullptr);
    XmAddWMProtocolCallback(shell, XInternAtom(XtDisplay(shell), "WM_SAVE_YOURSELF", False), saveYourself, nullptr);
}
