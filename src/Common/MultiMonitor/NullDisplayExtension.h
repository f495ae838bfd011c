// What users of IDisplayExtension get when the active object has none: usable, and without answers.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/IDisplayExtension.h"

class NullDisplayExtension final : public IDisplayExtension {
 public:
  /// The count starts at 0: the first AddRef is the holder's, and its Release deletes the object.
  NullDisplayExtension() = default;
  NullDisplayExtension(const NullDisplayExtension&) = delete;
  NullDisplayExtension& operator=(const NullDisplayExtension&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  bool InitialExtension() override { return true; }
  uint32_t GetExtensionVendor() override { return 0; }
  bool GetEDID(uint32_t /*display*/, EdidBlob* /*edid*/) override { return false; }
  void FreeEDID(EdidBlob* /*edid*/) override {}
  bool SupportsTripleDisplay() override { return false; }

 private:
  ~NullDisplayExtension() = default;  // Release ends the object

  LONG references_ = 0;
};
