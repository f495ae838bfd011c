#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"

#include "Common/Logging.h"

#include <ios>

namespace {

constexpr uint32_t kEmbeddedDisplayPort = 71;

// Every display, in the order in which a set of them is looked up.
constexpr uint32_t kCachedDisplays[] = {IMMonitor::MD_NB,   IMMonitor::MD_CRT, IMMonitor::MD_DVI,
                                        IMMonitor::MD_HDMI, IMMonitor::MD_TV,  IMMonitor::MD_DP};

// Adds the connector type of each of a GPU's outputs. A type that is known already stays.
bool ReadConnectorTypes(NvPhysicalGpuHandle gpu, std::map<uint32_t, uint32_t>* types) {
  const NvApi& api = NvApi::Get();
  uint32_t outputs = 0;
  if (api.GPU_GetAllOutputs(gpu, &outputs) != NVAPI_OK || outputs == 0) return false;
  NvConnectorInfo connector = {};
  connector.version = kNvConnectorInfoVersion;
  for (const uint32_t nv_mask : kNvidiaOutputs) {
    if ((outputs & nv_mask) == 0) continue;
    if (api.GPU_GetConnectorInfo(gpu, nv_mask, &connector) == NVAPI_OK) {
      types->emplace(nv_mask, connector.type);
      VLOG(2) << std::showbase << std::hex << "Connector type recognized: nv_mask = " << nv_mask
              << ", type = " << connector.type;
    }
    outputs &= ~nv_mask;
    if (outputs == 0) break;
  }
  return true;
}

}  // namespace

NvidiaMMImplV2::~NvidiaMMImplV2() {
  if (m_nvProxy != nullptr) NvidiaMMImplV2::DestroyNvProxy(m_nvProxy);
}

BOOL NvidiaMMImplV2::Initial() {
  if (m_initialized) return TRUE;
  DropNvProxy();
  m_nvProxy = CreateNvProxy();
  if (m_nvProxy == nullptr) return FALSE;
  if (!m_nvProxy->Initialize()) {
    DropNvProxy();
    return FALSE;
  }
  RecognizeConnectors();
  m_initialized = true;
  return TRUE;
}

NVApiWrapper* NvidiaMMImplV2::CreateNvProxy() { return new NVApiWrapper(); }

void NvidiaMMImplV2::DestroyNvProxy(NVApiWrapper* proxy) { delete proxy; }

void NvidiaMMImplV2::DropNvProxy() {
  if (m_nvProxy != nullptr) DestroyNvProxy(m_nvProxy);
  m_nvProxy = nullptr;
}

// Deliberate: interfaces are had by a run-time cast and never from here.
HRESULT NvidiaMMImplV2::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG NvidiaMMImplV2::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

ULONG NvidiaMMImplV2::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

bool NvidiaMMImplV2::InitialExtension() {
  if (m_initialized) return true;
  if (Initial() == 0) {
    DCHECK(0 && "Initial NVIDIA library failed");
    return false;
  }
  m_initialized = true;
  return true;
}

// Deliberate: of the current GPU alone, and once. What is plugged into a further GPU has no display
// flag, and a connector that changes later keeps its old one.
void NvidiaMMImplV2::RecognizeConnectors() {
  DCHECK(m_nvProxy != NULL);
  if (m_gpus[0] == nullptr) DetectDisplays();
  ReadConnectorTypes(CurrentGpu(), &m_connectorTypes);
  for (const auto& [nv_mask, connector_type] : m_connectorTypes) {
    if (connector_type == kEmbeddedDisplayPort) m_hasEmbeddedDisplayPort = true;
  }
}

void NvidiaMMImplV2::NvMaskToDisplays(uint32_t nv_mask, uint32_t* imm_displays,
                                      uint32_t* display_count) {
  DCHECK(imm_displays != NULL);
  DCHECK(display_count != NULL);
  DCHECK(nv_mask > 0);
  if (imm_displays == nullptr || display_count == nullptr || nv_mask == 0) return;
  *imm_displays = 0;
  *display_count = 0;
  for (const uint32_t output : kNvidiaOutputs) {
    if ((nv_mask & output) == 0) continue;
    const auto known = m_connectorTypes.find(output);
    if (known != m_connectorTypes.end()) {
      // Deliberate: an output counts also where its display was counted already, and where its
      // connector type has no display flag.
      const uint32_t display = ConnectorToDisplay(known->second);
      *imm_displays |= display;
      ++*display_count;
      m_idCached[display] = output;
    }
    nv_mask &= ~output;
    if (nv_mask == 0) break;
  }
}

uint32_t NvidiaMMImplV2::DisplayToConnector(uint32_t imm_display) const {
  DCHECK(CountBits(imm_display) == 1);
  return ConnectorOfDisplay(imm_display, m_hasEmbeddedDisplayPort);
}

uint32_t NvidiaMMImplV2::NvOutputOfDisplay(uint32_t display) const {
  return NvOutputOfConnectorType(DisplayToConnector(display));
}

uint32_t NvidiaMMImplV2::NvOutputOfConnectorType(uint32_t connector_type) const {
  for (const auto& [nv_mask, type] : m_connectorTypes) {
    if (type == connector_type) return nv_mask;
  }
  return 0;
}

uint32_t NvidiaMMImplV2::CachedMaskOfDisplay(uint32_t display) const {
  DCHECK(!m_idCached.empty());
  const auto known = m_idCached.find(display);
  return known != m_idCached.end() ? known->second : 0;
}

uint32_t NvidiaMMImplV2::CachedMaskOfDisplays(uint32_t displays) const {
  uint32_t nv_mask = 0;
  for (const uint32_t display : kCachedDisplays) {
    if ((displays & display) != 0) nv_mask |= CachedMaskOfDisplay(display);
  }
  return nv_mask;
}
