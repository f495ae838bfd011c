// The whole machine as text, for a person in front of a failed test.
#include <cstdio>
#include <sstream>

#include "sim/MachineState.h"

namespace sim {
namespace {

std::ostream& operator<<(std::ostream& out, const DisplayMode& mode) {
  return out << mode.width << "x" << mode.height << "x" << mode.bits << "@" << mode.frequency;
}

void DescribeAdapters(const Model& model, std::ostream& out) {
  for (size_t i = 0; i < model.adapters.size(); ++i) {
    const Adapter& adapter = model.adapters[i];
    out << "adapter " << i << ": " << adapter.name << " [" << adapter.hardware_id << "]";
    if (adapter.disabled) out << " disabled";
    if (adapter.problem != 0) out << " problem " << adapter.problem;
    if (adapter.root_enumerated) out << " root-enumerated";
    if (adapter.mirroring) out << " mirroring";
    if (adapter.nvidia_coproc_status != 0) out << " coproc " << adapter.nvidia_coproc_status;
    if (adapter.nvidia_hybrid_mode) out << " hybrid " << *adapter.nvidia_hybrid_mode;
    out << "\n";
  }
}

void DescribeConnectors(const Model& model, std::ostream& out) {
  for (const Connector& connector : model.connectors) {
    out << "connector " << connector.id << ": adapter " << connector.adapter << ", technology "
        << connector.technology << ", target " << connector.target_id;
    if (connector.monitor) {
      out << ", monitor \"" << connector.monitor->name << "\" " << connector.monitor->preferred
          << ", " << connector.monitor->modes.size() << " modes, " << connector.monitor->edid.size()
          << " bytes of EDID";
    }
    if (connector.nvidia_output != 0) out << ", nvidia output " << connector.nvidia_output;
    if (connector.nvidia_connector_type) out << ", plug " << *connector.nvidia_connector_type;
    if (connector.forced) out << ", forced";
    out << "\n";
  }
}

void DescribeSources(const Model& model, std::ostream& out) {
  for (size_t i = 0; i < model.sources.size(); ++i) {
    const Source& source = model.sources[i];
    out << "source " << i << ": " << source.device_name << ", adapter " << source.adapter << ", "
        << source.mode << " at " << source.x << "," << source.y;
    if (i == model.primary_source) out << ", primary";
    for (const Path& path : model.active) {
      if (path.source == i) out << ", on " << model.connectors[path.connector].id;
    }
    out << "\n";
  }
}

void DescribePrograms(const Model& model, std::ostream& out) {
  for (const Process& process : model.processes) {
    out << "process " << process.id << ": " << process.executable << "\n";
  }
  for (const OtherWindow& window : model.other_windows) {
    out << "window of class " << window.class_name << ": \"" << window.title << "\"";
    for (const std::string& child : window.child_classes) out << ", child " << child;
    out << "\n";
  }
  for (const Service& service : model.services) {
    out << "service " << service.name << ": " << (service.running ? "running" : "stopped") << "\n";
  }
}

void DescribeTimers(const std::vector<Machine::Timer>& timers, std::ostream& out) {
  for (const Machine::Timer& timer : timers) {
    out << "timer " << timer.id << ": every " << timer.period << " ms, due at " << timer.due
        << (timer.window != nullptr ? ", of a window" : "") << "\n";
  }
}

}  // namespace

std::string Machine::Describe() const {
  const Model& model = state().model;
  std::ostringstream out;
  out << "windows " << model.windows.major << "." << model.windows.minor << "."
      << model.windows.build << ", product type " << static_cast<int>(model.windows.product_type)
      << "\n";
  DescribeAdapters(model, out);
  DescribeConnectors(model, out);
  DescribeSources(model, out);
  out << "topology: " << Topology() << "\n";
  DescribePrograms(model, out);
  out << "clock: " << Now() << " ms\n";
  DescribeTimers(ArmedTimers(), out);
  out << "pop-up: " << (Popup() != nullptr ? "open" : "none") << ", "
      << state().notifications.size() << " notifications\n";
  return out.str();
}

}  // namespace sim
