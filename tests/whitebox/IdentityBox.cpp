#include "tests/whitebox/IdentityBox.h"

#include "Common/MultiMonitor/Edid.h"
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"

#include <exception>

namespace {

class ScriptedMultiMonitor : public MultiMonitor {
 public:
  explicit ScriptedMultiMonitor(BlobScript* script) : script_(script) {}
  BOOL Initial() override { return TRUE; }
  BOOL GetConnectedDisplays(uint32_t*, uint32_t*) override { return FALSE; }
  BOOL GetActiveDisplays(uint32_t*, uint32_t*) override { return FALSE; }
  BOOL GetCurrentDisplayMode(uint32_t*, uint32_t*) override { return FALSE; }
  BOOL SetNewDisplayMode(uint32_t, uint32_t) override { return FALSE; }

  bool GetMonitorEDID(uint32_t display, EdidBlob* edid) override {
    script_->calls += "GetMonitorEDID(" + std::to_string(display) + ")\n";
    if (!script_->readable) return false;
    edid->cb = script_->cb;
    edid->pv = const_cast<void*>(script_->pv);
    return true;
  }
  void FreeMonitorEDID(EdidBlob* edid) override {
    const bool same = edid->cb == script_->cb && edid->pv == script_->pv;
    script_->calls += same ? "FreeMonitorEDID\n" : "FreeMonitorEDID of another\n";
  }

 private:
  BlobScript* const script_;
};

std::string LoadEdid(const void* data, uint32_t size) {
  try {
    EDID edid;
    return std::to_string(edid.Load(data, size));
  } catch (const std::exception& error) {
    return error.what();
  }
}

MultiMonitor* NewScriptedMultiMonitor(BlobScript* script) {
  return new ScriptedMultiMonitor(script);
}

IPhysicalMonitor* NewPhysicalMonitor(std::string* error) {
  try {
    return new PhysicalMonitorByDisplayLibrary();
  } catch (const std::exception& exception) {
    *error = exception.what();
    return nullptr;
  }
}

IPhysicalMonitor* NewPhysicalMonitorOf(IMMonitor* monitor) {
  return new PhysicalMonitorByDisplayLibrary(monitor);
}

constexpr IdentityBox kBox = {
    LoadEdid,
    ListRegistryEDIDs,
    ListMonitorNamesFromRegistry,
    CountMonitorsNamed,
    NewScriptedMultiMonitor,
    NewPhysicalMonitor,
    NewPhysicalMonitorOf,
};

}  // namespace

const IdentityBox* GetIdentityBox() { return &kBox; }
