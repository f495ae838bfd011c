#include "session/catalogue/Projectors.h"

#include "session/DMSwitch.h"

BOOL ApplyPresentationResolution(uint32_t type) {
  // No presentation resolutions yet: nothing is changed, and the caller goes on with the mode's own
  // settings.
  static_cast<void>(type);
  return 0;
}

BOOL DMSwitch::AddPresentationItems(uint32_t connected) {
  // No presentation items yet; adding none is success.
  static_cast<void>(connected);
  return 1;
}

BOOL DMSwitch::ApplyProblemProjectorMode(IMMonitor* object, const DMItem& item) {
  // No projector is known yet that wants mode and resolution in one driver call: the plain switch
  // follows.
  static_cast<void>(object);
  static_cast<void>(item);
  return 0;
}
