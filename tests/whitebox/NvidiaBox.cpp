#include "tests/whitebox/NvidiaBox.h"

#include <cstring>

#include "Common/MultiMonitor/MMObjectFactoryState.h"

namespace {

// Gives names to what derived classes reach.
struct OpenV2 : NvidiaMMImplV2 {
  using NvidiaMMImplV2::CurrentGpu;
  using NvidiaMMImplV2::DisplayToConnector;
  using NvidiaMMImplV2::m_nvProxy;
  using NvidiaMMImplV2::NvMaskToDisplays;
  using NvidiaMMImplV2::NvOutputOfDisplay;
  using NvidiaMMImplV2::RecognizeConnectors;
};

class V2WithOwnProxy final : public NvidiaMMImplV2 {
 public:
  explicit V2WithOwnProxy(NvProxyScript* script) : script_(script) {}
  NVApiWrapper* CreateNvProxy() override {
    if (!script_->create) return nullptr;
    ++script_->created;
    return NvidiaMMImplV2::CreateNvProxy();
  }
  void DestroyNvProxy(NVApiWrapper* proxy) override {
    ++script_->destroyed;
    NvidiaMMImplV2::DestroyNvProxy(proxy);
  }

 private:
  NvProxyScript* const script_;
};

NvidiaMMImplV2* NewV2() { return new NvidiaMMImplV2(); }
NvidiaMMImplV2* NewV2WithOwnProxy(NvProxyScript* script) { return new V2WithOwnProxy(script); }
void GiveProxy(NvidiaMMImplV2* nv) { nv->*(&OpenV2::m_nvProxy) = new NVApiWrapper(); }
bool HasProxy(const NvidiaMMImplV2* nv) { return nv->*(&OpenV2::m_nvProxy) != nullptr; }
void RecognizeConnectors(NvidiaMMImplV2* nv) { (nv->*(&OpenV2::RecognizeConnectors))(); }
bool RefreshGpus(NvidiaMMImplV2* nv) { return nv->RefreshGpus(); }
bool CouldManageMultipleDisplay(NvidiaMMImplV2* nv) { return nv->CouldManageMultipleDisplay(); }
bool LeadsByAdapterMode(NvidiaMMImplV2* nv) { return NvidiaLeadsByAdapterMode(nv); }
uint32_t NvOutputOfDisplay(const NvidiaMMImplV2* nv, uint32_t display) {
  return (nv->*(&OpenV2::NvOutputOfDisplay))(display);
}
uint32_t DisplayToConnector(const NvidiaMMImplV2* nv, uint32_t imm_display) {
  return (nv->*(&OpenV2::DisplayToConnector))(imm_display);
}
void NvMaskToDisplays(NvidiaMMImplV2* nv, uint32_t nv_mask, uint32_t* imm_displays,
                      uint32_t* display_count) {
  (nv->*(&OpenV2::NvMaskToDisplays))(nv_mask, imm_displays, display_count);
}
NvPhysicalGpuHandle CurrentGpu(const NvidiaMMImplV2* nv) { return (nv->*(&OpenV2::CurrentGpu))(); }

NVApiWrapper* NewWrapper() { return new NVApiWrapper(); }
bool Initialize(NVApiWrapper* wrapper) { return wrapper->Initialize(); }
bool GetDisplayTopology(NVApiWrapper* wrapper, NvTopology* topology) {
  return wrapper->GetDisplayTopology(topology);
}
bool SetDisplayTopology(NVApiWrapper* wrapper, NvTopology* topology) {
  return wrapper->SetDisplayTopology(topology);
}
bool GetDisplayIdFromGpuAndOutputId(NVApiWrapper* wrapper, NvPhysicalGpuHandle gpu,
                                    uint32_t output_id, uint32_t* display_id) {
  return wrapper->GetDisplayIdFromGpuAndOutputId(gpu, output_id, display_id);
}
bool GetGpuAndOutputIdFromDisplayId(NVApiWrapper* wrapper, uint32_t display_id,
                                    NvPhysicalGpuHandle* gpu, uint32_t* output_id) {
  return wrapper->GetGpuAndOutputIdFromDisplayId(display_id, gpu, output_id);
}
bool SetDisplayConfig(NVApiWrapper* wrapper, uint32_t path_count, NV_DISPLAYCONFIG_PATH_INFO* path,
                      uint32_t flags) {
  return wrapper->SetDisplayConfig(path_count, path, flags);
}
bool IsNvApiLoaded() { return NvApi::Get().IsLoaded(); }
bool LoadNvApi(const char* file_name) { return NvApi::Get().Load(file_name) != FALSE; }

// An entry of the binding is nothing but its function's address.
template <typename Function, typename... Arguments>
void Replace(NvApiFunction<Arguments...>* entry, Function function) {
  static_assert(sizeof(*entry) == sizeof(function), "no more than the address");
  std::memcpy(static_cast<void*>(entry), &function, sizeof(function));
}
void ReplaceEnumPhysicalGPUs(NvAPI_Status (*function)(NvPhysicalGpuHandle*, uint32_t*)) {
  Replace(&NvApi::Get().EnumPhysicalGPUs, function);
}
void ReplaceGetPhysicalGPUsFromDisplay(NvAPI_Status (*function)(NvDisplayHandle,
                                                                NvPhysicalGpuHandle*, uint32_t*)) {
  Replace(&NvApi::Get().GetPhysicalGPUsFromDisplay, function);
}
void ReplaceGetDisplaySettings(NvAPI_Status (*function)(NvDisplayHandle, NvDisplaySettings*,
                                                        uint32_t*)) {
  Replace(&NvApi::Get().GetDisplaySettings, function);
}

constexpr NvidiaBox kBox = {
    NewV2,
    NewV2WithOwnProxy,
    GiveProxy,
    HasProxy,
    RecognizeConnectors,
    RefreshGpus,
    CouldManageMultipleDisplay,
    LeadsByAdapterMode,
    NvOutputOfDisplay,
    DisplayToConnector,
    NvMaskToDisplays,
    CurrentGpu,
    FirstDisplayHandle,
    NewWrapper,
    Initialize,
    GetDisplayTopology,
    SetDisplayTopology,
    GetDisplayIdFromGpuAndOutputId,
    GetGpuAndOutputIdFromDisplayId,
    SetDisplayConfig,
    IsNvApiLoaded,
    LoadNvApi,
    ReplaceEnumPhysicalGPUs,
    ReplaceGetPhysicalGPUsFromDisplay,
    ReplaceGetDisplaySettings,
    GetNvidiaPathsBox,
};

}  // namespace

const NvidiaBox* GetNvidiaBox() { return &kBox; }
