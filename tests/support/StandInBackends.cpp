#include "tests/support/StandInBackends.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <typeinfo>

namespace {

StandInBackends* g_current = nullptr;

struct BackendRow {
  const char* name;
  uint32_t vendor;
};

// In the order of Backend.
constexpr BackendRow kRows[kBackends] = {
    {"IntelMMImpl", kVendorIntel},
    {"ADLImpl", kVendorAmd},
    {"AtiMMImpl", kVendorAmd},
    {"SisMMImpl", kVendorSis},
    {"ViaMMImpl", kVendorVia},
    {"NvidiaMMImpl", kVendorNvidia},
    {"NvidiaMMImplV2", kVendorNvidia},
    {"NvidiaMMImplV3", kVendorNvidia},
    {"NvidiaMMImplV3CrossAdapter", kVendorNvidia},
    {"DisplayLinkWorkaroundImpl", kVendorWin7CCD},
    {"Win7CCD", kVendorWin7CCD},
};

const BackendRow& RowOf(Backend backend) { return kRows[static_cast<size_t>(backend)]; }

const BackendScript& Script() { return StandInBackends::Current().script; }

Start StartOf(Backend backend) {
  const BackendScript& script = Script();
  switch (backend) {
    case Backend::kIntelMMImpl:
      return script.intel;
    case Backend::kADLImpl:
      return script.adl;
    case Backend::kDisplayLinkWorkaroundImpl:
      return script.display_link;
    default:
      return RowOf(backend).vendor == kVendorNvidia ? script.nvidia : Start::kWorks;
  }
}

/// What lies where a stand-in was: every use of it is told.
class Corpse : public IMMonitor {
 public:
  ~Corpse() override { Tell("deleted again"); }
  BOOL Initial() override { return Tell(); }
  BOOL GetConnectedDisplays(uint32_t*, uint32_t*) override { return Tell(); }
  BOOL GetActiveDisplays(uint32_t*, uint32_t*) override { return Tell(); }
  BOOL GetCurrentDisplayMode(uint32_t*, uint32_t*) override { return Tell(); }
  BOOL SetNewDisplayMode(uint32_t, uint32_t) override { return Tell(); }
  void DetectDisplays() override { Tell(); }
  void PreloadDisplayModes() override { Tell(); }
  BOOL IsExtendModeEnabled() override { return Tell(); }
  BOOL EnableExtendModeOnDisplays(BOOL, uint32_t) override { return Tell(); }
  BOOL EnableExtendMode(BOOL) override { return Tell(); }
  BOOL ChangeToNBOnlySingleDisplayMode() override { return Tell(); }
  BOOL HasDualOutputCapability() override { return Tell(); }
  BOOL HasDisplaySwitchingCapability() override { return Tell(); }
  BOOL ShouldResetDisplaySettingAfterSwtich() override { return Tell(); }
  uint32_t GetVgaVendor() override { return static_cast<uint32_t>(Tell()); }
  bool GetDisplaySettings(uint32_t, DEVMODEA*) override { return Tell() != 0; }
  // The memory stays until the tests give it back.
  static void operator delete(void*) {}

 private:
  static BOOL Tell(const char* text = "used after its end") {
    StandInBackends::Current().Complain(text);
    return 0;
  }
};

/// What all stand-ins have in common.
class StandInMark {
 public:
  explicit StandInMark(Backend backend) : backend_(backend) {
    StandInBackends::Current().NoteMade(backend);
  }
  virtual ~StandInMark() { StandInBackends::Current().NoteEnded(backend_); }
  StandInMark(const StandInMark&) = delete;
  StandInMark& operator=(const StandInMark&) = delete;
  Backend backend() const { return backend_; }

