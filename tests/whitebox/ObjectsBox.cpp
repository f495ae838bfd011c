#include "tests/whitebox/ObjectsBox.h"

#include "Common/MultiMonitor/IMMonitor.h"

namespace {

bool g_refused = false;

void RefuseIntelObjects() { g_refused = true; }

constexpr ObjectsBox kBox = {RefuseIntelObjects};

}  // namespace

// The white-box build is linked so that every call of NewIntelMMImpl comes by here.
extern "C" {
IMMonitor* __real__Z14NewIntelMMImplv();
IMMonitor* __wrap__Z14NewIntelMMImplv();
IMMonitor* __wrap__Z14NewIntelMMImplv() {
  return g_refused ? nullptr : __real__Z14NewIntelMMImplv();
}
}

const ObjectsBox* GetObjectsBox() { return &kBox; }
