// SiS graphics of old notebooks, driven through SisVga.dll. A switch there takes a full mode for
// each display, so the back-end keeps one in a file beside the host's executable.
#pragma once

#include "Common/MultiMonitor/Legacy/SisMemos.h"
#include "Common/MultiMonitor/Legacy/VSisLib.h"
#include "Common/MultiMonitor/MultiMonitor.h"

#include <cstdint>
#include <memory>
#include <string>

struct SisMemoKeys;

/// Host thread only. Before Initial every operation of the library's gives its failure. Nothing is
/// logged.
class SisMMImpl : public MultiMonitor {
 public:
  /// Reads the memos.
  SisMMImpl();
  /// Writes the memos of an object that was ready.
  ~SisMMImpl() override;

  /// @return 0 without the library or one of its entries. A second attempt behind a failed one
  /// fails at once when the module was found.
  BOOL Initial() override;
  /// MD_NB, MD_CRT and MD_TV. @return 0 for a null pointer, and, with the outputs cleared, when
  /// nothing is attached
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// As GetConnectedDisplays; the count has both displays of a pair of one kind.
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// DM_SINGLE or DM_CLONE.
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override;
  /// DM_SINGLE on MD_NB, or else on MD_CRT or MD_TV; DM_CLONE of the panel with MD_CRT, or else
  /// with MD_TV.
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  uint32_t GetVgaVendor() override { return kVendorSis; }

 private:
  /// Where a memo stands in the file.
  struct MemoPlace {
    const char* section;
    const SisMemoKeys* keys;
    SisDisplayMemo SisMMImpl::*memo;
  };
  static const MemoPlace kMemoPlaces[4];  // in the order of reading and writing

  bool ReadDeviceState(uint32_t* first, uint32_t* second, uint32_t* attached);
  BOOL SetSingle(uint32_t displays);
  BOOL SetClone(uint32_t displays);
  /// Sends copies. @return the library accepted them; FALSE without that entry
  BOOL SwitchTo(uint32_t kind, SisSwitchRecord first, SisSwitchRecord second);

  std::unique_ptr<VSisLib> m_pLib;
  SisDisplayMemo m_singleLcd;
  SisDisplayMemo m_singleCrt;
  SisDisplayMemo m_cloneLcd;
  SisDisplayMemo m_cloneCrt;
  std::string m_iniPath;  // empty: nothing is remembered
};
