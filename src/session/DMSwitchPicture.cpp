// DMSwitch: the strip of pictures. The fixed part is composed once per opening, so that a move of
// the highlight costs one copy and two drawings.
#include "session/DMSwitch.h"
#include "session/popup/GdiObjects.h"

namespace {

/// The screen's device context, for as long as it is used.
class ScreenDC {
 public:
  ScreenDC() : dc_(GetDC(nullptr)) {}
  ~ScreenDC() {
    if (dc_ != nullptr) ReleaseDC(nullptr, dc_);
  }
  ScreenDC(const ScreenDC&) = delete;
  ScreenDC& operator=(const ScreenDC&) = delete;
  HDC get() const { return dc_; }

 private:
  HDC dc_;
};

/// A device context in memory that shows a bitmap; ends both, the bitmap first.
class BitmapDC {
 public:
  BitmapDC(HDC like, HBITMAP bitmap)
      : bitmap_(bitmap), dc_(CreateCompatibleDC(like)), old_(SelectObject(dc_, bitmap)) {}
  ~BitmapDC() {
    SelectObject(dc_, old_);
    DeleteObject(bitmap_);
    if (dc_ != nullptr) DeleteDC(dc_);
  }
  BitmapDC(const BitmapDC&) = delete;
  BitmapDC& operator=(const BitmapDC&) = delete;
  HDC get() const { return dc_; }

 private:
  HBITMAP bitmap_;
  HDC dc_;
  HGDIOBJ old_;
};

/// Hands `bitmap`, which it takes over, to the window as all that the window shows.
void ShowOnWindow(HWND window, HBITMAP bitmap, SIZE size) {
  const ScreenDC screen;
  const BitmapDC memory(screen.get(), bitmap);
  POINT source = {0, 0};
  BLENDFUNCTION blend = {AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
  UpdateLayeredWindow(window, nullptr, nullptr, &size, memory.get(), &source, 0, &blend, ULW_ALPHA);
}

}  // namespace

bool DMSwitch::LoadBackgroundImages() {
  struct Background {
    std::unique_ptr<GdiImage>* image;
    const wchar_t* file;
  };
  const Background backgrounds[] = {
      {&bg_left_, L"OstrelRes\\bg_left.png"},
      {&bg_right_, L"OstrelRes\\bg_right.png"},
      {&bg_center_, L"OstrelRes\\bg_center.png"},
      {&selected_image_, L"OstrelRes\\selected.png"},
  };
  for (const Background& background : backgrounds) {
    // Deliberate: an image that a session has left behind is used again.
    if (*background.image != nullptr) continue;
    *background.image = std::make_unique<GdiImage>(PicturePath(background.file));
    if ((*background.image)->IsOk()) continue;
    ReleaseBackgroundImages();
    return false;
  }
  return true;
}

void DMSwitch::ReleaseBackgroundImages() {
  bg_left_.reset();
  bg_right_.reset();
  bg_center_.reset();
  selected_image_.reset();
}

bool DMSwitch::ComposeWholeBitmap(uint32_t item_count) {
  whole_bitmap_.reset();
  whole_bitmap_ = std::make_unique<GdiBitmap>(popup::Width(item_count), popup::kHeight);
  if (!whole_bitmap_->IsOk()) {
    whole_bitmap_.reset();
    return false;
  }
  DrawBackground(item_count);
  DrawItems();
  return true;
}

void DMSwitch::DrawBackground(uint32_t item_count) {
  GdiGraphics graphics(whole_bitmap_.get());
  const uint32_t left_width = bg_left_->Width();
  graphics.Draw(bg_left_.get(), 0, 0, left_width, bg_left_->Height());

  const uint32_t right_width = bg_right_->Width();
  const int32_t middle = popup::MiddleWidth(item_count, left_width, right_width);
  const auto middle_left = static_cast<int32_t>(left_width);
  const uint32_t center_width = bg_center_->Width();
  const uint32_t center_height = bg_center_->Height();
  // Deliberate: one drawing a pixel column, each at the picture's own width over the one before.
  for (int32_t column = 0; column < middle; ++column) {
    graphics.Draw(bg_center_.get(), middle_left + column, 0, center_width, center_height);
  }
  // Deliberate: with ends wider than the window, `middle` is negative and the right end overlaps
  // the left one.
  graphics.Draw(bg_right_.get(), middle_left + middle, 0, right_width, bg_right_->Height());
}

void DMSwitch::DrawItems() {
  GdiGraphics graphics(whole_bitmap_.get());
  for (const DMItem& item : m_items) {
    graphics.Draw(item.image.get(), popup::PictureLeft(item.index), popup::kMargin,
                  popup::kPictureSize, popup::kPictureSize);
  }
}

void DMSwitch::DrawHighlight(GdiBitmap* picture) {
  for (const DMItem& item : m_items) {
    if (item.selected == 0) continue;
    // Deliberate: the frame goes to the first flagged item, which need not be the one that is
    // applied.
    GdiGraphics graphics(picture);
    const int32_t x = popup::PictureLeft(item.index);
    graphics.Draw(selected_image_.get(), x, popup::kMargin, selected_image_->Width(),
                  selected_image_->Height());
    graphics.Draw(item.image.get(), x, popup::kMargin, popup::kPictureSize, popup::kPictureSize);
    return;
  }
}

void DMSwitch::BuildItemRects() {
  item_rects_.clear();
  for (const DMItem& item : m_items) item_rects_.push_back(MakeItemRect(item.index));
}

void DMSwitch::UpdatePopupPicture(HWND window) {
  if (whole_bitmap_ == nullptr) return;
  std::unique_ptr<GdiBitmap> picture = whole_bitmap_->Clone();
  if (picture == nullptr) return;
  DrawHighlight(picture.get());
  const HBITMAP bitmap = picture->ToHBitmap();
  picture.reset();
  if (bitmap == nullptr) return;
  ShowOnWindow(window, bitmap,
               {popup::Width(static_cast<uint32_t>(m_items.size())), popup::kHeight});
}
