#include "sim/Model.h"

#include "sim/Topology.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

std::string JoinIds(const Model& model, const std::vector<size_t>& connectors) {
  std::string text;
  for (size_t connector : connectors) {
    if (!text.empty()) text += "+";
    text += model.connectors[connector].id;
  }
  return text;
}

// What Windows' own topology shows.
std::string DescribeDesktops(const Model& model) {
  // The desktops, each at the place of its first connector.
  std::vector<std::vector<size_t>> desktops;
  std::set<size_t> seen;
  for (size_t connector = 0; connector < model.connectors.size(); ++connector) {
    const std::optional<size_t> source = SourceOfConnector(model, connector);
    if (!source || !seen.insert(*source).second) continue;
    desktops.push_back(ConnectorsOfSource(model, *source));
  }
  if (desktops.empty()) return "none";
  if (desktops.size() == 1) {
    const char* word = desktops[0].size() > 1 ? "clone " : "single ";
    return word + JoinIds(model, desktops[0]);
  }
  std::string text = "extend ";
  for (size_t i = 0; i < desktops.size(); ++i) {
    if (i > 0) text += "+";
    const std::string ids = JoinIds(model, desktops[i]);
    text += desktops[i].size() > 1 ? "(" + ids + ")" : ids;
  }
  return text;
}

}  // namespace

bool operator==(const DisplayMode& a, const DisplayMode& b) {
  return a.width == b.width && a.height == b.height && a.bits == b.bits &&
         a.frequency == b.frequency;
}

std::string DescribeTopology(const Model& model) {
  std::string text = DescribeDesktops(model);
  for (const NvidiaCloneGroup& group : model.nvidia_clone_groups) {
    text += "; group ";
    for (size_t i = 0; i < group.size(); ++i) {
      const std::optional<size_t> connector = NvCloneConnector(model, group[i]);
      text += (i > 0 ? "+" : "") + (connector ? model.connectors[*connector].id : "unknown");
    }
  }
  return text;
}

std::vector<std::string> ConnectedIds(const Model& model) {
  std::vector<std::string> ids;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (IsConnected(model, i)) ids.push_back(model.connectors[i].id);
  }
  return ids;
}

}  // namespace sim
