#include "session/popup/GdiObjects.h"

namespace gdip = Gdiplus::DllExports;

namespace {

constexpr Gdiplus::PixelFormat kPixelFormat = 0x26200A;  // 32 bits with alpha
static_assert(kPixelFormat == PixelFormat32bppARGB, "the pop-up's pixels have an alpha channel");

}  // namespace

GdiImage::GdiImage(const std::wstring& path) {
  status_ = gdip::GdipLoadImageFromFile(path.c_str(), &native_);
}

GdiImage::~GdiImage() {
  if (native_ != nullptr) gdip::GdipDisposeImage(native_);
}

uint32_t GdiImage::Width() {
  UINT width = 0;
  status_ = gdip::GdipGetImageWidth(native_, &width);
  return IsOk() ? width : 0;
}

uint32_t GdiImage::Height() {
  UINT height = 0;
  status_ = gdip::GdipGetImageHeight(native_, &height);
  return IsOk() ? height : 0;
}

GdiBitmap::GdiBitmap(int32_t width, int32_t height) {
  Gdiplus::GpBitmap* created = nullptr;
  status_ = gdip::GdipCreateBitmapFromScan0(width, height, 0, kPixelFormat, nullptr, &created);
  native_ = created;
}

GdiBitmap::GdiBitmap(Gdiplus::GpBitmap* native) { native_ = native; }

std::unique_ptr<GdiBitmap> GdiBitmap::Clone() {
  const auto width = static_cast<int32_t>(Width());
  const auto height = static_cast<int32_t>(Height());
  Gdiplus::GpBitmap* cloned = nullptr;
  status_ = gdip::GdipCloneBitmapAreaI(0, 0, width, height, kPixelFormat, bitmap(), &cloned);
  if (!IsOk()) return nullptr;
  return std::unique_ptr<GdiBitmap>(new GdiBitmap(cloned));
}

HBITMAP GdiBitmap::ToHBitmap() {
  HBITMAP result = nullptr;
  status_ = gdip::GdipCreateHBITMAPFromBitmap(bitmap(), &result, 0);
  return IsOk() ? result : nullptr;
}

GdiGraphics::GdiGraphics(GdiImage* target) {
  status_ = gdip::GdipGetImageGraphicsContext(target->native(), &native_);
}

GdiGraphics::~GdiGraphics() {
  if (native_ != nullptr) gdip::GdipDeleteGraphics(native_);
}

void GdiGraphics::Draw(const GdiImage* image, int32_t x, int32_t y, uint32_t width,
                       uint32_t height) {
  if (image == nullptr) return;
  status_ = gdip::GdipDrawImageRectI(native_, image->native(), x, y, static_cast<INT>(width),
                                     static_cast<INT>(height));
}

GdiPen::GdiPen(uint32_t colour, float width) {
  status_ = gdip::GdipCreatePen1(colour, width, Gdiplus::UnitWorld, &native_);
}

GdiPen::~GdiPen() {
  if (native_ != nullptr) gdip::GdipDeletePen(native_);
}
