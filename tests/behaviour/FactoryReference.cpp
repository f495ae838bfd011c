#include "tests/behaviour/FactoryReference.h"

#include <algorithm>

namespace {

constexpr uint16_t kIntel = 0x8086;
constexpr uint16_t kNvidia = 0x10DE;
constexpr uint16_t kAmd = 0x1002;
constexpr uint16_t kCcd = 0x045E;
constexpr uint16_t kHybrid = 0xFFFF;

constexpr char kDisplayLink[] = "DisplayLinkWorkaroundImpl";

bool NoAdapter(const FactoryCase& c) { return c.List(true).empty(); }
bool Prefers(const FactoryCase& c) { return c.Seven() && c.prefer_ccd; }
bool AdlStarts(const FactoryCase& c) {
  return c.script.adl_qualifies && c.script.adl == Start::kWorks;
}

const AnswerRow kAnswers[] = {
    // The key.
    {[](const FactoryCase& c) { return Prefers(c) && c.DisplayLink(); }, kDisplayLink, kCcd, kCcd,
     true},
    {Prefers, "Win7CCD", kCcd, kCcd, true},
    // No adapter.
    {[](const FactoryCase& c) { return NoAdapter(c) && c.DisplayLink(); }, kDisplayLink, kCcd, 0,
     false},
    {[](const FactoryCase& c) { return NoAdapter(c) && c.Seven(); }, "Win7CCD", kCcd, 0, false},
    {NoAdapter, "NullMonitorController", 0, 0, false},
    // One.
    {[](const FactoryCase& c) { return c.Only(kIntel) && c.DisplayLink(); }, kDisplayLink, kCcd,
     kIntel, true},
    {[](const FactoryCase& c) { return c.Only(kIntel); }, "IntelMMImpl", kIntel, kIntel, true},
    {[](const FactoryCase& c) { return c.Only(kNvidia) && c.windows->order >= k2008; },
     "NvidiaMMImplV3", kNvidia, kNvidia, true},
    {[](const FactoryCase& c) { return c.Only(kNvidia) && c.windows->order >= kServer2003; },
     "NvidiaMMImplV2", kNvidia, kNvidia, true},
    {[](const FactoryCase& c) { return c.Only(kNvidia); }, "NvidiaMMImpl", kNvidia, kNvidia, true},
    {[](const FactoryCase& c) {
       return c.Only(kAmd) && c.script.adl_qualifies && c.script.adl == Start::kThrows;
     },
     "none", 0, kAmd, true},
    {[](const FactoryCase& c) { return c.Only(kAmd) && AdlStarts(c); }, "ADLImpl", kAmd, kAmd,
     true},
    {[](const FactoryCase& c) { return c.Only(kAmd); }, "AtiMMImpl", kAmd, kAmd, true},
    // Several, with NVIDIA.
    {[](const FactoryCase& c) { return c.Nvidia() && c.script.nvidia == Start::kThrows; }, "throws",
     0, 0, true},
    {[](const FactoryCase& c) { return c.Across(); }, "HybridController", kHybrid, kHybrid, true},
    {[](const FactoryCase& c) { return c.Nvidia() && c.NvidiaWanted(); }, "NvidiaMMImplV3", kNvidia,
     kNvidia, true},
    {[](const FactoryCase& c) { return c.Nvidia() && c.DisplayLink(); }, kDisplayLink, kCcd, kIntel,
     true},
    {[](const FactoryCase& c) { return c.Nvidia(); }, "IntelMMImpl", kIntel, kIntel, true},
    // Several, with AMD.
    {[](const FactoryCase& c) { return c.Amd() && c.script.adl == Start::kThrows; }, "throws", 0, 0,
     true},
    {[](const FactoryCase& c) { return c.Amd() && c.script.adl == Start::kWorks; }, "ADLImpl", kAmd,
     kAmd, true},
    {[](const FactoryCase& c) { return c.Amd() && c.DisplayLink(); }, kDisplayLink, kCcd, kIntel,
     true},
    {[](const FactoryCase& c) { return c.Amd(); }, "IntelMMImpl", kIntel, kIntel, true},
    // Several of Intel.
    {[](const FactoryCase&) { return true; }, "NullMonitorController", 0, 0, false},
};

struct StartRow {
  bool (*when)(const FactoryCase& c);
  const char* started;
};

bool ReachesAdapters(const FactoryCase& c) { return !Prefers(c); }

// Every row that fits adds its part.
const StartRow kStarts[] = {
    // May NVIDIA place displays across the Intel adapter?
    {[](const FactoryCase& c) { return c.Nvidia() && c.Seven(); }, "IntelMMImpl "},
    {[](const FactoryCase& c) { return c.Nvidia() && c.AsksNvidiaAcross(); }, "NvidiaMMImplV3 "},
    {[](const FactoryCase& c) {
       return c.Nvidia() && c.AsksNvidiaAcross() && c.script.nvidia == Start::kWorks &&
              c.DisplayLink();
     },
     "DisplayLinkWorkaroundImpl "},
    {[](const FactoryCase& c) { return c.Across() && c.DisplayLink(); },
     "DisplayLinkWorkaroundImpl "},
    // Which of the two leads?
    {[](const FactoryCase& c) { return c.Nvidia() && !c.Across(); }, "NvidiaMMImplV3 "},
    {[](const FactoryCase& c) {
       return c.Nvidia() && !c.Across() && c.script.nvidia != Start::kThrows && !c.NvidiaWanted() &&
              c.IntelInHand() && c.DisplayLink();
     },
     "DisplayLinkWorkaroundImpl "},
    // AMD.
    {[](const FactoryCase& c) { return c.Only(kAmd) && c.script.adl_qualifies; }, "ADLImpl "},
    {[](const FactoryCase& c) { return c.Amd(); }, "ADLImpl "},
};

}  // namespace

