// Presentation items, projectors and the guards before a switch, from inside.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/Win.h"

class IDisplayExtension;
class IMMonitor;
class IPhysicalMonitor;

struct ProjectorBox {
  // --- The lists.
  std::vector<std::string> (*GetProblemProjectors)();
  std::vector<std::string> (*GetStupidProjectors)();
  bool (*IsProblemProjectorConnected)();
  /// "1", "0", or the text of what was thrown.
  std::string (*IsStupidProjectorOnCrt)(const std::vector<std::string>& names,
                                        IDisplayExtension* ext);

  // --- Presentations.
  bool (*PanelReaches1024x768)();
  bool (*PanelReaches1024x768Of)(IPhysicalMonitor* (*create)());
  BOOL (*ApplyPresentationResolution)(uint32_t type);
  BOOL (*AddPresentationItems)(uint32_t connected);  // to the session's list
  BOOL(*AddPresentationItemIfAllowed)
  (uint32_t connected, uint32_t mask, uint32_t icon, uint32_t type);
  BOOL(*ApplyProblemProjectorMode)
  (IMMonitor* imm, uint32_t mode, uint32_t displays, uint32_t presentation_type);

  /// As in ScarceMemory.h, for all of the library.
  bool (*RefuseMemory)(uint32_t nth);

  // --- Guards.
  bool (*IsWindowsMediaPlayerPlaying)();
  bool (*IsPowerDVDPlaying)();
  void (*ApplyTV4810Workaround)();
  BOOL (*ClearPruningMode)();
};

const ProjectorBox* GetProjectorBox();
