// A monitor's EDID by way of the display driver, given back to it where the scope ends, an
// exception's way out of it included.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/Edid.h"
#include "Common/MultiMonitor/IDisplayExtension.h"

class DriverEdid {
 public:
  /// @param extension  never null, and outlives this
  /// @param display    exactly one MD_* bit
  DriverEdid(IDisplayExtension* extension, uint32_t display)
      : extension_(extension), readable_(extension->GetEDID(display, &blob_)) {}
  ~DriverEdid() {
    if (readable_) extension_->FreeEDID(&blob_);
  }
  DriverEdid(const DriverEdid&) = delete;
  DriverEdid& operator=(const DriverEdid&) = delete;

  /// The driver has handed something out.
  bool IsReadable() const { return readable_; }

  /// What was handed out: `cb` bytes at `pv`, good as long as this is.
  const EdidBlob& blob() const { return blob_; }

  /// The record of what was handed out; not valid when that is nothing or too short.
  /// @throws invalid_edid_header, invalid_edid_checksum
  EDID Load() const {
    EDID edid;
    if (readable_) edid.Load(blob_.pv, blob_.cb);
    return edid;
  }

 private:
  IDisplayExtension* const extension_;
  EdidBlob blob_;
  const bool readable_;
};
