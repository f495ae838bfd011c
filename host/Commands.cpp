#include "host/Commands.h"

#include <sstream>

#include "host/Words.h"

namespace {

using Sides = LibrarySides::Wanted;

int NotReady(Report& report) {
  report.Fact("Library", "could not start; its log tells why", "error", "initialisation failed");
  return kExitFailed;
}

using DisplaysExport = decltype(&Ostrel_GetConnectedDisplays);

int ShowDisplays(Stage& stage, Report& report, const char* title, DisplaysExport ask) {
  LibrarySides sides(stage.exports(), Sides::kQueries);
  if (!sides.ready()) return NotReady(report);
  uint32_t displays = 0;
  uint32_t count = 0;
  if (ask(&displays, &count) == 0) {
    report.Fact(title, "could not be read", "displays", nullptr);
    return kExitFailed;
  }
  report.Fact(title, DisplayText(displays) + " (" + std::to_string(count) + ")", "displays",
              {{"mask", displays}, {"names", DisplayWords(displays)}, {"count", count}});
  return kExitDone;
}

void TellMode(Stage& stage, Report& report) {
  const CurrentMode current = ReadCurrentMode(stage.exports());
  report.Fact("Mode", ModeText(current), "mode",
              current.known ? nlohmann::json{{"number", current.mode},
                                             {"name", ModeWord(current.mode)},
                                             {"displays", DisplayWords(current.displays)}}
                            : nlohmann::json(nullptr));
}

/// What a call that reached the notebook is to the host; empty for most.
std::string MeaningOf(const std::string& call) {
  if (call.rfind("PostMessageA(", 0) != 0) return "";
  if (call.find("wparam=1 ") != std::string::npos) return "notification 1 is posted";
  if (call.find("wparam=2 ") != std::string::npos) return "notification 2 is posted";
  return "";
}

/// Runs a command that changes the machine, and tells what came of it.
template <typename Change>
int ChangeMachine(Stage& stage, Report& report, Change change) {
  LibrarySides sides(stage.exports(), Sides::kQueries);
  if (!sides.ready()) return NotReady(report);
  const bool done = change(stage.exports());
  TellChanges(stage, report);
  TellMode(stage, report);
  report.Fact("Result", done ? "done" : "failed", "done", done);
  return done ? kExitDone : kExitFailed;
}

}  // namespace

CurrentMode ReadCurrentMode(const Exports& exports) {
  CurrentMode current;
  const bool read = exports.GetCurrentDisplayMode(&current.mode, &current.displays) != 0;
  current.known = read || current.mode == OSTREL_MODE_EXTEND;
  if (current.mode == OSTREL_MODE_EXTEND) {
    uint32_t count = 0;
    exports.GetActiveDisplays(&current.displays, &count);
  }
  return current;
}

std::string ModeText(const CurrentMode& current) {
  if (!current.known) return "could not be read";
  return ModeWord(current.mode) + " on " + DisplayText(current.displays);
}

void TellChanges(Stage& stage, Report& report) {
  if (stage.notebook() == nullptr) return;
  std::istringstream journal(stage.notebook()->TakeJournal());
  for (std::string line; std::getline(journal, line);) {
    const std::string meaning = MeaningOf(line);
    report.Event("", "  " + line + (meaning.empty() ? "" : "   <- " + meaning),
                 {{"event", "call"}, {"call", line}, {"meaning", meaning}});
  }
}

int ShowConnected(Stage& stage, Report& report) {
  return ShowDisplays(stage, report, "Connected", stage.exports().GetConnectedDisplays);
}

int ShowActive(Stage& stage, Report& report) {
  return ShowDisplays(stage, report, "Active", stage.exports().GetActiveDisplays);
}

int ShowMode(Stage& stage, Report& report) {
  LibrarySides sides(stage.exports(), Sides::kQueries);
  if (!sides.ready()) return NotReady(report);
  TellMode(stage, report);
  return ReadCurrentMode(stage.exports()).known ? kExitDone : kExitFailed;
}

int ShowVendor(Stage& stage, Report& report) {
  const uint32_t vendor = stage.exports().GetVgaVendor();
  report.Fact("Vendor", VendorWord(vendor), "vendor",
              {{"code", vendor}, {"name", VendorWord(vendor)}});
  return vendor == OSTREL_VENDOR_UNKNOWN ? kExitFailed : kExitDone;
}

int ShowCapability(Stage& stage, Report& report) {
  LibrarySides sides(stage.exports(), Sides::kQueries);
  if (!sides.ready()) return NotReady(report);
  const Exports& exports = stage.exports();
  const auto tell = [&report](const char* title, const char* key, bool yes) {
    report.Fact(title, yes ? "yes" : "no", key, yes);
  };
  tell("Dual output", "dual_output", exports.HasDualOutputCapability() != 0);
  tell("External", "external_connected", exports.HasExternalMonitorConnected() != 0);
  tell("Extended", "extended", exports.IsExtendModeEnabled() != 0);
  tell("May change", "permitted", exports.PermitToChangeMode() != 0);
  tell("Detects", "detection_valid", exports.DetectDisplayConnectedFeatureIsValid() != 0);
  return kExitDone;
}

int SetMode(Stage& stage, Report& report, uint32_t mode, uint32_t displays) {
  return ChangeMachine(stage, report, [mode, displays](const Exports& exports) {
    const bool accepted = exports.SetNewDisplayMode(mode, displays) != 0;
    if (mode == OSTREL_MODE_EXTEND) return accepted;
    // For other modes the export's result says nothing; what the machine is in now does.
    const CurrentMode now = ReadCurrentMode(exports);
    return now.known && now.mode == mode && now.displays == displays;
  });
}

int SetExtended(Stage& stage, Report& report, bool on) {
  return ChangeMachine(stage, report, [on](const Exports& exports) {
    return exports.EnableExtendMode(on ? 1U : 0U) != 0;
  });
}

int SetPanelOnly(Stage& stage, Report& report) {
  return ChangeMachine(stage, report, [](const Exports& exports) {
    return exports.ChangeToNBOnlySingleDisplayMode() != 0;
  });
}

int FlushSettings(Stage& stage, Report& report) {
  const bool deleted = stage.exports().FlushRememberedSettings() != 0;
  report.Fact("Remembered", deleted ? "forgotten" : "nothing to forget", "flushed", deleted);
  return deleted ? kExitDone : kExitFailed;
}
