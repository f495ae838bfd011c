#include "tests/whitebox/CoreBox.h"

#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/NullDisplayExtension.h"
#include "Common/MultiMonitor/NullMonitorController.h"
#include "Common/MultiMonitor/win7_ccd_helper.h"

#include <boost/make_shared.hpp>
#include <exception>
#include <memory>

namespace {

class BareMultiMonitor : public MultiMonitor {
 public:
  BOOL Initial() override { return TRUE; }
  BOOL GetConnectedDisplays(uint32_t*, uint32_t*) override { return FALSE; }
  BOOL GetActiveDisplays(uint32_t*, uint32_t*) override { return FALSE; }
  BOOL GetCurrentDisplayMode(uint32_t*, uint32_t*) override { return FALSE; }
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override {
    calls += "SetNewDisplayMode(" + std::to_string(mode) + ", " + std::to_string(displays) + ")\n";
    return 7;
  }
  bool GetMonitorEDID(uint32_t display, EdidBlob* edid) override {
    calls += "GetMonitorEDID(" + std::to_string(display) + ")\n";
    return readable || MultiMonitor::GetMonitorEDID(display, edid);
  }
  void FreeMonitorEDID(EdidBlob* edid) override {
    calls += "FreeMonitorEDID\n";
    MultiMonitor::FreeMonitorEDID(edid);
  }

  bool readable = false;
  std::string calls;
};

BareMultiMonitor* Bare(MultiMonitor* bare) { return static_cast<BareMultiMonitor*>(bare); }

std::string NameOfDisplaySettingsHelper(IMMonitor* p) {
  try {
    const std::unique_ptr<IDisplaySettingsHelper> helper(CreateDisplaySettingsHelper(p));
    if (helper == nullptr) return "null";
    if (dynamic_cast<Win7CCDDisplaySettings*>(helper.get()) != nullptr) {
      return "Win7CCDDisplaySettings";
    }
    return dynamic_cast<Win32ChangeDisplaySettings*>(helper.get()) != nullptr
               ? "Win32ChangeDisplaySettings"
               : "another";
  } catch (const std::exception& error) {
    return error.what();
  }
}

IMMonitor* NewNullMonitorController() { return new NullMonitorController; }
IDisplayExtension* NewNullDisplayExtension() { return new NullDisplayExtension; }
MultiMonitor* NewBareMultiMonitor() { return new BareMultiMonitor; }

std::string TakeBareCalls(MultiMonitor* bare) {
  std::string taken;
  taken.swap(Bare(bare)->calls);
  return taken;
}

void SetBareEdid(MultiMonitor* bare, bool readable) { Bare(bare)->readable = readable; }

Win7CCD* NewWin7CCDWithoutApi() { return new Win7CCD(boost::shared_ptr<Win7CCDApi>()); }

std::string InitialOf(IMMonitor* monitor) {
  try {
    return std::to_string(monitor->Initial());
  } catch (const std::exception& error) {
    return error.what();
  }
}

BOOL QueryPaths(Win7CCD* ccd, UINT32 flags, std::vector<DISPLAYCONFIG_PATH_INFO>* paths,
                DISPLAYCONFIG_TOPOLOGY_ID* topology) {
  return ccd->QueryPaths(flags, paths, topology);
}

uint32_t TechnologyFromDisplay(Win7CCD* ccd, uint32_t display) {
  return ccd->TechnologyFromDisplay(display);
}

BOOL SelectPath(Win7CCD* ccd, uint32_t display, const std::vector<DISPLAYCONFIG_PATH_INFO>& paths,
                DISPLAYCONFIG_PATH_INFO* path_out) {
  return ccd->SelectPath(display, paths, path_out);
}

uint32_t GetActiveTargetId(Win7CCD* ccd, uint32_t display) {
  return ccd->GetActiveTargetId(display);
}

BOOL HasMultipleDisplayAdapter(Win7CCD* ccd) { return ccd->HasMultipleDisplayAdapter(); }

bool ReadBuffers(const char* file_name, UINT32 flags, std::vector<DISPLAYCONFIG_PATH_INFO>* paths,
                 std::vector<DISPLAYCONFIG_MODE_INFO>* modes) {
  Win7CCDApi api;
  if (file_name != nullptr) api.Load(file_name);
  UINT32 path_count = 0;
  UINT32 mode_count = 0;
  std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]> path_records;
  std::unique_ptr<DISPLAYCONFIG_MODE_INFO[]> mode_records;
  if (!GetDisplayConfigBuffers(&api, flags, &path_count, &path_records, &mode_count,
                               &mode_records)) {
    return false;
  }
  paths->assign(path_records.get(), path_records.get() + path_count);
  modes->assign(mode_records.get(), mode_records.get() + mode_count);
  return true;
}

bool ReadBuffersOfNothing() {
  return GetDisplayConfigBuffers(nullptr, QDC_ALL_PATHS, nullptr, nullptr, nullptr, nullptr);
}

bool ReadSourceName(const char* file_name, LUID adapter_id, UINT32 source_id,
                    DISPLAYCONFIG_SOURCE_DEVICE_NAME* source_name) {
  Win7CCDApi api;
  if (file_name != nullptr) api.Load(file_name);
  return GetSourceDeviceName(&api, adapter_id, source_id, source_name);
}

bool ReadSourceNameOfNothing() { return GetSourceDeviceName(nullptr, LUID(), 0, nullptr); }

BOOL LoadWin7CCDApi(const char* file_name) { return Win7CCDApi().Load(file_name); }

const CoreBox kBox = {
    GetAttachedDevices,
    GetDisplayDeviceNames,
    GetIntelAttachedDevices,
    GetDeviceNamesByVendor,
    GetDisplayDeviceCount,
    ChangeDisplaySettingsTestAndApply,
    ReadDisplaySettings,
    ChangeDisplayResolution,
    NameOfDisplaySettingsHelper,
    NewNullMonitorController,
    NewNullDisplayExtension,
    NewBareMultiMonitor,
    TakeBareCalls,
    SetBareEdid,
    CreateWin7CCDObject,
    NewWin7CCDWithoutApi,
    InitialOf,
    QueryPaths,
    TechnologyFromDisplay,
    SelectPath,
    GetActiveTargetId,
    HasMultipleDisplayAdapter,
    OutputTechnologyFromDisplay,
    ReadBuffers,
    ReadBuffersOfNothing,
    ReadSourceName,
    ReadSourceNameOfNothing,
    DisplayModeValidator::ValidateNewest,
    LoadWin7CCDApi,
};

}  // namespace

const CoreBox* GetCoreBox() { return &kBox; }
