#include "tests/whitebox/IntelBox.h"

#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/VendorBackends.h"

#include <exception>

namespace {

IDisplayExtension* ExtensionOf(IMMonitor* intel) { return dynamic_cast<IDisplayExtension*>(intel); }

IMMonitorEx* ExOf(IMMonitor* intel) { return dynamic_cast<IMMonitorEx*>(intel); }

bool GetMonitorEDID(IMMonitor* intel, uint32_t display, EdidBlob* edid) {
  return dynamic_cast<MultiMonitor*>(intel)->GetMonitorEDID(display, edid);
}

BOOL GetMonitorName(IMMonitor* intel, uint32_t display, std::string* name) {
  return dynamic_cast<MultiMonitor*>(intel)->GetMonitorName(display, name);
}

std::string SetNewDisplayMode(IMMonitor* intel, uint32_t mode, uint32_t displays) {
  try {
    return std::to_string(intel->SetNewDisplayMode(mode, displays));
  } catch (const std::exception& error) {
    return error.what();
  }
}

constexpr IntelBox kBox = {
    NewIntelMMImpl,           ExtensionOf,       ExOf,
    CanControlHDMIMonitor,    GetMonitorEDID,    GetMonitorName,
    IntelMMImpl::TypeFromBit, SetNewDisplayMode,
};

}  // namespace

const IntelBox* GetIntelBox() { return &kBox; }
