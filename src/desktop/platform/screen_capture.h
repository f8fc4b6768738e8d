#pragma once
// The screen's size and a copy of a rectangle of it, from any thread.

#include <cstdint>
#include <vector>

#include <wx/string.h>

struct ScreenSize {
    int width = 0;
    int height = 0;
};

// Pixels row by row from the top, three bytes (red, green, blue) each.
struct RgbImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

// False with `problem` set when there is no usable display.
bool ReadScreenSize(ScreenSize& size, wxString& problem);

// The rectangle at (left, top) of width × height (both above zero). Parts of
// it outside the screen are black, so the image always has the requested
// size. False with `problem` set when there is no display or the capture
// failed.
bool CaptureScreen(int left, int top, int width, int height, RgbImage& image, wxString& problem);
