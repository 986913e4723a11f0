#pragma once

#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "display/Drawing.hpp"

namespace ZARN::Display {

/// A decoded PNG: 0xRRGGBB in rows.
struct Picture {
  std::size_t columns = 0;
  std::size_t rows = 0;
  std::vector<std::uint32_t> pixels;

  std::uint32_t At(std::size_t column, std::size_t row) const {
    return pixels.at(row * columns + column);
  }
};

/// Decode a PNG with cairo, which uses libpng.
inline Picture Decode(const std::string& png) {
  struct Reader {
    const std::string& bytes;
    std::size_t at = 0;
  } reader = {png};
  cairo_surface_t* const surface = cairo_image_surface_create_from_png_stream(
      [](void* from, unsigned char* data, unsigned int length) {
        auto& source = *static_cast<Reader*>(from);
        if (source.at + length > source.bytes.size()) {
          return CAIRO_STATUS_READ_ERROR;
        }
        std::memcpy(data, source.bytes.data() + source.at, length);
        source.at += length;
        return CAIRO_STATUS_SUCCESS;
      },
      &reader);
  EXPECT_EQ(cairo_surface_status(surface), CAIRO_STATUS_SUCCESS);
  Picture picture;
  picture.columns =
      static_cast<std::size_t>(cairo_image_surface_get_width(surface));
  picture.rows =
      static_cast<std::size_t>(cairo_image_surface_get_height(surface));
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  for (std::size_t row = 0; row < picture.rows; ++row) {
    for (std::size_t column = 0; column < picture.columns; ++column) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel,
                  data + row * static_cast<std::size_t>(stride) + 4 * column,
                  sizeof(pixel));
      picture.pixels.push_back(pixel & 0xFFFFFFU);
    }
  }
  cairo_surface_destroy(surface);
  return picture;
}

/// A colour as a pixel.
inline std::uint32_t PixelOf(const Colour& colour) {
  return static_cast<std::uint32_t>(colour.red) << 16U |
         static_cast<std::uint32_t>(colour.green) << 8U | colour.blue;
}

}  // namespace ZARN::Display
