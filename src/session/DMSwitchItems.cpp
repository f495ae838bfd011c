// DMSwitch: the list of modes that the pop-up offers.
#include "session/DMSwitch.h"

#include <iterator>
#include <utility>

#include "Common/Config.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/ProcessState.h"
#include "session/catalogue/ItemRules.h"
#include "session/catalogue/ItemTables.h"
#include "session/catalogue/MachineFacts.h"
#include "session/catalogue/SwitchPreconditions.h"
#include "session/popup/GdiObjects.h"

namespace {

constexpr uint32_t kTripleCount = 3;
constexpr uint32_t kTooManyForPresentation = 4;

uint32_t ActiveVgaVendor() {
  IMMonitor* const object = GetMultiMonitorObject();
  return object == nullptr ? kVendorUnknown : object->GetVgaVendor();
}

/// The row of the picture that is loaded for an item with `icon`.
// Deliberate: the item's `icon` stays what it was.
uint32_t PictureRow(uint32_t icon) {
  const uint32_t television = catalogue::TelevisionPictureRow(icon);
  if (television == icon || HDMIIconUseTVIcon() == 0) return icon;
  return ActiveVgaVendor() == kVendorIntel ? television : icon;
}

/// Panel and HDMI or DVI cannot be cloned where the discrete adapter has those outputs but not the
/// panel.
bool IsCloneImpossible(uint32_t mode, uint32_t mask) {
  return catalogue::IsDigitalClone(mode, mask) && IsNvidiaDiscreteOnly() &&
         !CanCloneOnDiscreteOutputs();
}

}  // namespace

// Deliberate: displays without a candidate give an empty list, and that is a success.
BOOL DMSwitch::PrepareDMItems(uint32_t connected, uint32_t count) {
  m_items.clear();
  if (count == 0) return 0;
  std::string signature;
  GetMonitorSignature(&signature);
  const bool display_link = IsDisplayLinkWorkaroundActive();
  if (count >= kTripleCount && ActiveVgaVendor() == kVendorHybrid && !display_link) {
    return AddCandidates(connected, signature, catalogue::kHybridCandidates,
                         std::size(catalogue::kHybridCandidates), 0);
  }
  if (TripleDisplaySupported() && count >= kTripleCount && !display_link) {
    // Deliberate: the Starter edition has no extended desktop, of three displays neither.
    const uint32_t left_out = IsStarterEdition() ? IMMonitor::DM_TRIPLE_EXTEND : 0U;
    return AddCandidates(connected, signature, catalogue::kTripleCandidates,
                         std::size(catalogue::kTripleCandidates), left_out);
  }
  const uint32_t left_out = display_link ? IMMonitor::DM_EXTEND : 0U;
  if (AddCandidates(connected, signature, catalogue::kOrdinaryCandidates,
                    std::size(catalogue::kOrdinaryCandidates), left_out) == 0) {
    return 0;
  }
  // Deliberate: four displays or more get no presentation items.
  if (count < kTooManyForPresentation && g_lassoBoxStatus == 0) {
    // Deliberate: a failure has cleared the list, and the list goes on from there.
    AddPresentationItems(connected);
  }
  if (IsStarterEdition()) return 1;
  // Deliberate: the key that refuses presses in extended desktop takes its items away, too.
  if (count > 1 && DisableInExtendMode() == 0 && !AddExtendItems(connected, count)) {
    m_items.clear();
    return 0;
  }
  return 1;
}

BOOL DMSwitch::AddCandidates(uint32_t connected, const std::string& signature,
                             const catalogue::Candidate* candidates, size_t count,
                             uint32_t left_out) {
  for (const catalogue::Candidate* row = candidates; row != candidates + count; ++row) {
    if (left_out != 0 && row->mode == left_out) continue;
    if (!AddModeItem(connected, row->mask, row->mode, row->icon)) {
      m_items.clear();
      return 0;
    }
    // Deliberate: the key is registered also for a row that has added no item.
    RegisterSettingsKey(row->mode, row->mask, signature);
  }
  return 1;
}

bool DMSwitch::AddModeItem(uint32_t connected, uint32_t mask, uint32_t mode, uint32_t icon) {
  if (mode == IMMonitor::DM_EXTEND) return true;
  const auto index = static_cast<uint32_t>(m_items.size());
  // Deliberate: an advanced item is offered whatever is connected.
  if (catalogue::IsAdvancedMode(mode)) {
    const wchar_t* const file = catalogue::AdvancedPictureFile(mode, connected);
    if (file == nullptr) return AddPlainItem(icon, index, mode, mask);
    return AddItem(MakeItem(icon, index, mode, mask), file);
  }
  if (!catalogue::IsConnected(mask, connected)) return true;
  if (IsCloneImpossible(mode, mask)) return true;
  return AddPlainItem(icon, index, mode, mask);
}

bool DMSwitch::AddExtendItems(uint32_t connected, uint32_t count) {
  if (count < kTripleCount || IsDisplayLinkWorkaroundActive()) {
    // Deliberate: with DisplayLink one item stands for all displays, however many.
    return AddPlainItem(catalogue::kExtendIcon, static_cast<uint32_t>(m_items.size()),
                        IMMonitor::DM_EXTEND, connected);
  }
  for (const catalogue::ExtendCandidate& row : catalogue::kExtendCandidates) {
    if (!catalogue::IsConnected(row.mask, connected)) continue;
    if (!AddPlainItem(row.icon, static_cast<uint32_t>(m_items.size()), IMMonitor::DM_EXTEND,
                      row.mask)) {
      return false;
    }
  }
  return true;
}

DMItem DMSwitch::MakeItem(uint32_t icon, uint32_t index, uint32_t mode, uint32_t displays) {
  DMItem item;
  item.icon = icon;
  item.index = index;
  item.mode = mode;
  item.displays = displays;
  return item;
}

bool DMSwitch::AddPlainItem(uint32_t icon, uint32_t index, uint32_t mode, uint32_t displays) {
  return AddItem(MakeItem(icon, index, mode, displays), catalogue::kIconFiles[PictureRow(icon)]);
}

bool DMSwitch::AddPresentationItem(uint32_t icon, uint32_t index, uint32_t mask, uint32_t type) {
  DMItem item = MakeItem(icon, index, IMMonitor::DM_CLONE, mask);
  item.is_presentation = 1;
  item.presentation_type = type;
  return AddItem(std::move(item), catalogue::kIconFiles[PictureRow(icon)]);
}

bool DMSwitch::AddItem(DMItem item, const wchar_t* picture_file) {
  try {
    // Deliberate: a picture that cannot be read is no failure; the item is drawn empty.
    item.image.reset(new GdiImage(PicturePath(picture_file)));
    m_items.push_back(std::move(item));
    return true;
  } catch (...) {
    return false;  // no memory, or no picture object: the caller gives the list up
  }
}

std::wstring DMSwitch::PicturePath(const wchar_t* file) const { return picture_folder_ + file; }
