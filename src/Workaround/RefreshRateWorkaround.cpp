#include "Workaround/RefreshRateWorkaround.h"

#include "Common/Logging.h"
#include "Workaround/NullIntelRRWorkaround.h"

RefreshRateWorkaround* CreateRefreshRateWorkaround(IMMonitor* m) {
  DCHECK(m != NULL);
  static_cast<void>(m);
  // No machine is recognised yet whose refresh rate would need it.
  return new NullIntelRRWorkaround;
}
