#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/MonitorTestV3Workaround.h"
#include "Workaround/NoMonitorTestV3Workaround.h"

boost::shared_ptr<IMonitorTestWorkaround> CreateMonitorTestWorkaround() {
  boost::shared_ptr<IMonitorTestWorkaround> workaround(new MonitorTestV3Workaround);
  if (workaround->IsToolInstalled()) return workaround;
  // The first one goes before the second is made.
  workaround.reset();
  workaround.reset(new NoMonitorTestV3Workaround);
  return workaround;
}
