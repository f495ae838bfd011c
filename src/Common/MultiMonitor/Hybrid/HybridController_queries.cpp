// What is connected, what is active, and how: the answers of both adapters and of Windows merged.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Hybrid/HybridController.h"
#include "Common/MultiMonitor/Hybrid/HybridRules.h"

namespace {

constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;

// An object's answer. Some objects add to what they find in the outputs, so that these are cleared
// before each question.
struct DisplayList {
  BOOL ok = FALSE;
  uint32_t displays = 0;
  uint32_t count = 0;
};
struct ModeAnswer {
  BOOL ok = FALSE;
  uint32_t mode = 0;
  uint32_t displays = 0;
};

DisplayList ConnectedTo(IMMonitor* monitor) {
  DisplayList list;
  list.ok = monitor->GetConnectedDisplays(&list.displays, &list.count);
  return list;
}

DisplayList ActiveOn(IMMonitor* monitor) {
  DisplayList list;
  list.ok = monitor->GetActiveDisplays(&list.displays, &list.count);
  return list;
}

ModeAnswer ModeOf(IMMonitor* monitor) {
  ModeAnswer answer;
  answer.ok = monitor->GetCurrentDisplayMode(&answer.mode, &answer.displays);
  return answer;
}

}  // namespace

// Deliberate: 1 whatever failed.
BOOL HybridController::GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) {
  DCHECK(displays != NULL);
  DCHECK(display_count != NULL);
  if (displays == nullptr || display_count == nullptr) return FALSE;
  *displays = 0;
  *display_count = 0;

  const DisplayList on_intel = ConnectedTo(&Intel());
  if (on_intel.ok != 0) *displays = on_intel.displays;

  const DisplayList by_ccd = ConnectedTo(&Ccd());
  if (by_ccd.ok != 0) {
    // Deliberate: Windows' word on HDMI never counts, and in a clone its word on the rest replaces
    // Intel's.
    const uint32_t seen = by_ccd.displays & ~kHdmi;
    const bool replaces = ModeOf(&Ccd()).mode == DM_CLONE;
    *displays = replaces ? seen : *displays | seen;
  }

  DisplayList on_nvidia = ConnectedTo(&Nvidia());
  if (on_nvidia.ok != 0) {
    // Deliberate: the analogue output is Intel's, whatever NVIDIA's driver says.
    if (Nvidia().GetVgaVendor() == kVendorNvidia) on_nvidia.displays &= ~kCrt;
    *displays |= on_nvidia.displays;
  }
  *display_count = CountBits(*displays);
  return TRUE;
}

BOOL HybridController::GetActiveDisplays(uint32_t* displays, uint32_t* display_count) {
  if (displays == nullptr || display_count == nullptr) return FALSE;
  const DisplayList on_intel = ActiveOn(&Intel());
  if (on_intel.ok == 0) return FALSE;
  const DisplayList on_nvidia = ActiveOn(&Nvidia());
  if (on_nvidia.ok == 0) return FALSE;
  *displays = on_intel.displays | on_nvidia.displays;
  *display_count = on_intel.count + on_nvidia.count;
  return TRUE;
}

BOOL HybridController::GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  DCHECK(mode != NULL);
  DCHECK(displays != NULL);
  if (mode == nullptr || displays == nullptr) return FALSE;
  const ModeAnswer intel = ModeOf(&Intel());
  const DisplayList on_intel = ConnectedTo(&Intel());
  const ModeAnswer ccd = ModeOf(&Ccd());
  const ModeAnswer nvidia = ModeOf(&Nvidia());
  const DisplayList on_nvidia = ConnectedTo(&Nvidia());
  const DisplayList active_on_nvidia = ActiveOn(&Nvidia());

  HybridAnswers answers;
  answers.i_ok = intel.ok != 0;
  answers.i_mode = intel.mode;
  answers.i_disp = intel.displays;
  answers.i_conn_count = on_intel.count;
  answers.c_mode = ccd.mode;
  answers.c_disp = ccd.displays;
  answers.n_ok = nvidia.ok != 0;
  answers.n_mode = nvidia.mode;
  answers.n_disp = nvidia.displays;
  answers.n_conn_count = on_nvidia.count;
  answers.n_active = active_on_nvidia.displays;
  const HybridMode decided = DecideHybridMode(answers);
  if (!decided.known) return FALSE;
  *mode = decided.mode;
  *displays = decided.displays;
  return TRUE;
}
