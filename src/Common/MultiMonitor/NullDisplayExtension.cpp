#include "Common/MultiMonitor/NullDisplayExtension.h"

// Deliberate: unlike its relatives this one raises no check when it is called.
HRESULT NullDisplayExtension::QueryInterface(REFIID /*iid*/, void** /*object*/) { return E_FAIL; }

ULONG NullDisplayExtension::AddRef() {
  return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG NullDisplayExtension::Release() {
  const LONG left = InterlockedDecrement(&references_);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}
