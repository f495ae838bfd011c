// The factory on every machine that the tables of FactoryReference.h can tell apart.
#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/FactoryReference.h"
#include "tests/support/StandInBackends.h"

namespace {

constexpr size_t kListed = 3;  // adapters in the device list; two more drive the displays

/// The white-box build on a machine whose adapters and back-ends change from case to case. What the
/// library keeps from its load on, Windows and the configuration, stays.
class ModelHost {
 public:
  ModelHost(const WindowsRow& windows, bool prefer_ccd)
      : machine_(std::string(windows.word) +
                 " intel*1, intel*1, intel*1, intel*1, intel*1: internal@4 1366x768 active, "
                 "crt@5 1024x768") {
    if (prefer_ccd) machine_.Config("Settings", "Prefer Windows 7 CCD API", 1);
    for (size_t i = kListed; i < kListed + 2; ++i) machine_.model().adapters[i].enumerated = false;
    crt_ = machine_.model().connectors[1].monitor;
    library_ = std::make_unique<sim::Library>(machine_, sim::Library::Build::kWhiteBox);
    factory_ = library_->white_box().factory;
    backends_ = std::make_unique<StandInBackends>(factory_, true);
    backends_->traces = false;
  }

  /// What is wrong with the library in that case; "" when nothing is.
  std::string Run(const FactoryCase& c) {
    const int64_t before = Prepare(c);
    std::string wrong = Compare(c);
    factory_->Reset();
    backends_->Forget();
    if (!backends_->Living().empty()) wrong += "not ended: " + backends_->Living() + "\n";
    wrong += backends_->complaints();
    if (wrong.empty() && factory_->PiecesOut() != before) wrong = CompareMemory(c);
    return wrong;
  }

 private:
  int64_t Prepare(const FactoryCase& c) {
    sim::Model& model = machine_.model();
    for (size_t i = 0; i < kListed; ++i) {
      sim::Adapter& adapter = model.adapters[i];
      adapter.enumerated = i < c.cards.size();
      if (!adapter.enumerated) continue;
      const CardRow& row = kCards[static_cast<size_t>(c.cards[i])];
      adapter.hardware_id = row.hardware_id;
      adapter.disabled = row.disabled;
      adapter.root_enumerated = row.root_enumerated;
    }
    model.connectors[1].monitor = c.two_active ? crt_ : std::nullopt;
    backends_->script = c.script;
    factory_->Reset();
    backends_->TakeStarts();
    return factory_->PiecesOut();
  }

  IMMonitor* Ask(bool* thrown) {
    *thrown = false;
    try {
      return factory_->GetMultiMonitorObject();
    } catch (...) {
      *thrown = true;
      return nullptr;
    }
  }

  std::string Compare(const FactoryCase& c) {
    const AnswerRow& answer = AnswerOf(c);
    bool thrown = false;
    IMMonitor* const object = Ask(&thrown);
    std::string wrong;
    const auto expect = [&wrong](const char* what, const std::string& is,
                                 const std::string& should) {
      if (is != should) wrong += std::string(what) + ": " + is + " instead of " + should + "\n";
    };
    expect("object", thrown ? "throws" : NameOf(object), answer.object);
    expect("started", backends_->TakeStarts(), StartsOf(c));
    expect("there", backends_->Living(), LivingOf(c));
    expect("active vendor", std::to_string(factory_->ActiveVendor()),
           std::to_string(answer.active));
    expect("kept", KeptNow(), KeptText(KeptStateOf(c)));
    if (object != nullptr) {
      expect("vendor", std::to_string(object->GetVgaVendor()), std::to_string(answer.vendor));
    }
    IMMonitor* const again = Ask(&thrown);
    expect("the same at the second call", object == again ? "yes" : "no",
           answer.saved ? "yes" : "no");
    expect("class at the second call", thrown ? "throws" : NameOf(again), answer.object);
    expect("started at the second call", backends_->TakeStarts(), SecondStartsOf(c));
    expect("kept behind the second call", KeptNow(), KeptText(KeptStateOf(c)));
    CompareVendorChange(c, answer, expect);
    return wrong;
  }

  static std::string KeptText(const KeptState& kept) {
    return std::to_string(kept.factory_vendor) + (kept.use_nvidia_on_hybrid ? " nvidia" : "") +
           (kept.probe_nvidia ? " open" : "");
  }
  std::string KeptNow() const {
    const FactoryState state = factory_->State();
    return KeptText(
        {state.factory_vendor, state.use_nvidia_on_hybrid != 0, state.probe_nvidia != 0});
  }

