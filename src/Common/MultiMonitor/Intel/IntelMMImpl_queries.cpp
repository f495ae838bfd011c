// What is connected, what is active, and how.
#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/Edid.h"
#include "Common/MultiMonitor/Intel/CuiDevices.h"
#include "Common/MultiMonitor/Intel/ICUIExternal8.h"
#include "Common/MultiMonitor/Intel/IntelDeviceTypes.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"

#include <algorithm>
#include <ios>
#include <memory>

namespace {

// Deliberate: a third adapter is not looked at.
constexpr size_t kWalkedAdapters = 2;

// Deliberate: one fixed device, whichever display is asked for.
constexpr uint32_t kNamedUid = 1;

// What fewer than three displays make of an operating mode, and what three do.
struct OperatingModeRow {
  uint32_t operating_mode;
  uint32_t mode;
  uint32_t triple_mode;
};
constexpr OperatingModeRow kOperatingModes[] = {
    {kCuiClone, IMMonitor::DM_CLONE, IMMonitor::DM_TRIPLE_CLONE},
    {kCuiExtended, IMMonitor::DM_EXTEND, IMMonitor::DM_TRIPLE_EXTEND},
};

// Untouched for three displays in an operating mode that is none of theirs.
void ReadMode(const CuiNViewHead& head, uint32_t* imm_mode) {
  const bool triple = head.display_count >= 3;
  for (const OperatingModeRow& row : kOperatingModes) {
    if (row.operating_mode != head.operating_mode) continue;
    *imm_mode = triple ? row.triple_mode : row.mode;
    return;
  }
  if (triple) {
    DCHECK(false) << "Unrecognized display mode";
  } else {
    *imm_mode = IMMonitor::DM_SINGLE;
  }
}

DWORD OrientationOf(const CuiNViewEntry& entry) {
  if (entry.orientation <= DMDO_270) return entry.orientation;
  DCHECK(false) << "Unknown orientation";
  return DMDO_DEFAULT;
}

void CopySettings(const CuiNViewEntry& entry, DEVMODEA* dm) {
  dm->dmPelsWidth = entry.width;
  dm->dmPelsHeight = entry.height;
  dm->dmBitsPerPel = entry.bits_per_pixel;
  dm->dmDisplayFrequency = entry.refresh_rate;
  dm->dmPosition.x = static_cast<LONG>(entry.left);
  dm->dmPosition.y = static_cast<LONG>(entry.top);
  dm->dmDisplayOrientation = OrientationOf(entry);
}

// The size of a block for all displays that the smallest one told of. It may have told of none.
uint32_t SizeForAll(const CuiNViewHead& head) {
  const int64_t size =
      (int64_t{head.display_count} - 1) * int64_t{sizeof(CuiNViewEntry)} + int64_t{head.size};
  return static_cast<uint32_t>(std::clamp<int64_t>(size, kCuiSmallestNView, UINT32_MAX));
}

}  // namespace

BOOL IntelMMImpl::GetConnectedDisplays(uint32_t* imm_displays, uint32_t* display_count) {
  DCHECK(imm_displays != NULL);
  DCHECK(display_count != NULL);
  if (m_pCUIExt == nullptr || imm_displays == nullptr || display_count == nullptr) return FALSE;
  constexpr uint32_t kConnected = kCuiDeviceAttached | kCuiDeviceActive;
  if (WalkDevices(kConnected, imm_displays, display_count)) return TRUE;
  // Windows lists no Intel device: it may do so once it has read its stored settings again.
  ChangeDisplaySettingsExA(nullptr, nullptr, nullptr, 0, nullptr);
  return WalkDevices(kConnected, imm_displays, display_count) ? TRUE : FALSE;
}

BOOL IntelMMImpl::GetActiveDisplays(uint32_t* imm_displays, uint32_t* display_count) {
  if (m_pCUIExt == nullptr || imm_displays == nullptr || display_count == nullptr) return FALSE;
  return WalkDevices(kCuiDeviceActive, imm_displays, display_count) ? TRUE : FALSE;
}

bool IntelMMImpl::WalkDevices(uint32_t status_test, uint32_t* displays, uint32_t* display_count) {
  std::vector<std::wstring> names;
  GetDeviceNamesByVendor("*8086*", &names);
  if (names.empty()) return false;
  *displays = 0;
  *display_count = 0;
  if (names.size() > kWalkedAdapters) names.resize(kWalkedAdapters);
  for (const std::wstring& name : names) {
    CuiDevices devices(m_pCUIExt, name);
    while (devices.Next()) {
      if (devices.type() == 0 || (devices.status() & status_test) == 0) continue;
      const uint32_t display = DisplayOfIntelType(devices.type());
      // Deliberate: once a display has been found, a device of unknown type counts without a bit.
      if (display == 0 && *displays == 0) continue;
      if ((*displays & display) != 0) continue;
      *displays |= display;
      ++*display_count;
    }
  }
  return true;
}

HRESULT IntelMMImpl::QueryNView(CuiNViewBlock* block, DWORD* err) {
  return m_pCUIExt->GetDeviceData(IGFX_GET_SET_N_VIEW_CONFIG_GUID, block->size(), block->data(),
                                  err);
}

