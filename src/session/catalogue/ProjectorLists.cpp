#include "session/catalogue/ProjectorLists.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/DriverEdid.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MonitorIdentity.h"
#include "session/catalogue/PresentationRules.h"

namespace {

constexpr char kProblemProjectorSection[] = "PM:1024x768";
constexpr char kProblemProjectorKey[] = "Problem Projector ";  // and a number, from 0 up
constexpr uint32_t kProblemProjectorRoom = 256;  // bytes, the end of the text included

std::vector<std::string> ReadProblemProjectors() {
  std::vector<std::string> names;
  for (int32_t number = 0;; ++number) {
    const std::string key = kProblemProjectorKey + std::to_string(number);
    const std::string name =
        ReadConfigText(kProblemProjectorSection, key.c_str(), kProblemProjectorRoom);
    if (name.empty()) break;
    names.push_back(name);
  }
  // Deliberate: one configured name takes the place of the built-in list, and adds nothing to it.
  if (names.empty()) {
    names.assign(std::begin(catalogue::kProblemProjectors),
                 std::end(catalogue::kProblemProjectors));
  }
  return names;
}

}  // namespace

const std::vector<std::string>& GetProblemProjectors() {
  static const std::vector<std::string> names = ReadProblemProjectors();
  return names;
}

std::vector<std::string> GetStupidProjectors() {
  return catalogue::SplitProjectorNames(StupidProjectors());
}

bool IsProblemProjectorConnected() {
  const std::vector<std::string>& projectors = GetProblemProjectors();
  std::set<std::string> names;
  ListMonitorNamesFromRegistry(&names);
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    return catalogue::IsNameListed(projectors, name);
  });
}

bool IsStupidProjectorOnCrt(const std::vector<std::string>& names, IDisplayExtension* ext) {
  DCHECK(ext);
  if (ext == nullptr) return false;
  const DriverEdid crt(ext, IMMonitor::MD_CRT);
  if (!crt.IsReadable()) return false;
  const EDID edid = crt.Load();
  // Deliberate: a monitor without a name is the empty name, which an empty part of the list names.
  std::string name;
  if (edid.m_valid != 0) edid.FindName(&name);
  return catalogue::IsNameListed(names, name);
}
