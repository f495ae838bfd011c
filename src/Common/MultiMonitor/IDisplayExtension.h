// What needs a vendor's library but changes no mode. Reached from an IMMonitor pointer by a
// run-time cast.
#pragma once

#include <cstdint>

#include "Common/Win.h"

/// An EDID block on its way from a driver to a reader. Shape: `cb` bytes at `pv`.
/// `pv` belongs to the object that filled it and goes back through that object's FreeEDID.
struct EdidBlob {
  uint32_t cb = 0;
  void* pv = nullptr;
};

/// IUnknown's three operations come first: a holder's first act is AddRef, Release at zero deletes
/// the whole object, and QueryInterface is never to be called (it returns 0x80004005).
class IDisplayExtension : public IUnknown {
 public:
  /// Makes the vendor's library usable; true at once when it already is.
  virtual bool InitialExtension() = 0;

  /// @return the same value as IMMonitor::GetVgaVendor
  virtual uint32_t GetExtensionVendor() = 0;

  /// Reads the EDID of one display (exactly one MD_* bit) into `edid`; give it back through
  /// FreeEDID.
  /// @return false when it cannot be read; `edid` then holds nothing
  virtual bool GetEDID(uint32_t display, EdidBlob* edid) = 0;

  /// Releases `edid->pv` and nothing else.
  virtual void FreeEDID(EdidBlob* edid) = 0;

  /// @return true when the adapter can drive three displays at once
  virtual bool SupportsTripleDisplay() = 0;

 protected:
  ~IDisplayExtension() = default;  // Release ends the object, never a delete through this interface
};

class IDisplayExtensionNvidia : public IDisplayExtension {
 public:
  /// @return true when the notebook's outputs hang on the discrete adapter alone
  virtual bool IsDiscreteOnly() = 0;

  /// @return true when the NVIDIA adapter has the internal panel and an HDMI or DisplayPort
  /// connector
  virtual bool IsCrossAdapterCapable() = 0;

 protected:
  ~IDisplayExtensionNvidia() =
      default;  // Release ends the object, never a delete through this interface
};

class IDisplayExtensionAMD : public IDisplayExtension {
 public:
  /// @return true when any adapter reports an SLS grid
  virtual bool HasSLSGrid() = 0;

 protected:
  ~IDisplayExtensionAMD() =
      default;  // Release ends the object, never a delete through this interface
};
