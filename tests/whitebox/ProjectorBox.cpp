#include "tests/whitebox/ProjectorBox.h"

#include <exception>

#include "session/DMSwitch.h"
#include "session/catalogue/ProjectorLists.h"
#include "session/catalogue/Projectors.h"
#include "session/catalogue/PruningMode.h"
#include "session/catalogue/SwitchPreconditions.h"
#include "tests/whitebox/ScarceMemory.h"

/// Reaches the session's inner operations for the box.
struct ProjectorAccess {
  static BOOL AddPresentationItems(uint32_t connected) {
    return DMSwitch::s_self->AddPresentationItems(connected);
  }
  static BOOL AddPresentationItemIfAllowed(uint32_t connected, uint32_t mask, uint32_t icon,
                                           uint32_t type) {
    return DMSwitch::s_self->AddPresentationItemIfAllowed(connected, mask, icon, type);
  }
  static BOOL ApplyProblemProjectorMode(IMMonitor* imm, uint32_t mode, uint32_t displays,
                                        uint32_t presentation_type) {
    DMItem item;
    item.mode = mode;
    item.displays = displays;
    item.presentation_type = presentation_type;
    return DMSwitch::ApplyProblemProjectorMode(imm, item);
  }
};

namespace {

std::vector<std::string> ProblemProjectors() { return GetProblemProjectors(); }

std::string StupidProjectorOnCrt(const std::vector<std::string>& names, IDisplayExtension* ext) {
  try {
    return IsStupidProjectorOnCrt(names, ext) ? "1" : "0";
  } catch (const std::exception& error) {
    return error.what();
  }
}

bool PanelReaches() { return PanelReaches1024x768(); }
bool PanelReachesOf(IPhysicalMonitor* (*create)()) { return PanelReaches1024x768(create); }

constexpr ProjectorBox kBox = {
    ProblemProjectors,
    GetStupidProjectors,
    IsProblemProjectorConnected,
    StupidProjectorOnCrt,
    PanelReaches,
    PanelReachesOf,
    ApplyPresentationResolution,
    ProjectorAccess::AddPresentationItems,
    ProjectorAccess::AddPresentationItemIfAllowed,
    ProjectorAccess::ApplyProblemProjectorMode,
    RefuseMemory,
    IsWindowsMediaPlayerPlaying,
    IsPowerDVDPlaying,
    ApplyTV4810Workaround,
    ClearPruningMode,
};

}  // namespace

const ProjectorBox* GetProjectorBox() { return &kBox; }
