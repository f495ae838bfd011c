// The factory on every machine that the tables of FactoryReference.h can tell apart.
#include <gtest/gtest.h>

#include <cstdio>

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
    backends_ = std::make_unique<StandInBackends>(factory_);
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
    if (object != nullptr) {
      expect("vendor", std::to_string(object->GetVgaVendor()), std::to_string(answer.vendor));
    }
    IMMonitor* const again = Ask(&thrown);
    expect("the same at the second call", object == again ? "yes" : "no",
           answer.saved ? "yes" : "no");
    expect("class at the second call", thrown ? "throws" : NameOf(again), answer.object);
    CompareVendorChange(c, answer, expect);
    return wrong;
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

Scripts EachNvidia(const BackendScript& base, bool with_throws) {
  Scripts scripts;
  const auto add = [&](const auto& change) {
    scripts.push_back(base);
    change(scripts.back());
  };
  add([](BackendScript& s) { s.nvidia = Start::kFails; });
  if (with_throws) add([](BackendScript& s) { s.nvidia = Start::kThrows; });
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

Scripts WithNvidia(const BackendScript& base, bool with_throws) {
  Scripts scripts;
  const auto add = [&](Start intel, bool hdmi) {
    BackendScript script = base;
    script.intel = intel;
    script.intel_has_hdmi = hdmi;
    const Scripts all = EachNvidia(script, with_throws);
    scripts.insert(scripts.end(), all.begin(), all.end());
  };
  add(Start::kWorks, false);
  add(Start::kWorks, true);
  add(Start::kFails, false);
  if (with_throws) add(Start::kThrows, false);
  if (with_throws) add(Start::kThrows, true);
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

Scripts ScriptsFor(const FactoryCase& c) {
  const BackendScript& base = c.script;
  if (c.Seven() && c.prefer_ccd) return Extremes(base);
  if (c.Nvidia()) return WithNvidia(base, c.cards.size() <= 2);
  if (c.Amd() || c.Only(0x1002)) return WithAmd(base);
  return Extremes(base);
}

/// The cases that differ in nothing but the libraries.
class ModelRun {
 public:
  ModelRun(const WindowsRow& windows, bool prefer_ccd) : host_(windows, prefer_ccd) {
    case_.windows = &windows;
    case_.prefer_ccd = prefer_ccd;
  }

  void RunAll(const std::vector<Cards>& lists) {
    for (const Cards& cards : lists) {
      // Below Windows 7 the key is nothing: that takes no long lists to see.
      if (case_.prefer_ccd && !case_.Seven() && cards.size() > 2) continue;
      case_.cards = cards;
      for (const bool service : {false, true}) {
        BackendScript base;
        base.display_link_service = service;
        RunList(base);
        base.display_link = Start::kFails;
        if (service && cards.size() <= 2) RunList(base);
      }
    }
  }
  uint32_t count() const { return count_; }

 private:
  void RunList(const BackendScript& base) {
    case_.script = base;
    for (const BackendScript& script : ScriptsFor(case_)) {
      case_.script = script;
      for (const bool two_active : {false, true}) {
        // Windows that has no functions to tell is not asked.
        if (two_active && case_.windows->order < k2008) continue;
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
  FactoryCase case_;
  uint32_t count_ = 0;
  uint32_t wrong_ = 0;
};

class FactoryModel : public testing::TestWithParam<WindowsRow> {};

TEST_P(FactoryModel, AnswersAsTheTableSays) {
  const std::vector<Cards> lists = AllLists();
  uint32_t count = 0;
  for (const bool prefer_ccd : {false, true}) {
    ModelRun run(GetParam(), prefer_ccd);
    run.RunAll(lists);
    count += run.count();
  }
  std::printf("%u cases\n", count);
  EXPECT_GT(count, 8000u);
}

std::string WordOf(const testing::TestParamInfo<WindowsRow>& info) { return info.param.word; }

INSTANTIATE_TEST_SUITE_P(Windows, FactoryModel, testing::ValuesIn(kWindowsRows), WordOf);

}  // namespace
