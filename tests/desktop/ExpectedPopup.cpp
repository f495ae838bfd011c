#include "tests/desktop/ExpectedPopup.h"

#include <memory>
#include <stdexcept>

#include "session/popup/GdiPlusFlat.h"

namespace {

constexpr int kPictureSize = 80;

class GdiPlus {
 public:
  GdiPlus() {
    Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok) {
      throw std::runtime_error("GDI+ does not start");
    }
  }
  ~GdiPlus() { Gdiplus::GdiplusShutdown(token_); }
  GdiPlus(const GdiPlus&) = delete;
  GdiPlus& operator=(const GdiPlus&) = delete;

 private:
  ULONG_PTR token_ = 0;
};

std::unique_ptr<Gdiplus::Image> Picture(const std::string& file) {
  const std::wstring path = L"OstrelRes\\" + std::wstring(file.begin(), file.end());
  auto image = std::make_unique<Gdiplus::Image>(path.c_str());
  if (image->GetLastStatus() != Gdiplus::Ok) throw std::runtime_error("cannot read " + file);
  return image;
}

void DrawInItsOwnSize(Gdiplus::Graphics* graphics, Gdiplus::Image* image, int x, int y) {
  graphics->DrawImage(image, x, y, static_cast<int>(image->GetWidth()),
                      static_cast<int>(image->GetHeight()));
}

// The middle picture is laid over itself, one pixel further each time.
void DrawBackground(Gdiplus::Graphics* graphics, int width) {
  const auto left = Picture("bg_left.png");
  const auto centre = Picture("bg_center.png");
  const auto right = Picture("bg_right.png");
  const int left_width = static_cast<int>(left->GetWidth());
  const int middle = width - left_width - static_cast<int>(right->GetWidth());
  DrawInItsOwnSize(graphics, left.get(), 0, 0);
  for (int c = 0; c < middle; ++c) DrawInItsOwnSize(graphics, centre.get(), left_width + c, 0);
  DrawInItsOwnSize(graphics, right.get(), left_width + middle, 0);
}

void DrawItems(Gdiplus::Graphics* graphics, const ExpectedPopup& popup) {
  const auto left_edge = [](size_t item) { return static_cast<int>(item * kItemPitch + kMargin); };
  for (size_t item = 0; item < popup.pictures.size(); ++item) {
    const auto picture = Picture(popup.pictures[item]);
    graphics->DrawImage(picture.get(), left_edge(item), static_cast<int>(kMargin), kPictureSize,
                        kPictureSize);
  }
  if (popup.highlighted < 0) return;
  const auto item = static_cast<size_t>(popup.highlighted);
  const auto frame = Picture("selected.png");
  DrawInItsOwnSize(graphics, frame.get(), left_edge(item), static_cast<int>(kMargin));
  const auto picture = Picture(popup.pictures[item]);
  graphics->DrawImage(picture.get(), left_edge(item), static_cast<int>(kMargin), kPictureSize,
                      kPictureSize);
}

}  // namespace

uint32_t PopupWidth(const ExpectedPopup& popup) {
  return static_cast<uint32_t>(popup.pictures.size()) * kItemPitch + kMargin;
}

std::vector<uint32_t> DrawOverDesktop(const ExpectedPopup& popup, uint32_t desktop_colour) {
  const GdiPlus gdi_plus;
  const int width = static_cast<int>(PopupWidth(popup));
  const int height = static_cast<int>(kPopupHeight);
  Gdiplus::Bitmap bitmap(width, height, PixelFormat32bppARGB);
  {
    Gdiplus::Graphics graphics(&bitmap);
    graphics.Clear(Gdiplus::Color(0xFF000000 | desktop_colour));
    DrawBackground(&graphics, width);
    DrawItems(&graphics, popup);
  }
  std::vector<uint32_t> pixels;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      Gdiplus::Color colour;
      bitmap.GetPixel(x, y, &colour);
      pixels.push_back(colour.GetValue() & 0xFFFFFF);
    }
  }
  return pixels;
}
