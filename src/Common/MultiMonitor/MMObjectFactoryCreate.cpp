// Which class of object a vendor id stands for.
#include <memory>
#include <typeinfo>

#include "Common/Logging.h"
#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/MMObjectFactoryState.h"
#include "Common/MultiMonitor/NullDisplayExtension.h"
#include "Common/MultiMonitor/VendorBackends.h"
#include "Common/MultiMonitor/Win7CCD.h"
#include "Common/win_util.h"

namespace {

struct VendorMaker {
  uint32_t vendor;
  IMMonitor* (*make)();
};

// CreateIMMonitorByVendor.
constexpr VendorMaker kMakers[] = {
    {kVendorAmd, CreateAMDObject},       {kVendorSis, NewSisMMImpl},
    {kVendorNvidia, CreateNvidiaObject}, {kVendorVia, NewViaMMImpl},
    {kVendorIntel, CreateIntelObject},
};

// CreateIMMonitorForActiveVendor.
constexpr VendorMaker kActiveVendorMakers[] = {
    {kVendorAmd, CreateAMDObject},
    {kVendorNvidia, CreateNvidiaObject},
    {kVendorIntel, CreateIntelObject},
};

// CreateDisplayExtensionByVendor.
constexpr VendorMaker kExtensionMakers[] = {
    {kVendorNvidia, NewNvidiaMMImplV2},
    {kVendorIntel, NewIntelMMImpl},
    {kVendorAmd, NewADLImpl},
};

template <size_t kRows>
const VendorMaker* FindMaker(const VendorMaker (&makers)[kRows], uint32_t vendor) {
  for (const VendorMaker& maker : makers) {
    if (maker.vendor == vendor) return &maker;
  }
  return nullptr;
}

constexpr char kMakerThrew[] = "Exception occurred while creating IMMonitor object";

}  // namespace

IMMonitor* CreateIntelObject() {
  if (IsWindows7OrLater() && IsDisplayLinkServicePresent()) return NewDisplayLinkWorkaroundImpl();
  return NewIntelMMImpl();
}

IMMonitor* CreateNvidiaObject() {
  const win_util::WinVersion version = win_util::GetWinVersion();
  if (version >= win_util::WINVERSION_2008) return NewNvidiaMMImplV3();
  if (version < win_util::WINVERSION_SERVER_2003) return NewNvidiaMMImpl();
  return NewNvidiaMMImplV2();
}

IMMonitor* CreateNvidiaV3Object() { return NewNvidiaMMImplV3(); }

IMMonitor* CreateNvidiaCrossAdapterObject() { return NewNvidiaMMImplV3CrossAdapter(); }

IMMonitor* CreateAMDObject() {
  if (AdlLibraryQualifies()) {
    std::unique_ptr<IMMonitor> adl(NewADLImpl());
    if (adl != nullptr && adl->Initial() != 0) return adl.release();
  }
  return NewAtiMMImpl();
}

Win7CCD* CreateWin7CCDObject() {
  if (IsDisplayLinkServicePresent()) return NewDisplayLinkWorkaroundImpl();
  return NewWin7CCD();
}

IMMonitor* CreateIMMonitorByVendor(uint32_t vendor) {
  const VendorMaker* const maker = FindMaker(kMakers, vendor);
  if (maker == nullptr) {
    DCHECK(false) << "Non-supported vendor";
    return nullptr;
  }
  IMMonitor* object = nullptr;
  try {
    object = maker->make();
  } catch (...) {
    // Deliberate: the active object stays; memory that ran out for the object itself gives null
    // without an exception, and that is stored.
    LOG(ERROR) << kMakerThrew;
    return nullptr;
  }
  MMObjectFactory::ReplaceInstance(object);
  return object;
}

IMMonitor* CreateIMMonitorForActiveVendor() {
  try {
    const VendorMaker* const maker = FindMaker(kActiveVendorMakers, GetActiveVendorId());
    if (maker != nullptr) return maker->make();
    DCHECK(false) << "Non-supported vendor id";
  } catch (...) {
    LOG(ERROR) << kMakerThrew;
  }
  return nullptr;
}

IDisplayExtension* CreateDisplayExtensionByVendor(uint32_t vendor) {
  const VendorMaker* const maker = FindMaker(kExtensionMakers, vendor);
  if (maker == nullptr) return nullptr;
  try {
    std::unique_ptr<IMMonitor> object(maker->make());
    auto* const extension = dynamic_cast<IDisplayExtension*>(object.get());
    if (extension == nullptr) return nullptr;
    extension->AddRef();
    static_cast<void>(object.release());  // from here on its count ends it
    return extension;
  } catch (...) {
    return nullptr;
  }
}

IDisplayExtension* GetDisplayExtension() {
  IDisplayExtension* extension = nullptr;
  try {
    extension = dynamic_cast<IDisplayExtension*>(GetMultiMonitorObject());
  } catch (const std::bad_cast& exception) {
    LOG(ERROR) << "Can't create IDisplayExtension object: " << exception.what();
    const uint32_t vendor = GetActiveVendorId();
    if (vendor != kVendorHybrid) extension = CreateDisplayExtensionByVendor(vendor);
    // Its first reference is nobody's: it ends with the library's sides.
    MMObjectFactory::RememberUnsaved(dynamic_cast<IMMonitor*>(extension));
  }
  return extension != nullptr ? extension : new NullDisplayExtension();
}

IPhysicalMonitor* CreatePhysicalMonitor() {
  OSVERSIONINFOA version = {};
  version.dwOSVersionInfoSize = sizeof(version);
#ifdef _MSC_VER
#pragma warning(suppress : 4996)  // what the host's manifest lets it say is what is wanted
#endif
  const BOOL known = GetVersionExA(&version);
  // Deliberate: both parts are tested, so that a reported 10.0 reads the size from the EDID.
  if (known != FALSE && version.dwMajorVersion >= 6 && version.dwMinorVersion > 0) {
    return CreateWin7CCDObject();
  }
  return NewPhysicalMonitorByDisplayLibrary();
}