 private:
  const Backend backend_;
};

template <typename Fake>
class StandIn : public Fake, public StandInMark {
 public:
  explicit StandIn(Backend backend)
      : Fake(StandInBackends::Current().operations), StandInMark(backend) {}
  BOOL Initial() override {
    return StandInBackends::Current().NoteStart(backend(), StartOf(backend()));
  }
  void DetectDisplays() override { StandInBackends::Current().Note(backend(), "DetectDisplays"); }
  uint32_t GetVgaVendor() override { return RowOf(backend()).vendor; }
  static void operator delete(void* memory) { StandInBackends::Current().Bury(memory); }
};

class NvidiaStandIn : public StandIn<FakeNvidiaMonitor> {
 public:
  using StandIn::StandIn;
  bool IsDiscreteOnly() override {
    StandInBackends::Current().Note(backend(), "IsDiscreteOnly");
    return Script().discrete_only;
  }
  bool IsCrossAdapterCapable() override {
    StandInBackends::Current().Note(backend(), "IsCrossAdapterCapable");
    return Script().cross_adapter_capable;
  }
};

/// True for a maker that is to give null.
bool MakerFails(Backend backend) {
  const StandInBackends& current = StandInBackends::Current();
  if (current.maker_throws == backend) throw std::runtime_error("no such card");
  return current.maker_gives_null == backend;
}

template <typename Object, Backend kBackend>
IMMonitor* Make() {
  return MakerFails(kBackend) ? nullptr : new Object(kBackend);
}

template <Backend kBackend>
BOOL StartWatched(Win7CCD* /*ccd*/) {
  return StandInBackends::Current().NoteStart(kBackend, StartOf(kBackend));
}

template <Backend kBackend>
void EndWatched(Win7CCD* ccd) {
  StandInBackends::Current().watched.erase(ccd);
  StandInBackends::Current().NoteEnded(kBackend);
}

template <Backend kBackend>
constexpr CcdWatch kWatch = {StartWatched<kBackend>, EndWatched<kBackend>};
const FactoryBox* g_factory = nullptr;

template <Backend kBackend>
Win7CCD* MakeWatched() {
  if (MakerFails(kBackend)) return nullptr;
  Win7CCD* const ccd = g_factory->NewWatchedWin7CCD(&kWatch<kBackend>);
  StandInBackends::Current().watched.emplace(ccd, kBackend);
  StandInBackends::Current().NoteMade(kBackend);
  return ccd;
}

StandInMark* MarkOf(IMMonitor* object) { return dynamic_cast<StandInMark*>(object); }

/// Null for what is no stand-in of that class.
IMMonitor* AsStandInOf(IMMonitor* object, Backend first, Backend last) {
  StandInMark* const mark = MarkOf(object);
  return mark != nullptr && mark->backend() >= first && mark->backend() <= last ? object : nullptr;
}

void NoteQuestion(IMMonitor* object, const char* question) {
  if (StandInMark* mark = MarkOf(object)) {
    StandInBackends::Current().Note(mark->backend(), question);
  }
}

bool CanControlHDMIMonitor(IMMonitor* intel) {
  NoteQuestion(intel, "CanControlHDMIMonitor");
  return AsStandInOf(intel, Backend::kIntelMMImpl, Backend::kIntelMMImpl) != nullptr &&
         Script().intel_has_hdmi;
}

bool CouldManageMultipleDisplay(IMMonitor* nv) {
  NoteQuestion(nv, "CouldManageMultipleDisplay");
  return AsStandInOf(nv, Backend::kNvidiaMMImplV2, Backend::kNvidiaMMImplV3CrossAdapter) !=
             nullptr &&
         Script().could_manage;
}

bool QueryNvidiaAdapterMode(IMMonitor* nv, uint32_t* value) {
  NoteQuestion(nv, ("AdapterMode(" + std::to_string(*value) + ")").c_str());
  if (!Script().adapter_mode) return false;
  *value = *Script().adapter_mode;
  return true;
}

BackendStandIns AllStandIns(bool watches_win7_ccd) {
  BackendStandIns all;
  if (watches_win7_ccd) all.NewWin7CCD = MakeWatched<Backend::kWin7CCD>;
  all.NewIntelMMImpl = Make<StandIn<FakeExtensionMonitor>, Backend::kIntelMMImpl>;
  all.NewADLImpl = Make<StandIn<FakeAmdMonitor>, Backend::kADLImpl>;
  all.NewAtiMMImpl = Make<StandIn<FakeExtensionMonitor>, Backend::kAtiMMImpl>;
  all.NewSisMMImpl = Make<StandIn<FakeMonitor>, Backend::kSisMMImpl>;
  all.NewViaMMImpl = Make<StandIn<FakeMonitor>, Backend::kViaMMImpl>;
  all.NewNvidiaMMImpl = Make<StandIn<FakeExtensionMonitor>, Backend::kNvidiaMMImpl>;
  all.NewNvidiaMMImplV2 = Make<NvidiaStandIn, Backend::kNvidiaMMImplV2>;
  all.NewNvidiaMMImplV3 = Make<NvidiaStandIn, Backend::kNvidiaMMImplV3>;
  all.NewNvidiaMMImplV3CrossAdapter = Make<NvidiaStandIn, Backend::kNvidiaMMImplV3CrossAdapter>;
  all.NewDisplayLinkWorkaroundImpl = MakeWatched<Backend::kDisplayLinkWorkaroundImpl>;
  all.AsNvidiaMMImplV3 = [](IMMonitor* monitor) {
    return AsStandInOf(monitor, Backend::kNvidiaMMImplV3, Backend::kNvidiaMMImplV3CrossAdapter);
  };
  all.CanControlHDMIMonitor = CanControlHDMIMonitor;
  all.CouldManageMultipleDisplay = CouldManageMultipleDisplay;
  all.QueryNvidiaAdapterMode = QueryNvidiaAdapterMode;
  all.AdlLibraryQualifies = [] { return Script().adl_qualifies; };
  all.IsDisplayLinkServicePresent = [] { return Script().display_link_service; };
  return all;
}

const BackendStandIns kAllStandIns = AllStandIns(false);
const BackendStandIns kAllStandInsAndWin7CCD = AllStandIns(true);

}  // namespace