  template <typename Expect>
  void CompareVendorChange(const FactoryCase& c, const AnswerRow& answer, const Expect& expect) {
    const bool looks = answer.active != 0xFFFF && !(c.Seven() && c.prefer_ccd);
    bool should_throw = false;
    const uint16_t vendor = looks ? ActiveVendorOf(c, &should_throw) : answer.active;
    const bool changes = !should_throw && vendor != answer.active;

    IMMonitor* const before = factory_->ActiveMonitor();
    const std::string name = NameOf(before);
    bool thrown = false;
    try {
      factory_->OnActiveDisplayAdapterVendorChanged();
    } catch (...) {
      thrown = true;
    }
    IMMonitor* const after = factory_->ActiveMonitor();
    expect("vendor change throws", thrown ? "yes" : "no", should_throw ? "yes" : "no");
    expect("started by the vendor change", backends_->TakeStarts(),
           looks ? VendorChangeStartsOf(c, changes, vendor) : "");
    expect("object behind the vendor change", NameOf(after),
           changes ? ObjectByVendor(c, vendor) : name);
    if (!changes) expect("object stays", before == after ? "yes" : "no", "yes");
    expect("active vendor behind the change", std::to_string(factory_->ActiveVendor()),
           std::to_string(changes ? vendor : answer.active));
  }

  // What is kept from the first use on is no leak: the second run of a case adds nothing.
  std::string CompareMemory(const FactoryCase& c) {
    const int64_t before = Prepare(c);
    Compare(c);
    factory_->Reset();
    backends_->Forget();
    const int64_t after = factory_->PiecesOut();
    return after == before
               ? ""
               : "memory: " + std::to_string(after - before) + " pieces not given back\n";
  }

  sim::Machine machine_;
  std::optional<sim::Monitor> crt_;  // the display of the second adapter
  std::unique_ptr<sim::Library> library_;
  const FactoryBox* factory_ = nullptr;
  std::unique_ptr<StandInBackends> backends_;
};

std::vector<Cards> AllLists() {
  std::vector<Cards> lists = {{}};
  for (size_t from = 0, length = 1; length <= kListed; ++length) {
    const size_t to = lists.size();
    for (; from < to; ++from) {
      for (size_t card = 0; card < std::size(kCards); ++card) {
        lists.push_back(lists[from]);
        lists.back().push_back(static_cast<Card>(card));
      }
    }
  }
  return lists;
}

// --- How the libraries may answer, for as many of them as a list of adapters gets to ask.

using Scripts = std::vector<BackendScript>;

Scripts EachNvidia(const BackendScript& base) {
  Scripts scripts;
  const auto add = [&](const auto& change) {
    scripts.push_back(base);
    change(scripts.back());
  };
  add([](BackendScript& s) { s.nvidia = Start::kFails; });
  add([](BackendScript& s) { s.nvidia = Start::kThrows; });
  for (const bool could : {false, true}) {
    for (const bool capable : {false, true}) {
      add([&](BackendScript& s) {
        s.discrete_only = true;
        s.could_manage = could;
        s.cross_adapter_capable = capable;
      });
    }
  }
  add([](BackendScript& s) { s.cross_adapter_capable = s.could_manage = true; });
  for (const uint32_t mode : {0u, 1u, 2u, 3u}) {
    add([&](BackendScript& s) { s.adapter_mode = mode; });
  }
  return scripts;
}

// Below Windows 7 nobody asks Intel's library: one answer, and one that would show.
Scripts WithNvidia(const BackendScript& base, bool seven) {
  Scripts scripts;
  const auto add = [&](Start intel, bool hdmi) {
    BackendScript script = base;
    script.intel = intel;
    script.intel_has_hdmi = hdmi;
    const Scripts all = EachNvidia(script);
    scripts.insert(scripts.end(), all.begin(), all.end());
  };
  add(Start::kWorks, false);
  add(Start::kThrows, true);
  if (!seven) return scripts;
  add(Start::kWorks, true);
  add(Start::kFails, false);
  add(Start::kThrows, false);
  return scripts;
}

Scripts WithAmd(const BackendScript& base) {
  Scripts scripts;
  for (const bool qualifies : {false, true}) {
    for (const Start adl : {Start::kWorks, Start::kFails, Start::kThrows}) {
      scripts.push_back(base);
      scripts.back().adl_qualifies = qualifies;
      scripts.back().adl = adl;
    }
  }
  return scripts;
}

/// All that answers, and nothing that does.
Scripts Extremes(const BackendScript& base) {
  BackendScript works = base;
  works.discrete_only = works.could_manage = works.cross_adapter_capable = true;
  works.adapter_mode = 1;
  BackendScript fails = base;
  fails.intel = fails.nvidia = fails.adl = Start::kFails;
  fails.adl_qualifies = false;
  return {works, fails};
}

/// Every combination of answers that these adapters' libraries may give.
Scripts AllScripts(const FactoryCase& c) {
  const BackendScript& base = c.script;
  if (c.Nvidia()) return WithNvidia(base, c.Seven());
  if (c.Amd() || c.Only(0x1002)) return WithAmd(base);
  return Extremes(base);
}

// --- The DisplayLink service.

struct LinkRow {
  const char* name;
  bool service;
  Start start;
};
constexpr LinkRow kLinks[] = {{"NoDisplayLink", false, Start::kWorks},
                              {"DisplayLink", true, Start::kWorks},
                              {"DisplayLinkFails", true, Start::kFails},
                              {"DisplayLinkThrows", true, Start::kThrows}};

struct ModelRow {
  WindowsRow windows;
  LinkRow link;
};
void PrintTo(const ModelRow& row, std::ostream* out) { *out << row.windows.word; }

// Up to Vista there is nobody to start a DisplayLink object.
std::vector<ModelRow> ModelRows() {
  std::vector<ModelRow> rows;
  for (const WindowsRow& windows : kWindowsRows) {
    for (const LinkRow& link : kLinks) {
      if (windows.order >= k2008 || link.start == Start::kWorks) rows.push_back({windows, link});
    }
  }
  return rows;
}

/// The cases of one Windows and one state of DisplayLink, but for these, which tell nothing new:
///  - Lists that look alike: all that the factory knows of the adapters is the list with, and the
///    list without, root-enumerated ones. The first list of each such pair meets every combination
///    of answers, the others the best and the worst one, with displays on two adapters.
///  - Windows 8 and Server 2008 R2, with a neighbour each that the rules take for the same: lists
///  of
///    three meet those two answers there.
///  - The key: on Windows 7 no library is asked behind it, so that it meets those two as well;
///    below it counts for nothing, which lists of up to two show.
///  - Displays on one adapter alone while the DisplayLink object does not start: Windows is asked
///    through it, so that it cannot be told from displays on two.
class ModelRun {
 public:
  ModelRun(const ModelRow& row, bool prefer_ccd)
      : host_(row.windows, prefer_ccd),
        row_(row),
        has_twin_(row.windows.word == std::string("win8") ||
                  row.windows.word == std::string("2008r2")) {
    case_.windows = &row_.windows;
    case_.prefer_ccd = prefer_ccd;
  }

