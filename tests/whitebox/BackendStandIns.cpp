#include "tests/whitebox/BackendStandIns.h"

#include "Common/MultiMonitor/VendorBackends.h"

#include <boost/make_shared.hpp>

namespace {

const BackendStandIns* g_standIns = nullptr;

class WatchedWin7CCD : public Win7CCD {
 public:
  explicit WatchedWin7CCD(const CcdWatch* watch)
      : Win7CCD(boost::make_shared<Win7CCDApi>()), watch_(watch) {}
  ~WatchedWin7CCD() override { watch_->ended(this); }
  BOOL Initial() override { return watch_->initial(this) != 0 ? Win7CCD::Initial() : 0; }

 private:
  const CcdWatch* watch_;
};

}  // namespace

void UseBackendStandIns(const BackendStandIns* stand_ins) { g_standIns = stand_ins; }

Win7CCD* NewWatchedWin7CCD(const CcdWatch* watch) { return new WatchedWin7CCD(watch); }

// The linker sends this library's calls of a function under "__wrap_" and its symbol, and keeps the
// function itself under "__real_"; src/CMakeLists.txt lists the same symbols.
#define STAND_IN(Result, Name, symbol, parameters, arguments)               \
  Result Real##Name parameters __asm__("__real_" symbol);                   \
  Result StandInFor##Name parameters __asm__("__wrap_" symbol);             \
  Result StandInFor##Name parameters {                                      \
    const bool real = g_standIns == nullptr || g_standIns->Name == nullptr; \
    return real ? Real##Name arguments : g_standIns->Name arguments;        \
  }

STAND_IN(IMMonitor*, NewIntelMMImpl, "_Z14NewIntelMMImplv", (), ())
STAND_IN(IMMonitor*, NewADLImpl, "_Z10NewADLImplv", (), ())
STAND_IN(IMMonitor*, NewAtiMMImpl, "_Z12NewAtiMMImplv", (), ())
STAND_IN(IMMonitor*, NewSisMMImpl, "_Z12NewSisMMImplv", (), ())
STAND_IN(IMMonitor*, NewViaMMImpl, "_Z12NewViaMMImplv", (), ())
STAND_IN(IMMonitor*, NewNvidiaMMImpl, "_Z15NewNvidiaMMImplv", (), ())
STAND_IN(IMMonitor*, NewNvidiaMMImplV2, "_Z17NewNvidiaMMImplV2v", (), ())
STAND_IN(IMMonitor*, NewNvidiaMMImplV3, "_Z17NewNvidiaMMImplV3v", (), ())
STAND_IN(IMMonitor*, NewNvidiaMMImplV3CrossAdapter, "_Z29NewNvidiaMMImplV3CrossAdapterv", (), ())
STAND_IN(Win7CCD*, NewWin7CCD, "_Z10NewWin7CCDv", (), ())
STAND_IN(Win7CCD*, NewDisplayLinkWorkaroundImpl, "_Z28NewDisplayLinkWorkaroundImplv", (), ())
STAND_IN(IMMonitor*, AsNvidiaMMImplV3, "_Z16AsNvidiaMMImplV3P9IMMonitor", (IMMonitor * monitor),
         (monitor))
STAND_IN(bool, CanControlHDMIMonitor, "_Z21CanControlHDMIMonitorP9IMMonitor", (IMMonitor * intel),
         (intel))
STAND_IN(bool, CouldManageMultipleDisplay, "_Z26CouldManageMultipleDisplayP9IMMonitor",
         (IMMonitor * nv), (nv))
STAND_IN(bool, QueryNvidiaAdapterMode, "_Z22QueryNvidiaAdapterModeP9IMMonitorPj",
         (IMMonitor * nv, uint32_t* value), (nv, value))
STAND_IN(bool, AdlLibraryQualifies, "_Z19AdlLibraryQualifiesv", (), ())
STAND_IN(bool, IsDisplayLinkServicePresent, "_Z27IsDisplayLinkServicePresentv", (), ())
