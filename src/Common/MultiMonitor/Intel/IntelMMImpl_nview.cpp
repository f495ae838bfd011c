// Whole arrangements with their sizes in one call: three displays, or two in a given resolution.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Edid.h"
#include "Common/MultiMonitor/Intel/ICUIExternal8.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/PresentationTypes.h"

#include <algorithm>
#include <ios>
#include <memory>

namespace {

// The order in which displays enter a block.
constexpr uint32_t kEntryOrder[] = {IMMonitor::MD_NB, IMMonitor::MD_HDMI, IMMonitor::MD_DVI,
                                    IMMonitor::MD_DP, IMMonitor::MD_CRT};

// What a monitor that does not say what it likes should take.
constexpr uint16_t kUsualWidth = 1024;
constexpr uint16_t kUsualHeight = 768;
constexpr uint8_t kUsualRefresh = 60;
constexpr uint32_t kBitsPerPixel = 32;

// How a cloned display is scaled to a resolution that is not its own.
struct ScalingRow {
  uint32_t display;
  uint32_t scaling;
};
constexpr ScalingRow kScalings[] = {{IMMonitor::MD_NB, 4}, {IMMonitor::MD_CRT, 64}};

uint32_t ScalingOf(uint32_t display) {
  for (const ScalingRow& row : kScalings) {
    if (row.display == display) return row.scaling;
  }
  return 0;
}

/// The displays of a mask in the order of the entries; at most as many as the block has entries.
std::vector<uint32_t> DisplaysInEntryOrder(uint32_t displays, uint32_t entries) {
  std::vector<uint32_t> ordered;
  for (const uint32_t display : kEntryOrder) {
    if ((displays & display) != 0 && ordered.size() < entries) ordered.push_back(display);
  }
  return ordered;
}

// Places the desktops in a row.
// Deliberate: the first one's edges stay 0, the right and lower ones too, and all have its top.
void LayOutSideBySide(std::vector<CuiNViewEntry>* entries) {
  for (size_t i = 1; i < entries->size(); ++i) {
    const CuiNViewEntry& before = (*entries)[i - 1];
    CuiNViewEntry& entry = (*entries)[i];
    entry.left = before.left + before.width;
    entry.top = before.top;
    entry.right = entry.left + entry.width;
    entry.bottom = entry.top + entry.height;
  }
}

void PutEntries(const std::vector<CuiNViewEntry>& entries, CuiNViewBlock* block) {
  uint32_t index = 0;
  for (const CuiNViewEntry& entry : entries) block->SetEntry(index++, entry);
}

}  // namespace

bool IntelMMImpl::MakeNView(uint32_t operating_mode, uint32_t display_count, CuiNViewBlock* block) {
  CuiNViewBlock probe(kCuiSmallestNView);
  if (!probe.IsValid()) return false;
  CuiNViewHead head = probe.Head();
  head.probe = 1;
  head.display_count = display_count;
  probe.SetHead(head);
  DWORD err = IGFX_SUCCESS;
  if (FAILED(WriteNView(&probe, &err))) return false;

  // The driver's word on the size counts, but for one that does not hold the entries.
  const auto smallest =
      static_cast<uint32_t>(sizeof(CuiNViewHead) + size_t{display_count} * sizeof(CuiNViewEntry));
  *block = CuiNViewBlock(std::max(probe.Head().size, smallest));
  if (!block->IsValid()) return false;
  head = block->Head();
  head.operating_mode = operating_mode;
  head.display_count = display_count;
  block->SetHead(head);
  return true;
}

HRESULT IntelMMImpl::WriteNView(CuiNViewBlock* block, DWORD* driver_error) {
  DWORD err = IGFX_SUCCESS;
  const HRESULT hr =
      m_pCUIExt->SetDeviceData(IGFX_GET_SET_N_VIEW_CONFIG_GUID, block->size(), block->data(), &err);
  DCHECK(SUCCEEDED(hr));
  DCHECK(err == IGFX_SUCCESS);
  *driver_error = err;
  return hr;
}

