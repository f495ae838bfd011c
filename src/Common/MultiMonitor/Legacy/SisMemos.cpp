#include "Common/MultiMonitor/Legacy/SisMemos.h"

namespace {

constexpr SisSwitchRecord kAssumed = {0, 1280, 800, 16, 60};

void CopySize(const SisSwitchRecord& from, SisSwitchRecord* to) {
  const uint32_t device = to->device;
  *to = from;
  to->device = device;
}

}  // namespace

void FillSisMemo(SisDisplayMemo* memo, std::initializer_list<const SisDisplayMemo*> others) {
  if (memo->dirty) return;
  memo->dirty = true;
  for (const SisDisplayMemo* const other : others) {
    if (!other->dirty) continue;
    CopySize(other->record, &memo->record);
    return;
  }
  CopySize(kAssumed, &memo->record);
}
