#pragma once
// PNG files from RGB pixels, with libpng: no toolkit image classes, so it
// runs on any thread (wxImage handlers are not safe off the main thread).

#include <cstdint>
#include <cstdio>

#include <wx/string.h>

// Writes 8-bit RGB rows (top row first, 3 bytes a pixel) to an open file.
// Each call has its own libpng state; the file stays open. False with
// `error` set when libpng gave up (a full disk, say).
bool WritePngRgb(std::FILE* file, int width, int height, const std::uint8_t* rgb, wxString& error);
