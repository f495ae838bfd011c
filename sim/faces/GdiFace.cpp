// GDI and flat GDI+: real work, counted, faultable and kept in the ledger. Beside it a book of
// which picture file went into which bitmap, so that a test can tell what a person would see.
#include <algorithm>
#include <optional>
#include <string>

#include "Common/Win.h"
#include "sim/MachineState.h"
#include "sim/Topology.h"
#include "sim/faces/Counted.h"

// The GDI+ headers want these two, which Win.h leaves out, and the min and max of old.
#include <objidl.h>
#include <propidl.h>
namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus
#include <gdiplus.h>

namespace sim {
namespace {

namespace flat = Gdiplus::DllExports;
using Gdiplus::GpBitmap;
using Gdiplus::GpGraphics;
using Gdiplus::GpImage;
using Gdiplus::GpPen;
using Gdiplus::GpStatus;

constexpr char kWindowDc[] = "window DC";
constexpr char kDc[] = "DC";
constexpr char kBitmap[] = "bitmap";
constexpr char kBrush[] = "brush";
constexpr char kToken[] = "GDI+ token";
constexpr char kImage[] = "GDI+ image";
constexpr char kGraphics[] = "GDI+ graphics";
constexpr char kPlusPen[] = "GDI+ pen";

Machine::State& State() { return Machine::Current().state(); }
DrawingBook& Drawings() { return State().drawings; }

// --- GDI.
// -------------------------------------------------------------------------------------------------------

// A declared fault: null with the declared last error. GDI itself often sets none.
template <typename Handle>
Handle Refuse(const Call& call) {
  SetLastError(call.FaultCode());
  return Handle();
}

template <typename Handle>
Handle Take(const char* kind, Handle handle) {
  if (handle != nullptr) LedgerTake(kind, handle);
  return handle;
}

HDC WINAPI FakeGetDC(HWND window) {
  Call call("GetDC");
  if (call.Fails()) return Refuse<HDC>(call);
  return Take(kWindowDc, GetDC(window));
}

int WINAPI FakeReleaseDC(HWND window, HDC dc) {
  Call call("ReleaseDC");
  if (call.Fails()) return Refuse<int>(call);
  LedgerGive(kWindowDc, dc);
  return ReleaseDC(window, dc);
}

HDC WINAPI FakeCreateCompatibleDC(HDC dc) {
  Call call("CreateCompatibleDC");
  if (call.Fails()) return Refuse<HDC>(call);
  return Take(kDc, CreateCompatibleDC(dc));
}

// Devices are the model's, which Wine need not have: what shows a desktop can be drawn on.
HDC ContextOfDevice(LPCSTR driver, LPCSTR device, LPCSTR port, const DEVMODEA* mode) {
  const std::string name = device != nullptr ? device : "";
  if (name.rfind("\\\\.\\", 0) != 0) return CreateDCA(driver, device, port, mode);
  const Model& model = State().model;
  const std::optional<size_t> source = FindSource(model, name);
  if (!source || !IsAttached(model, *source)) return nullptr;
  return CreateDCA("DISPLAY", nullptr, port, mode);
}

HDC WINAPI FakeCreateDCA(LPCSTR driver, LPCSTR device, LPCSTR port, const DEVMODEA* mode) {
  Call call("CreateDCA");
  if (call.Fails()) return Refuse<HDC>(call);
  const auto text = [](LPCSTR given) { return given != nullptr ? given : "null"; };
  const HDC dc = Take(kDc, ContextOfDevice(driver, device, port, mode));
  call.Read(dc != nullptr ? 1 : 0, "driver=%s device=%s port=%s%s", text(driver), text(device),
            text(port), mode != nullptr ? " mode" : "");
  return dc;
}

BOOL WINAPI FakeDeleteDC(HDC dc) {
  Call call("DeleteDC");
  if (call.Fails()) return Refuse<BOOL>(call);
  LedgerGive(kDc, dc);
  return DeleteDC(dc);
}

HBRUSH WINAPI FakeCreateSolidBrush(COLORREF colour) {
  Call call("CreateSolidBrush");
  if (call.Fails()) return Refuse<HBRUSH>(call);
  call.Read(1, "0x%lx", colour);
  return Take(kBrush, CreateSolidBrush(colour));
}

BOOL WINAPI FakeDeleteObject(HGDIOBJ object) {
  Call call("DeleteObject");
  if (call.Fails()) return Refuse<BOOL>(call);
  const uint64_t number = reinterpret_cast<uint64_t>(object);
  if (!State().ledger.Give(kBrush, number)) LedgerGive(kBitmap, object);
  Drawings().gdi_bitmaps.erase(object);
  return DeleteObject(object);
}

// --- GDI+.
// ------------------------------------------------------------------------------------------------------

// Every flat function but the start answers so before GdiplusStartup and after GdiplusShutdown.
constexpr GpStatus kNotStarted = Gdiplus::GdiplusNotInitialized;

/// Counts; `status` is what the function is to answer without working, or Ok to go on.
struct PlusCall {
  explicit PlusCall(const char* name) : call(name) {
    if (call.Fails()) {
      status =
          call.FaultCode() != 0 ? static_cast<GpStatus>(call.FaultCode()) : Gdiplus::GenericError;
    } else if (State().ledger.Count(kToken) == 0) {
      status = kNotStarted;
    }
  }
  bool Refused() const { return status != Gdiplus::Ok; }

