#include "tests/whitebox/NvidiaPathsBox.h"

#include <cstring>
#include <exception>
#include <memory>
#include <utility>

#include "Common/MultiMonitor/Nvidia/NvidiaDisplayPaths.h"
#include "Common/MultiMonitor/Nvidia/NvidiaPathRecords.h"
#include "Common/MultiMonitor/VendorBackends.h"
#include "tests/whitebox/ScarceMemory.h"

namespace {

// Gives a name to what derived classes reach.
struct OpenV3 : NvidiaMMImplV3 {
  using NvidiaMMImplV3::DisplayIdOfDisplay;
};

class IncapableCrossAdapter final : public NvidiaMMImplV3CrossAdapter {
 public:
  using NvidiaMMImplV3CrossAdapter::NvidiaMMImplV3CrossAdapter;
  bool IsCrossAdapterCapable() override { return false; }
};

class TellingCrossAdapter final : public NvidiaMMImplV3CrossAdapter {
 public:
  TellingCrossAdapter(std::unique_ptr<Win7CCDApi> api, std::vector<BOOL>* enables)
      : NvidiaMMImplV3CrossAdapter(std::move(api)), enables_(enables) {}
  BOOL EnableExtendMode(BOOL enable) override {
    enables_->push_back(enable);
    return NvidiaMMImplV3CrossAdapter::EnableExtendMode(enable);
  }

 private:
  std::vector<BOOL>* const enables_;
};

NvidiaMMImplV3* NewV3() { return new NvidiaMMImplV3(std::make_unique<Win7CCDApi>()); }
NvidiaMMImplV3* NewV3WithoutApi() { return new NvidiaMMImplV3(nullptr); }
NvidiaMMImplV3CrossAdapter* NewCrossAdapter() {
  return new NvidiaMMImplV3CrossAdapter(std::make_unique<Win7CCDApi>());
}
NvidiaMMImplV3CrossAdapter* NewIncapableCrossAdapter() {
  return new IncapableCrossAdapter(std::make_unique<Win7CCDApi>());
}

NvidiaMMImplV3CrossAdapter* NewTellingCrossAdapter(std::vector<BOOL>* enables) {
  return new TellingCrossAdapter(std::make_unique<Win7CCDApi>(), enables);
}

LONG WINAPI QueryNothing(UINT32, UINT32* path_count, DISPLAYCONFIG_PATH_INFO*, UINT32* mode_count,
                         DISPLAYCONFIG_MODE_INFO*, DISPLAYCONFIG_TOPOLOGY_ID*) {
  *path_count = 0;
  *mode_count = 0;
  return ERROR_SUCCESS;
}
std::unique_ptr<Win7CCDApi> ApiFrom(const char* file_name) {
  if (file_name == nullptr) return nullptr;
  auto api = std::make_unique<Win7CCDApi>();
  if (std::strcmp(file_name, kApiWithoutPaths) == 0) {
    api->Load("User32.dll");
    api->QueryDisplayConfig = QueryNothing;
    return api;
  }
  if (*file_name != '\0') api->Load(file_name);
  return api;
}
bool OnNvidia(const char* file_name, uint32_t imm_display) {
  return IsDisplayOnNvidia(ApiFrom(file_name).get(), imm_display);
}
uint32_t TargetId(const char* file_name, uint32_t imm_display) {
  return GetDisplayTargetId(ApiFrom(file_name).get(), imm_display);
}
bool NotebookAdapterId(const char* file_name, uint32_t imm_display, LUID* adapter_id) {
  return GetNotebookAdapterId(ApiFrom(file_name).get(), imm_display, adapter_id);
}

uint32_t DisplayIdOfDisplay(const NvidiaMMImplV3* nv, uint32_t imm_display) {
  return (nv->*(&OpenV3::DisplayIdOfDisplay))(imm_display);
}
bool NativeSizeAcrossAdapters(NvidiaMMImplV3CrossAdapter* nv, uint32_t imm_display, uint32_t* width,
                              uint32_t* height) {
  return nv->NativeSizeAcrossAdapters(imm_display, width, height);
}

template <typename Operation>
std::string ResultOf(Operation operation) {
  try {
    return std::to_string(operation());
  } catch (const std::exception& error) {
    return error.what();
  }
}
std::string MakeAndEnd(bool cross_adapter) {
  return ResultOf([cross_adapter] {
    delete (cross_adapter ? NewNvidiaMMImplV3CrossAdapter() : NewNvidiaMMImplV3());
    return 1;
  });
}
std::string ApplyCrossAdapterClone(NvidiaMMImplV3CrossAdapter* nv, uint32_t displays) {
  return ResultOf([&] { return nv->ApplyCrossAdapterClone(displays); });
}
std::string GetCurrentDisplayMode(NvidiaMMImplV3* nv, uint32_t* imm_mode, uint32_t* imm_displays) {
  return ResultOf([&] { return nv->GetCurrentDisplayMode(imm_mode, imm_displays); });
}
std::string ApplyExtendModeOnDisplay(NvidiaMMImplV3* nv, uint32_t external_display) {
  return ResultOf([&] { return nv->ApplyExtendModeOnDisplay(external_display); });
}

// An entry of the binding is nothing but its function's address.
void ReplaceGetTopology(NvAPI_Status (*function)(NvTopology* topology)) {
  auto* const entry = &NvApi::Get().GetTopology;
  static_assert(sizeof(*entry) == sizeof(function), "no more than the address");
  std::memcpy(static_cast<void*>(entry), &function, sizeof(function));
}

constexpr NvidiaPathsBox kBox = {
    NewV3,
    NewV3WithoutApi,
    NewCrossAdapter,
    NewIncapableCrossAdapter,
    NewTellingCrossAdapter,
    OnNvidia,
    TargetId,
    NotebookAdapterId,
    ColorFormat,
    DisplayIdOfDisplay,
    FreeAdapterId,
    NativeSizeAcrossAdapters,
    MakeAndEnd,
    ApplyCrossAdapterClone,
    GetCurrentDisplayMode,
    ApplyExtendModeOnDisplay,
    ReplaceGetTopology,
    RefuseMemory,
    PiecesOut,
};

}  // namespace

const NvidiaPathsBox* GetNvidiaPathsBox() { return &kBox; }
