// What the tests of Win7CCD share: its reports as values, and the journal's line for
// SetDisplayConfig.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/behaviour/CoreHost.h"

namespace ccd_test {

using PathList = std::vector<DISPLAYCONFIG_PATH_INFO>;

constexpr char kPanelAndCrt[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr char kThree[] = "win7 intel*3: internal 1366x768 active, crt 1024x768, hdmi 1920x1080";
constexpr uint32_t kInternal = 0x80000000;
constexpr uint32_t kOther = 0xFFFFFFFF;

struct Report {
  BOOL result = 0;
  uint32_t displays = 0;
  uint32_t count = 0;
};
inline bool operator==(const Report& a, const Report& b) {
  return a.result == b.result && a.displays == b.displays && a.count == b.count;
}
inline std::ostream& operator<<(std::ostream& out, const Report& report) {
  return out << report.result << ": 0x" << std::hex << report.displays << std::dec << " of "
             << report.count;
}

inline Report Connected(const CcdPointer& ccd) {
  Report report;
  report.result = ccd->GetConnectedDisplays(&report.displays, &report.count);
  return report;
}

inline Report Active(const CcdPointer& ccd) {
  Report report;
  report.result = ccd->GetActiveDisplays(&report.displays, &report.count);
  return report;
}

inline Report Mode(const CcdPointer& ccd) {  // the mode as the count
  Report report;
  report.result = ccd->GetCurrentDisplayMode(&report.count, &report.displays);
  return report;
}

inline std::string Set(uint32_t paths, const char* flags, uint32_t result = 0) {
  return "SetDisplayConfig(paths=" + std::to_string(paths) + " flags=" + flags +
         ")=" + std::to_string(result) + "\n";
}

struct TechnologyRow {
  uint32_t technology;
  uint32_t flag;
};
// Every row of the mapping, and some of "anything else".
inline constexpr TechnologyRow kTechnologyRows[] = {
    {kInternal, IMMonitor::MD_NB},
    {0, IMMonitor::MD_CRT},
    {1, IMMonitor::MD_TV},
    {2, IMMonitor::MD_TV},
    {3, IMMonitor::MD_TV},
    {4, IMMonitor::MD_DVI},
    {5, IMMonitor::MD_HDMI},
    {kOther, IMMonitor::MD_HDMI},
    {10, IMMonitor::MD_DP},
    {11, IMMonitor::MD_DP},
    {6, 0},
    {7, 0},
    {8, 0},
    {9, 0},
    {12, 0},
    {13, 0},
    {14, 0},
    {15, 0},
    {0x80000001, 0},
    {0xFFFFFFFE, 0},
};

/// Each technology is reported as its display, and counts.
template <typename Host>
void ExpectEveryTechnologyReported() {
  for (const TechnologyRow& row : kTechnologyRows) {
    Host host("win7 intel: internal 1366x768 active");
    host.machine.model().connectors[0].technology = row.technology;
    const CcdPointer ccd = host.NewCcd();
    EXPECT_EQ(Connected(ccd), (Report{1, row.flag, 1})) << std::hex << row.technology;
    EXPECT_EQ(Active(ccd), (Report{1, row.flag, 1})) << std::hex << row.technology;
  }
}

}  // namespace ccd_test
