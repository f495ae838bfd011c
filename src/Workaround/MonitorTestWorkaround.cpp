#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/NoMonitorTestV3Workaround.h"

boost::shared_ptr<IMonitorTestWorkaround> CreateMonitorTestWorkaround() {
  // The tool is not looked for yet.
  return boost::shared_ptr<IMonitorTestWorkaround>(new NoMonitorTestV3Workaround);
}
