#include "session/catalogue/Projectors.h"

#include "Common/Config.h"
#include "Common/CountedReference.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "session/catalogue/PresentationRules.h"

namespace {

constexpr uint8_t kNotAsked = 255;

uint8_t g_panelReaches1024x768 = kNotAsked;

bool IsPanelTooSmall(IPhysicalMonitor* monitor) {
  uint32_t width = 0;
  uint32_t height = 0;
  // Deliberate: a size that cannot be read counts as large enough.
  if (!monitor->GetNativeResolution(IMMonitor::MD_NB, &width, &height)) return false;
  return width < catalogue::kLargePresentation.width ||
         height < catalogue::kLargePresentation.height;
}

}  // namespace

bool ReadPresentationSize(uint32_t type, DWORD* width, DWORD* height) {
  const catalogue::PresentationType* const row = catalogue::FindPresentationType(type);
  if (row == nullptr) return false;
  *width = ReadConfigInt(row->section, L"Width", row->width);
  *height = ReadConfigInt(row->section, L"Height", row->height);
  return true;
}

BOOL ApplyPresentationResolution(uint32_t type) {
  if (catalogue::FindPresentationType(type) == nullptr) return 0;
  DEVMODEA dm = {};
  if (ReadDisplaySettings(ENUM_CURRENT_SETTINGS, nullptr, &dm) == 0) return 0;
  const DWORD current_width = dm.dmPelsWidth;
  const DWORD current_height = dm.dmPelsHeight;
  dm.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;
  ReadPresentationSize(type, &dm.dmPelsWidth, &dm.dmPelsHeight);
  if (dm.dmPelsWidth == current_width && dm.dmPelsHeight == current_height) return 1;
  return ChangeDisplayResolution(GetMultiMonitorObject(), dm) ? 1 : 0;
}

bool PanelReaches1024x768(IPhysicalMonitor* (*create)()) {
  if (g_panelReaches1024x768 != kNotAsked) return g_panelReaches1024x768 != 0;
  g_panelReaches1024x768 = 1;
  try {
    const CountedReference<IPhysicalMonitor> ext(create());
    DCHECK(ext.get() != NULL);
    // Deliberate: without a reader the answer is no, this once; the next call finds a yes.
    if (ext.get() == nullptr) return false;
    if (IsPanelTooSmall(ext.get())) g_panelReaches1024x768 = 0;
  } catch (...) {
    // The panel could not be asked, which counts as large enough.
  }
  return g_panelReaches1024x768 != 0;
}

bool PanelReaches1024x768() { return PanelReaches1024x768(&CreatePhysicalMonitor); }