  void RunAll(const std::vector<Cards>& lists) {
    for (const Cards& cards : lists) {
      case_.cards = cards;
      const bool is_first = seen_.emplace(case_.List(true), case_.List(false)).second;
      if (case_.prefer_ccd && !case_.Seven() && cards.size() > 2) continue;
      BackendScript base;
      base.display_link_service = row_.link.service;
      base.display_link = row_.link.start;
      case_.script = base;
      const bool whole = is_first && !case_.prefer_ccd && (cards.size() <= 2 || !has_twin_);
      RunScripts(whole ? AllScripts(case_) : Extremes(base), whole);
    }
  }
  uint32_t count() const { return count_; }

 private:
  void RunScripts(const Scripts& scripts, bool whole) {
    for (const BackendScript& script : scripts) {
      case_.script = script;
      for (const bool two_active : {false, true}) {
        // Windows that has no functions to tell is not asked.
        const bool can_tell = row_.windows.order >= k2008;
        if (two_active && !can_tell) continue;
        if (!two_active && can_tell && !(whole && row_.link.start == Start::kWorks)) continue;
        case_.two_active = two_active;
        Run();
      }
    }
  }

  void Run() {
    ++count_;
    const std::string wrong = host_.Run(case_);
    if (!wrong.empty() && ++wrong_ <= kShown) ADD_FAILURE() << case_.Text() << "\n" << wrong;
  }

  static constexpr uint32_t kShown = 5;
  ModelHost host_;
  const ModelRow row_;
  const bool has_twin_;
  std::set<std::pair<std::vector<uint16_t>, std::vector<uint16_t>>> seen_;
  FactoryCase case_;
  uint32_t count_ = 0;
  uint32_t wrong_ = 0;
};

class FactoryModel : public testing::TestWithParam<ModelRow> {};

TEST_P(FactoryModel, AnswersAsTheTableSays) {
  const std::vector<Cards> lists = AllLists();
  ASSERT_EQ(lists.size(), 1u + 8 + 64 + 512);
  uint32_t count = 0;
  for (const bool prefer_ccd : {false, true}) {
    ModelRun run(GetParam(), prefer_ccd);
    run.RunAll(lists);
    count += run.count();
  }
  RecordProperty("cases", static_cast<int>(count));
  EXPECT_GE(count, 2 * lists.size());
}

INSTANTIATE_TEST_SUITE_P(Windows, FactoryModel, testing::ValuesIn(ModelRows()),
                         [](const testing::TestParamInfo<ModelRow>& info) {
                           return std::string(info.param.windows.word) + info.param.link.name;
                         });

}  // namespace
