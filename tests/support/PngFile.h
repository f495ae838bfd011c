// PNG files for tests that compare pictures.
#pragma once

#include <string>

#include "sim/Machine.h"

/// Reads a PNG file as premultiplied 0xAARRGGBB pixels. @return false when there is none or it
/// cannot be read
bool ReadPng(const std::wstring& path, sim::Picture* picture);

/// Writes a picture of premultiplied pixels. @return false when that failed
bool WritePng(const std::wstring& path, const sim::Picture& picture);
