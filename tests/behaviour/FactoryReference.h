// Which object answers on which machine, as tables of rules: what the factory is compared with.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/StandInBackends.h"

/// Windows versions by the order that the factory's rules use.
struct WindowsRow {
  const char* word;  // of the machine's short form
  int order;
};
inline void PrintTo(const WindowsRow& row, std::ostream* out) { *out << row.word; }
constexpr int kServer2003 = 3;
constexpr int kVista = 4;
constexpr int k2008 = 5;
constexpr int kWin7 = 6;
constexpr WindowsRow kWindowsRows[] = {
    {"xp", 2},         {"2003", kServer2003}, {"vista", kVista}, {"2008", k2008},
    {"2008r2", k2008}, {"win7", kWin7},       {"win8", 7},       {"win10", 8},
};

/// What stands in the machine's device list.
enum class Card {
  kIntel,
  kNvidia,
  kAmd,
  kSis,
  kDisabledNvidia,
  kRootIntel,
  kDisabledIntel,
  kRootNvidia,
};
struct CardRow {
  const char* name;
  const char* hardware_id;
  uint16_t vendor;
  bool disabled;
  bool root_enumerated;
};
constexpr CardRow kCards[] = {
    {"Intel", "PCI\\VEN_8086&DEV_0166", 0x8086, false, false},
    {"NVIDIA", "PCI\\VEN_10DE&DEV_0DF4", 0x10DE, false, false},
    {"AMD", "PCI\\VEN_1002&DEV_6841", 0x1002, false, false},
    {"SiS", "PCI\\VEN_1039&DEV_6330", 0x1039, false, false},
    {"NVIDIA(disabled)", "PCI\\VEN_10DE&DEV_0DF4", 0x10DE, true, false},
    {"Intel(root)", "ROOT\\VEN_8086&DEV_0000", 0x8086, false, true},
    {"Intel(disabled)", "PCI\\VEN_8086&DEV_0166", 0x8086, true, false},
    {"NVIDIA(root)", "ROOT\\VEN_10DE&DEV_0000", 0x10DE, false, true},
};
using Cards = std::vector<Card>;

/// A machine in a state, before the factory is asked for the first time.
struct FactoryCase {
  const WindowsRow* windows = nullptr;
  Cards cards;
  bool prefer_ccd = false;
  bool two_active = false;  // Windows has displays on two adapters
  BackendScript script;

  std::vector<uint16_t> List(bool include_root_enumerated) const;
  std::string Text() const;

  // --- What the rules are made of.
  bool Seven() const { return windows->order >= kWin7; }
  bool Only(uint16_t vendor) const { return List(true) == std::vector<uint16_t>{vendor}; }
  bool TwoWith(uint16_t vendor) const;
  bool Nvidia() const { return TwoWith(0x10DE); }
  bool Amd() const { return TwoWith(0x1002) && !Nvidia(); }
  bool DisplayLink() const { return Seven() && script.display_link_service; }
  bool DisplayLinkThrows() const { return DisplayLink() && script.display_link == Start::kThrows; }
  /// The probe has an Intel object in hand.
  bool IntelInHand() const { return Seven() && script.intel != Start::kFails; }
  bool AsksNvidiaAcross() const {
    return Seven() && script.intel == Start::kWorks && !script.intel_has_hdmi;
  }
  bool SeesTwo() const {
    return two_active && !(DisplayLink() && script.display_link != Start::kWorks);
  }
  bool Across() const {
    return Nvidia() && AsksNvidiaAcross() && script.nvidia == Start::kWorks &&
           !DisplayLinkThrows() &&
           (SeesTwo() || (script.discrete_only && script.cross_adapter_capable));
  }
  /// Windows is asked how many adapters have displays.
  bool AsksWindowsAcross() const {
    return Nvidia() && AsksNvidiaAcross() && script.nvidia == Start::kWorks;
  }
  /// It is asked which of the two leads.
  bool Probes() const {
    return Nvidia() && !Across() && !(AsksWindowsAcross() && DisplayLinkThrows());
  }
  /// NVIDIA's library has answered the first question, and is not asked again.
  bool ProbeIsOver() const {
    return Probes() && script.nvidia == Start::kWorks && script.discrete_only;
  }
  bool ModeNamesNvidia() const { return script.adapter_mode == 1u || script.adapter_mode == 3u; }
  bool NvidiaWanted() const {
    if (script.nvidia != Start::kWorks) return false;
    if (!script.discrete_only) return ModeNamesNvidia();
    return script.could_manage && !(IntelInHand() && script.intel_has_hdmi);
  }
  /// Intel is chosen, and its object in hand gives way to the DisplayLink one.
  bool StartsDisplayLinkForIntel() const {
    return Probes() && script.nvidia != Start::kThrows && !NvidiaWanted() && IntelInHand() &&
           DisplayLink();
  }
};

struct AnswerRow {
  bool (*when)(const FactoryCase& c);
  const char* object;  // "none", "throws", or the class
  uint32_t vendor;     // its GetVgaVendor
  uint16_t active;     // what counts as the active vendor then
  bool saved;          // the next call gives the same one
};

/// The first row that fits is the answer.
const AnswerRow& AnswerOf(const FactoryCase& c);
/// Whose Initial has been called by then, in order, each with a blank behind it.
std::string StartsOf(const FactoryCase& c);
/// The same for a second call.
std::string SecondStartsOf(const FactoryCase& c);
/// The same for a look at the active vendor behind them, which then changes to `vendor`, or stays.
std::string VendorChangeStartsOf(const FactoryCase& c, bool changes, uint16_t vendor);
/// The objects that are there behind the first call, beside those without a library: each with a
/// blank behind it.
std::string LivingOf(const FactoryCase& c);

/// What the factory keeps behind either call: the vendor that it chose, that NVIDIA leads, and that
/// the question is still open.
struct KeptState {
  uint16_t factory_vendor;
  bool use_nvidia_on_hybrid;
  bool probe_nvidia;
};
KeptState KeptStateOf(const FactoryCase& c);

/// The vendor that drives the panel; "throws" is told by `thrown`.
uint16_t ActiveVendorOf(const FactoryCase& c, bool* thrown);
/// The class of a new object for a vendor, as CreateIMMonitorByVendor makes it.
std::string ObjectByVendor(const FactoryCase& c, uint16_t vendor);
