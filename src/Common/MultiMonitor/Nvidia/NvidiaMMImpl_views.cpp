// Setting a view: which displays, under which names, by which command.
#include "Common/MultiMonitor/Nvidia/NvidiaMMImpl.h"

#include "Common/Logging.h"
#include "Common/Owners.h"

namespace {

// The names of the two displays on a DisplayPort connector that a DVI or HDMI plug shares.
constexpr char kSharedPortDfp[] = "#DB";
constexpr char kSharedPortDp[] = "#DC";

// The library knows no DisplayPort: its displays go by the names of the digital ones.
void AssignDisplayPort(uint32_t connected, uint32_t last_display, MonikerMap* map) {
  MonikerMap& moniker_map = *map;
  uint32_t dfp_display = last_display;
  for (const uint32_t display : {IMMonitor::MD_DVI, IMMonitor::MD_HDMI}) {
    if (moniker_map.count(display) == 0) continue;
    dfp_display = display;
    break;
  }
  DCHECK(CountBits(dfp_display) > 0);
  if ((connected & dfp_display) != 0) {
    // Deliberate: both names are fixed, whatever the library called the two.
    moniker_map[dfp_display] = kSharedPortDfp;
    moniker_map[IMMonitor::MD_DP] = kSharedPortDp;
    return;
  }
  const auto it = moniker_map.find(dfp_display);
  DCHECK(it != moniker_map.end()) << "Should always contains HDMI moniker.";
  if (it == moniker_map.end()) return;
  moniker_map[IMMonitor::MD_DP] = it->second;
}

bool FindName(const MonikerMap& moniker_map, uint32_t display, std::string* name) {
  const auto it = moniker_map.find(display);
  DCHECK(it != moniker_map.end()) << "Cannot find display moniker from connected displays";
  if (it == moniker_map.end()) return false;
  *name = NvCplDisplayName(it->second);
  return true;
}

// Windows writes into the line while it takes it apart, which is why it is a copy.
void StartProgram(std::string line) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION started = {};
  CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                 &started);
  const UniqueHandle process(started.hProcess);
  const UniqueHandle thread(started.hThread);
}

bool RunDtcfg(const std::string& gpu, int32_t state, const std::string& first,
              const std::string& second) {
  const std::string line = DtcfgLine(gpu, state, first, second);
  if (line.empty()) return false;
  // Deliberate: nobody looks whether the program started, nor waits for what it does.
  StartProgram("rundll32.exe " + line);
  return true;
}

}  // namespace

bool NvidiaMMImpl::ReadDisplayOfMoniker(const std::string& moniker, uint32_t* display) {
  NvCplDisplayInfo record = {};
  record.size = sizeof(record);
  record.input_fields_1 = NvCplDisplayInfo::kDisplayType;
  record.input_fields_2 = NvCplDisplayInfo::kMonikers;
  if (m_library->NvGetDisplayInfo == nullptr ||
      m_library->NvGetDisplayInfo(moniker.c_str(), &record) == 0) {
    LOG(ERROR) << "Calling NvGetDisplayInfo() failed";
    return false;
  }
  *display = DisplayOfNvCplType(record.display_type);
  if (*display == 0) DCHECK(false) << "Unknown NvCpl display type.";
  return true;
}

MonikerMap NvidiaMMImpl::BuildMonikerMap(uint32_t connected) {
  // The condition is part of the record.
  // NOLINTNEXTLINE(readability-container-size-empty)
  DCHECK(raw_moniker.size() > 0);
  MonikerMap moniker_map;
  uint32_t last_display = 0;
  for (MonikerTokenizer t(raw_moniker); t.GetNext();) {
    DCHECK(t.token().find_first_of('#') == 0) << "A valid raw moniker must lead with '#' character";
    uint32_t display = 0;
    if (!ReadDisplayOfMoniker(t.token(), &display)) continue;
    // A display that the library lists twice has the name that comes last.
    moniker_map[display] = t.token();
    last_display = display;
  }
  if ((connected & MD_DP) != 0) AssignDisplayPort(connected, last_display, &moniker_map);
  return moniker_map;
}

bool NvidiaMMImpl::SetView(uint32_t displays, uint32_t primary_display, uint32_t secondary_display,
                           int32_t state, const MonikerMap& moniker_map) {
  DCHECK(CountBits(displays) > 0);
  DCHECK(CountBits(primary_display) == 1);
  if ((displays & primary_display) == 0) return false;
  if (secondary_display != 0 && (displays & secondary_display) == 0) return false;
  std::string first;
  if (!FindName(moniker_map, primary_display, &first)) return false;
  std::string second;
  if (secondary_display != 0 && !FindName(moniker_map, secondary_display, &second)) return false;
  return RunDtcfg("0", state, first, second);
}

bool NvidiaMMImpl::ShowFirstAlone(uint32_t displays, const MonikerMap& moniker_map) {
  for (const uint32_t display : kViewOrder) {
    if (SetView(displays, display, 0, kNvCplSingle, moniker_map)) return true;
  }
  return false;
}

bool NvidiaMMImpl::ShowFirstBesidePanel(uint32_t displays, int32_t state,
                                        const MonikerMap& moniker_map) {
  for (const uint32_t display : kViewOrder) {
    if (display == MD_NB) continue;
    if (SetView(displays, MD_NB, display, state, moniker_map)) return true;
  }
  return false;
}

BOOL NvidiaMMImpl::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  DetectDisplays();
  uint32_t connected = 0;
  uint32_t connected_count = 0;
  GetConnectedDisplays(&connected, &connected_count);
  const MonikerMap moniker_map = BuildMonikerMap(connected);
  if (mode == DM_SINGLE) return ShowFirstAlone(displays, moniker_map) ? TRUE : FALSE;
  if (mode == DM_CLONE) {
    return ShowFirstBesidePanel(displays, kNvCplClone, moniker_map) ? TRUE : FALSE;
  }
  return FALSE;
}

BOOL NvidiaMMImpl::EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) {
  return SwitchExtendMode(enable, &displays);
}

BOOL NvidiaMMImpl::EnableExtendMode(BOOL enable) { return SwitchExtendMode(enable, nullptr); }

BOOL NvidiaMMImpl::SwitchExtendMode(BOOL enable, const uint32_t* displays) {
  DetectDisplays();
  uint32_t connected = 0;
  uint32_t connected_count = 0;
  if (GetConnectedDisplays(&connected, &connected_count) == 0) return FALSE;
  const MonikerMap moniker_map = BuildMonikerMap(connected);
  // Deliberate: off shows the first display of the order that has a name among all connected ones,
  // which need be neither the panel nor one of the arguments.
  if (enable == 0) return ShowFirstAlone(connected, moniker_map) ? TRUE : FALSE;
  const uint32_t wanted = displays != nullptr ? *displays : connected;
  return ShowFirstBesidePanel(wanted | MD_NB, kNvCplDualView, moniker_map) ? TRUE : FALSE;
}