BOOL IntelMMImpl::ApplyTriple(uint32_t operating_mode, uint32_t displays) {
  constexpr uint32_t kDisplays = 3;
  CuiNViewBlock block(0);
  if (!MakeNView(operating_mode, kDisplays, &block)) return FALSE;
  std::vector<CuiNViewEntry> entries;
  for (const uint32_t display : DisplaysInEntryOrder(displays | MD_NB, kDisplays)) {
    entries.push_back(PreferredEntry(display));
  }
  if (operating_mode == kCuiExtended) LayOutSideBySide(&entries);
  PutEntries(entries, &block);
  DWORD err = IGFX_SUCCESS;
  const HRESULT hr = WriteNView(&block, &err);
  if (SUCCEEDED(hr) && err == IGFX_SUCCESS) return TRUE;
  LOG(ERROR) << "Set up Triple display output failed, hr = " << hr << ", err = " << err;
  return FALSE;
}

EdidTiming IntelMMImpl::PreferredTiming(uint32_t display) {
  EdidTiming timing;
  timing.width = kUsualWidth;
  timing.height = kUsualHeight;
  timing.refresh = kUsualRefresh;
  EdidBlob blob;
  if (!GetEDID(display, &blob)) {
    LOG(WARNING) << std::showbase << std::hex
                 << "Failed to retrieve EDID from monitor, id = " << display;
    return timing;
  }
  const auto give_back = [this](EdidBlob* read) { FreeEDID(read); };
  const std::unique_ptr<EdidBlob, decltype(give_back)> owner(&blob, give_back);
  // Throws for a damaged block, which ends the switch.
  EDID edid;
  edid.Load(blob.pv, blob.cb);
  if (edid.HasPreferredTiming()) edid.GetDetailedTiming(&timing);
  return timing;
}

CuiNViewEntry IntelMMImpl::PreferredEntry(uint32_t display) {
  const EdidTiming timing = PreferredTiming(display);
  CuiNViewEntry entry = {};
  entry.uid = UidOfType(TypeFromBit(display));
  entry.width = timing.width;
  entry.height = timing.height;
  entry.refresh_rate = timing.refresh;
  entry.bits_per_pixel = kBitsPerPixel;
  return entry;
}

BOOL IntelMMImpl::ApplyCloneWithResolution(uint32_t displays, const DEVMODEW& dm) {
  constexpr uint32_t kDisplays = 2;
  const uint32_t displays_include_nb = displays | MD_NB;
  DCHECK(CountBits(displays_include_nb) == 2);
  if (m_pCUIExt == nullptr) return FALSE;
  CuiNViewBlock block(0);
  if (!MakeNView(kCuiClone, kDisplays, &block)) return FALSE;
  std::vector<CuiNViewEntry> entries;
  for (const uint32_t display : DisplaysInEntryOrder(displays_include_nb, kDisplays)) {
    CuiNViewEntry entry = {};
    entry.uid = UidOfType(TypeFromBit(display));
    entry.width = dm.dmPelsWidth;
    entry.height = dm.dmPelsHeight;
    entry.refresh_rate = dm.dmDisplayFrequency;
    entry.bits_per_pixel = dm.dmBitsPerPel;
    entry.scaling = ScalingOf(display);
    entries.push_back(entry);
  }
  PutEntries(entries, &block);
  DWORD err = IGFX_SUCCESS;
  const HRESULT hr = WriteNView(&block, &err);
  return SUCCEEDED(hr) && err == IGFX_SUCCESS ? TRUE : FALSE;
}

// Deliberate: the devices are those that were enumerated last.
BOOL IntelMMImpl::SetDisplayModeWithSettings(uint32_t mode, uint32_t displays, DEVMODEW* dm) {
  if (mode != DM_CLONE && !IsPresentationType(mode)) return FALSE;
  if (dm == nullptr || ApplyCloneWithResolution(displays, *dm) == 0) return FALSE;
  should_reset_display_settings_after_switch_ = FALSE;
  return TRUE;
}
