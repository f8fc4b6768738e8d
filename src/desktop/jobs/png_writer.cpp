#include "desktop/jobs/png_writer.h"

#include <csetjmp>

#include <png.h>

namespace {

struct PngErrorSlot {
    char text[256] = {};
};

void OnPngError(png_structp png, png_const_charp message)
{
    auto* slot = static_cast<PngErrorSlot*>(png_get_error_ptr(png));
    std::snprintf(slot->text, sizeof slot->text, "%s", message ? message : "libpng error");
    png_longjmp(png, 1);
}

void OnPngWarning(png_structp, png_const_charp) {}

}  // namespace

// No C++ objects with destructors live between setjmp and a longjmp here:
// libpng's error path jumps over them.
bool WritePngRgb(std::FILE* file, int width, int height, const std::uint8_t* rgb, wxString& error)
{
    PngErrorSlot slot;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &slot, OnPngError, OnPngWarning);
    if (!png) {
        error = "libpng could not start";
        return false;
    }
    png_infop info = png_create_info_struct(png);
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, info ? &info : nullptr);
        error = slot.text[0] ? wxString::FromUTF8(slot.text) : wxString("libpng could not start");
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    // Screens are mostly flat colour: fast compression costs little size.
    png_set_compression_level(png, 3);
    png_write_info(png, info);
    const std::size_t stride = static_cast<std::size_t>(width) * 3;
    for (int y = 0; y < height; ++y)
        png_write_row(png, const_cast<png_bytep>(rgb + stride * static_cast<std::size_t>(y)));
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    if (std::fflush(file) != 0) {
        error = "the file could not be written";
        return false;
    }
    return true;
}
