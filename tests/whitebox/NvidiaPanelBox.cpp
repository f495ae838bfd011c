#include "tests/whitebox/NvidiaPanelBox.h"

#include "Common/MultiMonitor/VendorBackends.h"

namespace {

IDisplayExtension* ExtensionOf(IMMonitor* nvidia) {
  return dynamic_cast<IDisplayExtension*>(nvidia);
}

constexpr NvidiaPanelBox kBox = {NewNvidiaMMImpl, ExtensionOf};

}  // namespace

const NvidiaPanelBox* GetNvidiaPanelBox() { return &kBox; }
