// The native size of a monitor from the EDID that a graphics vendor's library gives.
#pragma once

#include <cstdint>

#include "Common/CountedReference.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"

class IMMonitor;

/// The count starts at 0; the Release that brings it to 0 deletes the object. Holds one reference
/// on the extension it asks.
class PhysicalMonitorByDisplayLibrary : public IPhysicalMonitor {
 public:
  /// Asks the active object's extension, made ready here.
  /// @throws std::runtime_error when that cannot be made ready; what InitialExtension throws
  PhysicalMonitorByDisplayLibrary();

  /// Asks `monitor`'s extension, as it is; without one every question fails.
  explicit PhysicalMonitorByDisplayLibrary(IMMonitor* monitor);

  PhysicalMonitorByDisplayLibrary(const PhysicalMonitorByDisplayLibrary&) = delete;
  PhysicalMonitorByDisplayLibrary& operator=(const PhysicalMonitorByDisplayLibrary&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  /// @return false when the EDID cannot be read or is damaged. True with 0 by 0 when the monitor
  ///         calls no timing its preferred one, or the EDID is too short to be one.
  bool GetNativeResolution(uint32_t monitor_id, uint32_t* width, uint32_t* height) override;

  virtual ~PhysicalMonitorByDisplayLibrary() = default;

 private:
  const CountedReference<IDisplayExtension> m_extension;  // null when there is none to ask
  LONG m_references = 0;
};