BOOL IntelMMImpl::GetCurrentDisplayMode(uint32_t* imm_mode, uint32_t* imm_displays) {
  DCHECK(imm_mode != NULL);
  DCHECK(imm_displays != NULL);
  if (m_pCUIExt == nullptr || imm_mode == nullptr || imm_displays == nullptr) return FALSE;
  CuiNViewBlock probe(kCuiSmallestNView);
  if (!probe.IsValid()) return FALSE;
  CuiNViewHead head = probe.Head();
  head.probe = 1;
  probe.SetHead(head);
  DWORD err = IGFX_SUCCESS;
  HRESULT hr = QueryNView(&probe, &err);
  if (FAILED(hr)) {
    LOG(ERROR) << std::showbase << std::hex
               << "Call ICUIExternal8::GetDeviceData(IGFX_GET_SET_N_VIEW_CONFIG_GUID)failed, hr = "
               << static_cast<uint32_t>(hr) << ", err = " << err;
    return FALSE;
  }

  CuiNViewBlock block(probe.Head().size);
  if (!block.IsValid()) return FALSE;
  err = IGFX_SUCCESS;
  hr = QueryNView(&block, &err);
  // Deliberate: a failure here leaves a block without displays, which reads as a single one.
  DCHECK(SUCCEEDED(hr));
  DCHECK(err == IGFX_SUCCESS);
  ReadMode(block.Head(), imm_mode);
  RefreshDeviceList();
  *imm_displays = 0;
  for (uint32_t i = 0; i < block.EntryCount(); ++i)
    *imm_displays |= DisplayOfUid(block.Entry(i).uid);
  return TRUE;
}

bool IntelMMImpl::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  DCHECK(CountBits(imm_display) == 1);
  DCHECK(dm != NULL);
  if (m_pCUIExt == nullptr || dm == nullptr) return false;
  CuiNViewBlock first(kCuiSmallestNView);
  if (!first.IsValid()) return false;
  DWORD err = IGFX_SUCCESS;
  HRESULT hr = QueryNView(&first, &err);
  RefreshDeviceList();
  const uint32_t uid = UidOfType(TypeFromBit(imm_display));
  const bool known = SUCCEEDED(hr) && err == IGFX_SUCCESS && first.EntryCount() > 0;
  if (known && first.Entry(0).uid == uid) {
    CopySettings(first.Entry(0), dm);
    return true;
  }

  CuiNViewBlock all(SizeForAll(first.Head()));
  if (!all.IsValid()) return false;
  err = IGFX_SUCCESS;
  hr = QueryNView(&all, &err);
  if (FAILED(hr)) LOG(ERROR) << "Call to GetConfiguration failed, err = " << err;
  if (FAILED(hr) || err != IGFX_SUCCESS) return false;
  for (uint32_t i = 0; i < all.EntryCount(); ++i) {
    if (all.Entry(i).uid != uid) continue;
    CopySettings(all.Entry(i), dm);
    return true;
  }
  LOG(WARNING) << "IntelMMImpl::GetDisplaySettings() no matched display found";
  return false;
}

bool IntelMMImpl::ReadEdidBlock(uint32_t uid, CuiEdidBlock* block) {
  *block = {};
  block->uid = uid;
  block->length = kCuiEdidLength;
  DWORD err = IGFX_SUCCESS;
  // Deliberate: `err` is not looked at.
  return SUCCEEDED(
      m_pCUIExt->GetDeviceData(kCuiEdidGuid, sizeof(*block), reinterpret_cast<BYTE*>(block), &err));
}

bool IntelMMImpl::GetEDID(uint32_t display, EdidBlob* edid) {
  if (m_pCUIExt == nullptr || edid == nullptr) return false;
  RefreshDeviceList();
  CuiEdidBlock block;
  if (!ReadEdidBlock(UidOfType(TypeFromBit(display)), &block)) return false;
  auto bytes = std::make_unique<uint8_t[]>(EDID::kBlockSize);
  std::copy_n(block.edid, EDID::kBlockSize, bytes.get());
  edid->cb = EDID::kBlockSize;
  edid->pv = bytes.release();
  return true;
}

void IntelMMImpl::FreeEDID(EdidBlob* edid) {
  if (edid != nullptr) delete[] static_cast<uint8_t*>(edid->pv);
}

// Deliberate: both arguments are ignored, and a monitor with a name gives true without an EDID, so
// that GetMonitorName finds none and fails.
bool IntelMMImpl::GetMonitorEDID(uint32_t /*display*/, EdidBlob* /*edid*/) {
  if (m_pCUIExt == nullptr) return false;
  RefreshDeviceList();
  CuiEdidBlock block;
  if (!ReadEdidBlock(kNamedUid, &block)) return false;
  std::string name;
  try {
    EDID edid;
    if (edid.Load(block.edid, EDID::kBlockSize) != 0) edid.FindName(&name);
  } catch (const invalid_edid_header&) {
    name = kUnknownMonitorName;
  } catch (const invalid_edid_checksum&) {
    name = kUnknownMonitorName;
  }
  return !name.empty();
}
