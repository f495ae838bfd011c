#include "tests/support/PngFile.h"

#include "session/popup/GdiPlusFlat.h"

namespace {

namespace flat = Gdiplus::DllExports;

constexpr CLSID kPngEncoder = {
    0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
constexpr Gdiplus::PixelFormat kPremultiplied = 0xE200B;
static_assert(kPremultiplied == PixelFormat32bppPARGB, "the format of a layered window's picture");

/// GDI+ for this file's own use, apart from the library's.
class GdiPlus {
 public:
  GdiPlus() {
    const Gdiplus::GdiplusStartupInput input;
    started_ = Gdiplus::GdiplusStartup(&token_, &input, nullptr) == Gdiplus::Ok;
  }
  ~GdiPlus() {
    if (started_) Gdiplus::GdiplusShutdown(token_);
  }
  GdiPlus(const GdiPlus&) = delete;
  GdiPlus& operator=(const GdiPlus&) = delete;

 private:
  ULONG_PTR token_ = 0;
  bool started_ = false;
};

bool CopyPixels(Gdiplus::GpBitmap* bitmap, sim::Picture* picture) {
  UINT width = 0;
  UINT height = 0;
  if (flat::GdipGetImageWidth(bitmap, &width) != Gdiplus::Ok) return false;
  if (flat::GdipGetImageHeight(bitmap, &height) != Gdiplus::Ok) return false;
  picture->width = width;
  picture->height = height;
  picture->pixels.resize(static_cast<size_t>(width) * height);
  const Gdiplus::Rect all(0, 0, static_cast<INT>(width), static_cast<INT>(height));
  Gdiplus::BitmapData data = {};
  data.Width = width;
  data.Height = height;
  data.Stride = static_cast<INT>(width * 4);
  data.PixelFormat = kPremultiplied;
  data.Scan0 = picture->pixels.data();
  constexpr UINT kRead = Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeUserInputBuf;
  if (flat::GdipBitmapLockBits(bitmap, &all, kRead, kPremultiplied, &data) != Gdiplus::Ok) {
    return false;
  }
  return flat::GdipBitmapUnlockBits(bitmap, &data) == Gdiplus::Ok;
}

}  // namespace

bool ReadPng(const std::wstring& path, sim::Picture* picture) {
  const GdiPlus gdi_plus;
  Gdiplus::GpBitmap* bitmap = nullptr;
  if (flat::GdipCreateBitmapFromFile(path.c_str(), &bitmap) != Gdiplus::Ok) return false;
  const bool copied = CopyPixels(bitmap, picture);
  flat::GdipDisposeImage(bitmap);
  return copied;
}

bool WritePng(const std::wstring& path, const sim::Picture& picture) {
  const GdiPlus gdi_plus;
  std::vector<uint32_t> pixels = picture.pixels;
  Gdiplus::GpBitmap* bitmap = nullptr;
  if (flat::GdipCreateBitmapFromScan0(
          static_cast<INT>(picture.width), static_cast<INT>(picture.height),
          static_cast<INT>(picture.width * 4), kPremultiplied,
          reinterpret_cast<BYTE*>(pixels.data()), &bitmap) != Gdiplus::Ok) {
    return false;
  }
  const Gdiplus::GpStatus status =
      flat::GdipSaveImageToFile(bitmap, path.c_str(), &kPngEncoder, nullptr);
  flat::GdipDisposeImage(bitmap);
  return status == Gdiplus::Ok;
}
