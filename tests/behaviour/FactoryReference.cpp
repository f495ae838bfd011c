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
    {[](const FactoryCase& c) { return c.AsksWindowsAcross() && c.DisplayLinkThrows(); }, "throws",
     0, 0, true},
    {[](const FactoryCase& c) { return c.Nvidia() && c.script.nvidia == Start::kThrows; }, "throws",
     0, 0, true},
    {[](const FactoryCase& c) { return c.StartsDisplayLinkForIntel() && c.DisplayLinkThrows(); },
     "throws", 0, 0, true},
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

bool AsksDisplayLinkAcross(const FactoryCase& c) {
  return c.AsksWindowsAcross() && c.DisplayLink();
}
bool AsksWin7CcdAcross(const FactoryCase& c) { return c.AsksWindowsAcross() && !c.DisplayLink(); }

// Every row that fits adds its part.
const StartRow kStarts[] = {
    // May NVIDIA place displays across the Intel adapter?
    {[](const FactoryCase& c) { return c.Nvidia() && c.Seven(); }, "IntelMMImpl "},
    {[](const FactoryCase& c) { return c.Nvidia() && c.AsksNvidiaAcross(); }, "NvidiaMMImplV3 "},
    {AsksDisplayLinkAcross, "DisplayLinkWorkaroundImpl "},
    {AsksWin7CcdAcross, "Win7CCD "},
    {[](const FactoryCase& c) { return c.Across() && c.DisplayLink(); },
     "DisplayLinkWorkaroundImpl "},
    // Which of the two leads?
    {[](const FactoryCase& c) { return c.Probes(); }, "NvidiaMMImplV3 "},
    {[](const FactoryCase& c) { return c.StartsDisplayLinkForIntel(); },
     "DisplayLinkWorkaroundImpl "},
    // AMD.
    {[](const FactoryCase& c) { return c.Only(kAmd) && c.script.adl_qualifies; }, "ADLImpl "},
    {[](const FactoryCase& c) { return c.Amd(); }, "ADLImpl "},
};

// The questions again; what was chosen is there.
const StartRow kSecondStarts[] = {
    {[](const FactoryCase& c) { return c.Nvidia() && c.Seven(); }, "IntelMMImpl "},
    {[](const FactoryCase& c) { return c.Nvidia() && c.AsksNvidiaAcross(); }, "NvidiaMMImplV3 "},
    {AsksDisplayLinkAcross, "DisplayLinkWorkaroundImpl "},
    {AsksWin7CcdAcross, "Win7CCD "},
    {[](const FactoryCase& c) { return c.Probes() && !c.ProbeIsOver(); }, "NvidiaMMImplV3 "},
    // Nothing was chosen, since it did not get that far.
    {[](const FactoryCase& c) { return c.StartsDisplayLinkForIntel() && c.DisplayLinkThrows(); },
     "DisplayLinkWorkaroundImpl "},
    {[](const FactoryCase& c) {
       return c.Only(kAmd) && c.script.adl_qualifies && c.script.adl == Start::kThrows;
     },
     "ADLImpl "},
    {[](const FactoryCase& c) { return c.Amd(); }, "ADLImpl "},
};

// Who drives the panel now?
bool AsksNvidiaNow(const FactoryCase& c) {
  const std::vector<uint16_t> list = c.List(false);
  return list.size() >= 2 && std::count(list.begin(), list.end(), kNvidia) != 0;
}
bool AsksAmdNow(const FactoryCase& c) {
  const std::vector<uint16_t> list = c.List(false);
  return list.size() >= 2 && std::count(list.begin(), list.end(), kAmd) != 0 && !AsksNvidiaNow(c);
}
bool AsksWindowsNow(const FactoryCase& c) {
  return AsksNvidiaNow(c) && c.script.nvidia == Start::kWorks && c.script.discrete_only &&
         c.windows->order > kVista;
}
const StartRow kVendorChangeStarts[] = {
    {AsksNvidiaNow, "NvidiaMMImplV2 "},
    {[](const FactoryCase& c) { return AsksWindowsNow(c) && c.script.display_link_service; },
     "DisplayLinkWorkaroundImpl "},
    {[](const FactoryCase& c) { return AsksWindowsNow(c) && !c.script.display_link_service; },
     "Win7CCD "},
    {AsksAmdNow, "ADLImpl "},
};

template <size_t kRows>
std::string Sum(const StartRow (&rows)[kRows], const FactoryCase& c) {
  std::string starts;
  for (const StartRow& row : rows) {
    if (row.when(c)) starts += row.started;
  }
  return starts;
}

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

std::string StartsOf(const FactoryCase& c) { return Prefers(c) ? "" : Sum(kStarts, c); }

std::string SecondStartsOf(const FactoryCase& c) { return Prefers(c) ? "" : Sum(kSecondStarts, c); }

std::string VendorChangeStartsOf(const FactoryCase& c, bool changes, uint16_t vendor) {
  const bool starts_amd = changes && vendor == kAmd && c.script.adl_qualifies;
  return Sum(kVendorChangeStarts, c) + (starts_amd ? "ADLImpl " : "");
}

KeptState KeptStateOf(const FactoryCase& c) {
  const uint16_t active = AnswerOf(c).active;
  const bool chosen = active != kCcd && active != kHybrid;  // these two are nobody's
  if (Prefers(c)) return {0, false, true};
  return {chosen ? active : uint16_t{0}, c.Probes() && c.NvidiaWanted(), !c.ProbeIsOver()};
}

std::string LivingOf(const FactoryCase& c) {
  const std::string object = AnswerOf(c).object;
  if (object == "HybridController") {
    return c.DisplayLink() ? "NvidiaMMImplV3CrossAdapter DisplayLinkWorkaroundImpl "
                             "DisplayLinkWorkaroundImpl "
                           : "IntelMMImpl NvidiaMMImplV3CrossAdapter Win7CCD ";
  }
  // The object that threw has its place already.
  if (object == "throws" && c.StartsDisplayLinkForIntel()) return "DisplayLinkWorkaroundImpl ";
  const bool real = object == "none" || object == "throws" || object == "NullMonitorController";
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
    const Start start = c.script.display_link_service ? c.script.display_link : Start::kWorks;
    const bool asks_windows = c.windows->order > kVista && start != Start::kFails;
    *thrown = c.script.nvidia == Start::kThrows ||
              (c.script.nvidia == Start::kWorks && c.script.discrete_only && asks_windows &&
               (start == Start::kThrows || !c.Seven()));
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