  Call call;
  GpStatus status = Gdiplus::Ok;
};

template <typename Object>
GpStatus Took(GpStatus status, const char* kind, Object** object) {
  if (status == Gdiplus::Ok) LedgerTake(kind, *object);
  return status;
}

// The file as a test names it: what stands behind the pictures' folder.
std::string PictureName(const wchar_t* path) {
  constexpr wchar_t kFolder[] = L"OstrelRes\\";
  const std::wstring text = path != nullptr ? path : L"";
  const size_t folder = text.rfind(kFolder);
  if (folder == std::wstring::npos) return Narrow(text.substr(text.find_last_of(L"\\/") + 1));
  return Narrow(text.substr(folder + std::size(kFolder) - 1));
}

GpStatus WINAPI FakeGdiplusStartup(ULONG_PTR* token, const Gdiplus::GdiplusStartupInput* input,
                                   Gdiplus::GdiplusStartupOutput* output) {
  Call call("GdiplusStartup");
  if (call.Fails()) {
    return call.FaultCode() != 0 ? static_cast<GpStatus>(call.FaultCode()) : Gdiplus::GenericError;
  }
  const GpStatus status = Gdiplus::GdiplusStartup(token, input, output);
  if (status == Gdiplus::Ok) State().ledger.Take(kToken, *token);
  return status;
}

void WINAPI FakeGdiplusShutdown(ULONG_PTR token) {
  Call call("GdiplusShutdown");
  LedgerGive(kToken, reinterpret_cast<const void*>(token));
  Gdiplus::GdiplusShutdown(token);
}

GpStatus WINAPI FakeGdipLoadImageFromFile(const WCHAR* path, GpImage** image) {
  PlusCall call("GdipLoadImageFromFile");
  if (call.Refused()) return call.status;
  const GpStatus status = flat::GdipLoadImageFromFile(path, image);
  const std::string name = PictureName(path);
  call.call.Read(status, "%s", name.c_str());
  if (status == Gdiplus::Ok) Drawings().images[*image] = name;
  return Took(status, kImage, image);
}

GpStatus WINAPI FakeGdipCreateBitmapFromScan0(INT width, INT height, INT stride,
                                              Gdiplus::PixelFormat format, BYTE* pixels,
                                              GpBitmap** bitmap) {
  PlusCall call("GdipCreateBitmapFromScan0");
  if (call.Refused()) return call.status;
  const GpStatus status =
      flat::GdipCreateBitmapFromScan0(width, height, stride, format, pixels, bitmap);
  call.call.Read(status, "%dx%d format=0x%x", width, height, static_cast<unsigned>(format));
  return Took(status, kImage, bitmap);
}

GpStatus WINAPI FakeGdipCloneBitmapAreaI(INT x, INT y, INT width, INT height,
                                         Gdiplus::PixelFormat format, GpBitmap* bitmap,
                                         GpBitmap** clone) {
  PlusCall call("GdipCloneBitmapAreaI");
  if (call.Refused()) return call.status;
  const GpStatus status = flat::GdipCloneBitmapAreaI(x, y, width, height, format, bitmap, clone);
  call.call.Read(status, "%d,%d %dx%d", x, y, width, height);
  if (status == Gdiplus::Ok) Drawings().bitmaps[*clone] = Drawings().bitmaps[bitmap];
  return Took(status, kImage, clone);
}

GpStatus WINAPI FakeGdipDisposeImage(GpImage* image) {
  PlusCall call("GdipDisposeImage");
  if (call.Refused()) return call.status;
  if (image != nullptr) LedgerGive(kImage, image);
  Drawings().images.erase(image);
  Drawings().bitmaps.erase(image);
  return flat::GdipDisposeImage(image);
}

GpStatus WINAPI FakeGdipGetImageWidth(GpImage* image, UINT* width) {
  PlusCall call("GdipGetImageWidth");
  return call.Refused() ? call.status : flat::GdipGetImageWidth(image, width);
}

GpStatus WINAPI FakeGdipGetImageHeight(GpImage* image, UINT* height) {
  PlusCall call("GdipGetImageHeight");
  return call.Refused() ? call.status : flat::GdipGetImageHeight(image, height);
}

GpStatus WINAPI FakeGdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics) {
  PlusCall call("GdipGetImageGraphicsContext");
  if (call.Refused()) return call.status;
  const GpStatus status = flat::GdipGetImageGraphicsContext(image, graphics);
  if (status == Gdiplus::Ok) Drawings().graphics[*graphics] = image;
  return Took(status, kGraphics, graphics);
}

GpStatus WINAPI FakeGdipDeleteGraphics(GpGraphics* graphics) {
  PlusCall call("GdipDeleteGraphics");
  if (call.Refused()) return call.status;
  if (graphics != nullptr) LedgerGive(kGraphics, graphics);
  Drawings().graphics.erase(graphics);
  return flat::GdipDeleteGraphics(graphics);
}

GpStatus WINAPI FakeGdipDrawImageRectI(GpGraphics* graphics, GpImage* image, INT x, INT y,
                                       INT width, INT height) {
  PlusCall call("GdipDrawImageRectI");
  if (call.Refused()) return call.status;
  const GpStatus status = flat::GdipDrawImageRectI(graphics, image, x, y, width, height);
  const auto target = Drawings().graphics.find(graphics);
  if (status != Gdiplus::Ok || target == Drawings().graphics.end()) return status;
  const auto name = Drawings().images.find(image);
  Drawings().bitmaps[target->second].push_back(
      {name == Drawings().images.end() ? "" : name->second, x, y, width, height});
  return status;
}

GpStatus WINAPI FakeGdipCreateHBITMAPFromBitmap(GpBitmap* bitmap, HBITMAP* result,
                                                Gdiplus::ARGB background) {
  PlusCall call("GdipCreateHBITMAPFromBitmap");
  if (call.Refused()) return call.status;
  const GpStatus status = flat::GdipCreateHBITMAPFromBitmap(bitmap, result, background);
  if (status != Gdiplus::Ok) return status;
  Drawings().gdi_bitmaps[*result] = Drawings().bitmaps[bitmap];
  LedgerTake(kBitmap, *result);
  return status;
}

GpStatus WINAPI FakeGdipCreatePen1(Gdiplus::ARGB colour, Gdiplus::REAL width, Gdiplus::GpUnit unit,
                                   GpPen** pen) {
  PlusCall call("GdipCreatePen1");
  if (call.Refused()) return call.status;
  const GpStatus status = flat::GdipCreatePen1(colour, width, unit, pen);
  call.call.Read(status, "0x%lx width=%g unit=%d", static_cast<unsigned long>(colour),
                 static_cast<double>(width), static_cast<int>(unit));
  return Took(status, kPlusPen, pen);
}

GpStatus WINAPI FakeGdipDeletePen(GpPen* pen) {
  PlusCall call("GdipDeletePen");
  if (call.Refused()) return call.status;
  if (pen != nullptr) LedgerGive(kPlusPen, pen);
  return flat::GdipDeletePen(pen);
}

constexpr char kUser32[] = "user32.dll";
constexpr char kGdi32[] = "gdi32.dll";
constexpr char kGdiPlus[] = "gdiplus.dll";

}  // namespace

