// XGetImage on a connection of our own: wxScreenDC would have to run on the
// main thread, and jobs run on theirs.

#include "desktop/platform/screen_capture.h"

#include <algorithm>

#include <X11/Xutil.h>

#include "desktop/platform/x11_connection_linux.h"

namespace {

struct Channel {
    unsigned long mask = 0;
    int shift = 0;  // of the mask's lowest bit
    unsigned long max = 0;

    explicit Channel(unsigned long m) : mask(m)
    {
        if (!mask)
            return;
        while (!((mask >> shift) & 1UL))
            ++shift;
        max = mask >> shift;
    }
    std::uint8_t Of(unsigned long pixel) const
    {
        if (!max)
            return 0;
        return static_cast<std::uint8_t>(((pixel & mask) >> shift) * 255UL / max);
    }
};

}  // namespace

bool ReadScreenSize(ScreenSize& size, wxString& problem)
{
    X11Connection x;
    if (!x) {
        problem = x.Problem();
        return false;
    }
    const int screen = DefaultScreen(x.Get());
    size.width = DisplayWidth(x.Get(), screen);
    size.height = DisplayHeight(x.Get(), screen);
    return true;
}

bool CaptureScreen(int left, int top, int width, int height, RgbImage& image, wxString& problem)
{
    if (width <= 0 || height <= 0) {
        problem = "an empty rectangle";
        return false;
    }
    X11Connection x;
    if (!x) {
        problem = x.Problem();
        return false;
    }
    image.width = width;
    image.height = height;
    image.rgb.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 0);

    // XGetImage refuses a rectangle that leaves the root window, so ask for
    // the part on screen and leave the rest black.
    const int screen = DefaultScreen(x.Get());
    const long screenW = DisplayWidth(x.Get(), screen);
    const long screenH = DisplayHeight(x.Get(), screen);
    const long x0 = std::max<long>(left, 0);
    const long y0 = std::max<long>(top, 0);
    const long x1 = std::min<long>(static_cast<long>(left) + width, screenW);
    const long y1 = std::min<long>(static_cast<long>(top) + height, screenH);
    if (x0 >= x1 || y0 >= y1)
        return true;

    XImage* shot = XGetImage(x.Get(), x.Root(), static_cast<int>(x0), static_cast<int>(y0),
                             static_cast<unsigned>(x1 - x0), static_cast<unsigned>(y1 - y0), AllPlanes, ZPixmap);
    if (x.SyncAndTakeError() != 0 || !shot) {
        if (shot)
            XDestroyImage(shot);
        problem = "the X server did not hand out the screen's pixels";
        return false;
    }
    Visual* visual = DefaultVisual(x.Get(), screen);
    const Channel red(shot->red_mask ? shot->red_mask : visual->red_mask);
    const Channel green(shot->green_mask ? shot->green_mask : visual->green_mask);
    const Channel blue(shot->blue_mask ? shot->blue_mask : visual->blue_mask);
    const bool direct32 = shot->bits_per_pixel == 32 && shot->byte_order == LSBFirst;
    for (long sy = 0; sy < y1 - y0; ++sy) {
        std::uint8_t* out = image.rgb.data() +
                            ((static_cast<std::size_t>(y0 - top + sy) * static_cast<std::size_t>(width)) +
                             static_cast<std::size_t>(x0 - left)) * 3;
        const std::uint8_t* row = reinterpret_cast<const std::uint8_t*>(shot->data) + sy * shot->bytes_per_line;
        for (long sx = 0; sx < x1 - x0; ++sx) {
            // The common 32-bit little-endian layout is read directly;
            // anything else through Xlib, which knows every layout.
            unsigned long pixel;
            if (direct32) {
                const std::uint8_t* p = row + sx * 4;
                pixel = static_cast<unsigned long>(p[0]) | (static_cast<unsigned long>(p[1]) << 8) |
                        (static_cast<unsigned long>(p[2]) << 16) | (static_cast<unsigned long>(p[3]) << 24);
            } else {
                pixel = XGetPixel(shot, static_cast<int>(sx), static_cast<int>(sy));
            }
            *out++ = red.Of(pixel);
            *out++ = green.Of(pixel);
            *out++ = blue.Of(pixel);
        }
    }
    XDestroyImage(shot);
    return true;
}