StandInBackends::StandInBackends(const FactoryBox* factory, bool watches_win7_ccd)
    : factory_(factory) {
  g_current = this;
  g_factory = factory;
  factory->UseBackendStandIns(watches_win7_ccd ? &kAllStandInsAndWin7CCD : &kAllStandIns);
}

StandInBackends::~StandInBackends() {
  factory_->DeleteMultiMonitorObject();
  factory_->UseBackendStandIns(nullptr);
  EXPECT_EQ(Living(), "");
  EXPECT_EQ(complaints_, "");
  Forget();
  g_current = nullptr;
}

StandInBackends& StandInBackends::Current() { return *g_current; }

std::string StandInBackends::TakeStarts() {
  std::string taken;
  taken.swap(starts_);
  return taken;
}

std::string StandInBackends::TakeTrace() {
  std::string taken;
  taken.swap(trace_);
  return taken;
}

std::string StandInBackends::Living() const {
  std::string names;
  for (size_t i = 0; i < kBackends; ++i) {
    for (int n = 0; n < living_[i]; ++n) names += std::string(kRows[i].name) + " ";
  }
  return names;
}

void StandInBackends::Forget() {
  for (void* const memory : graves_) ::operator delete(memory);
  graves_.clear();
}

void StandInBackends::Note(Backend backend, const char* operation) {
  if (!traces) return;
  trace_ += RowOf(backend).name;
  trace_ += '.';
  trace_ += operation;
  trace_ += '\n';
}

void StandInBackends::NoteMade(Backend backend) {
  ++living_[static_cast<size_t>(backend)];
  ++made_[static_cast<size_t>(backend)];
  Note(backend, "Made");
}

void StandInBackends::NoteEnded(Backend backend) {
  --living_[static_cast<size_t>(backend)];
  Note(backend, "Ended");
  if (on_end) on_end(backend);
}

BOOL StandInBackends::NoteStart(Backend backend, Start start) {
  starts_ += RowOf(backend).name;
  starts_ += ' ';
  Note(backend, "Initial");
  if (on_start) on_start(backend);
  if (start == Start::kThrows) throw std::runtime_error("no driver");
  if (start == Start::kThrowsBadCast) throw std::bad_cast();
  return start == Start::kWorks ? 1 : 0;
}

void StandInBackends::Bury(void* memory) {
  new (memory) Corpse();
  graves_.push_back(memory);
}

void StandInBackends::Complain(const char* text) { complaints_ += std::string(text) + "\n"; }

const char* NameOf(Backend backend) { return RowOf(backend).name; }

std::string NameOf(IMMonitor* object) {
  if (object == nullptr) return "none";
  if (StandInMark* mark = MarkOf(object)) return NameOf(mark->backend());
  if (g_current != nullptr) {
    const auto watched = g_current->watched.find(object);
    if (watched != g_current->watched.end()) return NameOf(watched->second);
  }
  // The class's name with its length in front, as the compiler writes it.
  const std::string name = typeid(*object).name();
  return name.substr(name.find_first_not_of("0123456789"));
}
