// The path and mode records of one call to QueryDisplayConfig.
#pragma once

#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Common/Win.h"

#include <cstdint>
#include <memory>
#include <utility>

/// A run of records that belongs to somebody else.
template <typename Record>
struct Records {
  Record* first;
  UINT32 count;
  Record* begin() const { return first; }
  Record* end() const { return first + count; }
};

class DisplayConfigBuffers {
 public:
  /// Asks how many records there are.
  /// @return Windows' answer, or ERROR_NOT_SUPPORTED with an API that is not bound
  LONG ReadSizes(const Win7CCDApi& ccd, UINT32 flags);

  /// Makes room for that many records, cleared. @return false without the memory
  bool MakeRoom();

  /// ReadSizes and MakeRoom.
  /// @return Windows' answer; ERROR_NOT_ENOUGH_MEMORY or, with an API that is not bound,
  /// ERROR_NOT_SUPPORTED
  LONG Allocate(const Win7CCDApi& ccd, UINT32 flags);

  /// Fills the records.
  /// @param topology  out, with QDC_DATABASE_CURRENT only; otherwise null
  /// @return Windows' answer
  LONG Query(const Win7CCDApi& ccd, UINT32 flags, DISPLAYCONFIG_TOPOLOGY_ID* topology);

  /// Both of them. @return true when both went well
  bool Read(const Win7CCDApi& ccd, UINT32 flags, DISPLAYCONFIG_TOPOLOGY_ID* topology = nullptr);

  /// Gives all records to SetDisplayConfig. @return Windows' answer
  LONG Set(const Win7CCDApi& ccd, UINT32 flags);

  /// Has the records validated as a configuration and then sets and saves them.
  /// @return false when they were not set; each refusal is logged
  bool ValidateAndSet(const Win7CCDApi& ccd);

  Records<DISPLAYCONFIG_PATH_INFO> Paths() const { return {paths_.get(), path_count_}; }
  Records<DISPLAYCONFIG_MODE_INFO> Modes() const { return {modes_.get(), mode_count_}; }

  std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]> TakePaths() { return std::move(paths_); }
  std::unique_ptr<DISPLAYCONFIG_MODE_INFO[]> TakeModes() { return std::move(modes_); }

 private:
  UINT32 path_count_ = 0;
  UINT32 mode_count_ = 0;
  std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]> paths_;
  std::unique_ptr<DISPLAYCONFIG_MODE_INFO[]> modes_;
};