const std::vector<Entry>& GdiFace() {
  static const std::vector<Entry> entries = {
      {kUser32, "GetDC", Guard<FakeGetDC>()},
      {kUser32, "ReleaseDC", Guard<FakeReleaseDC>()},
      {kGdi32, "CreateCompatibleDC", Guard<FakeCreateCompatibleDC>()},
      {kGdi32, "CreateDCA", Guard<FakeCreateDCA>()},
      {kGdi32, "DeleteDC", Guard<FakeDeleteDC>()},
      {kGdi32, "CreateSolidBrush", Guard<FakeCreateSolidBrush>()},
      {kGdi32, "DeleteObject", Guard<FakeDeleteObject>()},
      CountedEntry<SelectObject>(kGdi32, "SelectObject"),
      {kGdiPlus, "GdiplusStartup", Guard<FakeGdiplusStartup>()},
      {kGdiPlus, "GdiplusShutdown", Guard<FakeGdiplusShutdown>()},
      {kGdiPlus, "GdipLoadImageFromFile", Guard<FakeGdipLoadImageFromFile>()},
      {kGdiPlus, "GdipCreateBitmapFromScan0", Guard<FakeGdipCreateBitmapFromScan0>()},
      {kGdiPlus, "GdipCloneBitmapAreaI", Guard<FakeGdipCloneBitmapAreaI>()},
      {kGdiPlus, "GdipDisposeImage", Guard<FakeGdipDisposeImage>()},
      {kGdiPlus, "GdipGetImageWidth", Guard<FakeGdipGetImageWidth>()},
      {kGdiPlus, "GdipGetImageHeight", Guard<FakeGdipGetImageHeight>()},
      {kGdiPlus, "GdipGetImageGraphicsContext", Guard<FakeGdipGetImageGraphicsContext>()},
      {kGdiPlus, "GdipDeleteGraphics", Guard<FakeGdipDeleteGraphics>()},
      {kGdiPlus, "GdipDrawImageRectI", Guard<FakeGdipDrawImageRectI>()},
      {kGdiPlus, "GdipCreateHBITMAPFromBitmap", Guard<FakeGdipCreateHBITMAPFromBitmap>()},
      {kGdiPlus, "GdipCreatePen1", Guard<FakeGdipCreatePen1>()},
      {kGdiPlus, "GdipDeletePen", Guard<FakeGdipDeletePen>()},
  };
  return entries;
}

}  // namespace sim
