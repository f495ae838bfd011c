// Owners of GDI+ objects. Each keeps the native object and the status of the last call made for it;
// a failed call leaves a null native object behind, which GDI+ takes and answers with a failure of
// its own. GDI+ must be started for the whole life of an owner.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "session/popup/GdiPlusFlat.h"

/// An image from a file.
class GdiImage {
 public:
  /// Loads `path`; see status() for whether that worked.
  explicit GdiImage(const std::wstring& path);
  virtual ~GdiImage();
  GdiImage(const GdiImage&) = delete;
  GdiImage& operator=(const GdiImage&) = delete;

  /// Size in pixels; 0 when it cannot be had.
  uint32_t Width();
  uint32_t Height();

  bool IsOk() const { return status_ == Gdiplus::Ok; }
  Gdiplus::GpStatus status() const { return status_; }
  Gdiplus::GpImage* native() const { return native_; }

 protected:
  GdiImage() = default;

  Gdiplus::GpImage* native_ = nullptr;
  Gdiplus::GpStatus status_ = Gdiplus::Ok;
};

/// A bitmap in memory, 32 bits a pixel with alpha.
class GdiBitmap : public GdiImage {
 public:
  GdiBitmap(int32_t width, int32_t height);

  /// A copy of the whole. @return null when it could not be made
  std::unique_ptr<GdiBitmap> Clone();

  /// The same pixels as a GDI bitmap over a background of 0, owned by the caller; null on failure.
  HBITMAP ToHBitmap();

 private:
  explicit GdiBitmap(Gdiplus::GpBitmap* native);
  Gdiplus::GpBitmap* bitmap() const { return static_cast<Gdiplus::GpBitmap*>(native_); }
};

/// Draws into an image for as long as it lives.
class GdiGraphics {
 public:
  explicit GdiGraphics(GdiImage* target);
  ~GdiGraphics();
  GdiGraphics(const GdiGraphics&) = delete;
  GdiGraphics& operator=(const GdiGraphics&) = delete;

  /// Draws `image`, scaled into the rectangle; a null `image` draws nothing.
  void Draw(const GdiImage* image, int32_t x, int32_t y, uint32_t width, uint32_t height);

 private:
  Gdiplus::GpGraphics* native_ = nullptr;
  Gdiplus::GpStatus status_ = Gdiplus::Ok;
};

/// A pen, its width in world units.
class GdiPen {
 public:
  GdiPen(uint32_t colour, float width);
  ~GdiPen();
  GdiPen(const GdiPen&) = delete;
  GdiPen& operator=(const GdiPen&) = delete;

 private:
  Gdiplus::GpPen* native_ = nullptr;
  Gdiplus::GpStatus status_ = Gdiplus::Ok;
};
