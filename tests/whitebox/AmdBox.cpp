#include "tests/whitebox/AmdBox.h"

#include "Common/MultiMonitor/Amd/ADLImpl.h"
#include "Common/MultiMonitor/MMObjectFactoryState.h"
#include "Common/MultiMonitor/VendorBackends.h"

namespace {

IDisplayExtensionAMD* ExtensionOf(IMMonitor* adl) {
  return dynamic_cast<IDisplayExtensionAMD*>(adl);
}

bool GetDisplayMap(IMMonitor* adl, ADLDisplayMap** ppmaps, int* pnum_map,
                   ADLDisplayTarget** pptargets, int* pnum_target) {
  return dynamic_cast<ADLImpl*>(adl)->GetDisplayMap(ppmaps, pnum_map, pptargets, pnum_target);
}

BOOL LoadVADLLib(const char* file_name) {
  VADLLib library;
  return library.Load(file_name);
}

constexpr AmdBox kBox = {
    NewADLImpl,    ExtensionOf,         GetDisplayMap,   ADLImpl::DisplayIndexFromConnector,
    FreeAdlBuffer, AdlLibraryQualifies, CreateAMDObject, LoadVADLLib,
};

}  // namespace

const AmdBox* GetAmdBox() { return &kBox; }