std::vector<uint16_t> FactoryCase::List(bool include_root_enumerated) const {
  std::vector<uint16_t> listed;
  uint16_t predecessor = 0;
  for (const Card card : cards) {
    const CardRow& row = kCards[static_cast<size_t>(card)];
    if (row.disabled || (row.root_enumerated && !include_root_enumerated)) continue;
    const bool repeated = row.vendor == predecessor;
    predecessor = row.vendor;
    const bool counts = row.vendor == kIntel || row.vendor == kNvidia || row.vendor == kAmd;
    if (!repeated && counts) listed.push_back(row.vendor);
  }
  return listed;
}

bool FactoryCase::TwoWith(uint16_t vendor) const {
  const std::vector<uint16_t> list = List(true);
  return list.size() >= 2 && std::find(list.begin(), list.end(), vendor) != list.end();
}

std::string FactoryCase::Text() const {
  static constexpr const char* kStartNames[] = {"works", "fails", "throws", "throws bad_cast"};
  const auto start = [](Start s) { return std::string(kStartNames[static_cast<size_t>(s)]); };
  std::string text = std::string(windows->word) + " [";
  for (const Card card : cards) text += std::string(" ") + kCards[static_cast<size_t>(card)].name;
  text += " ]";
  if (prefer_ccd) text += " key";
  if (script.display_link_service) text += " DisplayLink " + start(script.display_link);
  if (two_active) text += " two-active";
  text += "; Intel " + start(script.intel) + (script.intel_has_hdmi ? " hdmi" : "");
  text += "; NVIDIA " + start(script.nvidia);
  if (script.discrete_only) text += " discrete";
  if (script.could_manage) text += " could-manage";
  if (script.cross_adapter_capable) text += " cross-capable";
  text += " mode=" + (script.adapter_mode ? std::to_string(*script.adapter_mode) : "-");
  text += "; ADL " + start(script.adl) + (script.adl_qualifies ? " qualifies" : "");
  return text;
}

const AnswerRow& AnswerOf(const FactoryCase& c) {
  return *std::find_if(std::begin(kAnswers), std::end(kAnswers),
                       [&c](const AnswerRow& row) { return row.when(c); });
}

std::string StartsOf(const FactoryCase& c) {
  std::string starts;
  if (!ReachesAdapters(c)) return starts;
  for (const StartRow& row : kStarts) {
    if (row.when(c)) starts += row.started;
  }
  return starts;
}

std::string LivingOf(const FactoryCase& c) {
  const std::string object = AnswerOf(c).object;
  if (object == "HybridController") {
    return c.DisplayLink() ? "NvidiaMMImplV3CrossAdapter DisplayLinkWorkaroundImpl "
                             "DisplayLinkWorkaroundImpl "
                           : "IntelMMImpl NvidiaMMImplV3CrossAdapter ";
  }
  const bool real = object == "none" || object == "throws" || object == "Win7CCD" ||
                    object == "NullMonitorController";
  return real ? "" : object + " ";
}

uint16_t ActiveVendorOf(const FactoryCase& c, bool* thrown) {
  const std::vector<uint16_t> list = c.List(false);
  const auto lists = [&list](uint16_t vendor) {
    return std::find(list.begin(), list.end(), vendor) != list.end();
  };
  *thrown = false;
  if (list.empty()) return 0;
  if (list.size() == 1) return list[0];
  if (lists(kNvidia)) {
    // From 2008 on Windows is asked, but it is Windows 7 that can answer.
    const bool refused = c.script.display_link_service && c.script.display_link != Start::kWorks;
    const bool asks_windows = c.windows->order > kVista && !refused;
    *thrown =
        c.script.nvidia == Start::kThrows ||
        (c.script.nvidia == Start::kWorks && c.script.discrete_only && asks_windows && !c.Seven());
    if (c.script.nvidia != Start::kWorks) return kIntel;
    if (!c.script.discrete_only) return c.ModeNamesNvidia() ? kNvidia : kIntel;
    return (asks_windows ? c.two_active : c.script.could_manage) ? kNvidia : kIntel;
  }
  if (lists(kAmd)) {
    *thrown = c.script.adl == Start::kThrows;
    return c.script.adl == Start::kWorks ? kAmd : kIntel;
  }
  return 0;  // Intel's only
}

std::string ObjectByVendor(const FactoryCase& c, uint16_t vendor) {
  FactoryCase alone = c;
  alone.prefer_ccd = false;
  switch (vendor) {
    case kIntel:
      alone.cards = {Card::kIntel};
      break;
    case kNvidia:
      alone.cards = {Card::kNvidia};
      break;
    case kAmd:
      alone.cards = {Card::kAmd};
      break;
    default:
      return "none";
  }
  return AnswerOf(alone).object;
}
