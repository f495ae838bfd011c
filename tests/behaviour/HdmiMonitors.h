// Machines and display objects with an HDMI monitor at a low refresh rate.
#pragma once

#include <memory>

#include "tests/behaviour/CoreHost.h"
#include "tests/support/FakeMonitor.h"

constexpr char kPanel[] = "win7 intel: internal 1366x768 active";
constexpr char kPanelAndHdmi[] = "win7 intel: internal 1366x768 active, hdmi 1920x1080 active";

inline const WorkaroundBox& BoxOf(CoreHost& host) { return *host.ostrel().white_box().workarounds; }

/// A display object that tells of an HDMI monitor at a rate.
inline std::shared_ptr<FakeScript> HdmiAt(uint32_t frequency) {
  auto script = std::make_shared<FakeScript>();
  script->connected = IMMonitor::MD_NB | IMMonitor::MD_HDMI;
  script->connected_count = 2;
  script->active = script->connected;
  script->mode = IMMonitor::DM_EXTEND;
  script->settings_result = true;
  script->settings.dmDisplayFrequency = frequency;
  return script;
}

/// On kPanelAndHdmi: Windows shows the HDMI monitor at 30 Hz, which is not its preferred rate.
inline void SlowDown(sim::Machine& machine) {
  sim::Model& model = machine.model();
  model.connectors[1].monitor->modes.push_back({1920, 1080, 32, 30});
  model.sources[1].mode.frequency = 30;
}
