#include "Workaround/RefreshRateWorkaround.h"

#include "Common/Logging.h"
#include "Common/win_util.h"
#include "Workaround/IntelDisplayPresence.h"
#include "Workaround/IntelRRWorkaround.h"
#include "Workaround/NullIntelRRWorkaround.h"

RefreshRateWorkaround* CreateRefreshRateWorkaround(IMMonitor* m) {
  DCHECK(m != NULL);
  // Deliberate: Windows 7 itself and nothing later, and not its server.
  if (win_util::GetWinVersion() == win_util::WINVERSION_WIN7 && IsIntelDisplayPresent()) {
    return new IntelRRWorkaround(m);
  }
  return new NullIntelRRWorkaround;
}
