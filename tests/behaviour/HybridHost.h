// The controller of two adapters over scripted objects, and what it did told in short lines, in
// order: the calls to the objects, Windows' calls, and reads that count.
//
//   HybridHost host;
//   host.connected(kNb | kCrt, kHdmi);
//   EXPECT_EQ(host.Switch(IMMonitor::DM_EXTEND, kNb | kHdmi), "intel GetConnectedDisplays\n...1");
#pragma once

#include <map>
#include <sstream>
#include <utility>

#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "tests/behaviour/CoreHost.h"
#include "tests/support/FakeMonitor.h"

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kDp = IMMonitor::MD_DP;

constexpr char kFour[] =
    "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, dp@2 1600x900, hdmi@2 1920x1080";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";

inline std::string Hex(uint32_t value) {
  std::ostringstream text;
  text << "0x" << std::hex << value;
  return text.str();
}

using NativeSizes = std::map<uint32_t, std::pair<uint32_t, uint32_t>>;

/// Windows' object as the controller needs it: the display-control operations and native sizes. A
/// display without an entry has none, and the outputs are then spoilt.
class FakeCcd : public FakeMonitor, public IPhysicalMonitor {
 public:
  FakeCcd(std::shared_ptr<FakeScript> script, std::shared_ptr<NativeSizes> sizes)
      : FakeMonitor(std::move(script)), sizes_(std::move(sizes)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override {
    return static_cast<HRESULT>(0x80004005);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  bool GetNativeResolution(uint32_t monitor_id, uint32_t* width, uint32_t* height) override {
    script_->Note("GetNativeResolution(" + Hex(monitor_id) + ")");
    *width = 11;
    *height = 22;
    const auto size = sizes_->find(monitor_id);
    if (size == sizes_->end()) return false;
    *width = size->second.first;
    *height = size->second.second;
    return true;
  }

 private:
  std::shared_ptr<NativeSizes> sizes_;
  ULONG references_ = 0;
};

struct HybridHost : CoreHost {
  explicit HybridHost(const std::string& text = kFour, const std::wstring& switches = L"")
      : CoreHost(text, switches),
        intel(std::make_shared<FakeScript>()),
        nvidia(std::make_shared<FakeScript>()),
        ccd(std::make_shared<FakeScript>()),
        sizes(std::make_shared<NativeSizes>()) {
    nvidia->vendor = kVendorNvidia;
    ccd->vendor = kVendorWin7CCD;
    Listen("intel ", intel.get());
    Listen("nvidia ", nvidia.get());
    Listen("ccd ", ccd.get());
    machine.JournalReads(true);
  }
  ~HybridHost() { End(); }
  HybridHost(const HybridHost&) = delete;
  HybridHost& operator=(const HybridHost&) = delete;

  /// Over three scripted objects; made at the first call.
  IMMonitor& hybrid() {
    if (object_ == nullptr) {
      IMMonitor* const first = new FakeExtensionMonitor(intel);
      Take(box().NewHybridControllerOver(first, NewNvidia(), new FakeCcd(ccd, sizes)));
    }
    return *object_;
  }
  /// The same over the controller's own Win7CCD, initialised.
  IMMonitor& HybridOverWindows() {
    Take(box().NewHybridController(new FakeExtensionMonitor(intel), NewNvidia()));
    EXPECT_EQ(object_->Initial(), 1);
    Forget();
    return *object_;
  }
  /// The same over objects of the test's own, null or not.
  IMMonitor& HybridOver(IMMonitor* first, IMMonitor* second, IMMonitor* third) {
    Take(box().NewHybridControllerOver(first, second, third));
    return *object_;
  }
  IMMonitor* NewNvidia() {
    return box().NewCrossAdapterOver(new FakeExtensionMonitor(nvidia), [this](uint32_t displays) {
      Tell("nvidia ApplyCrossAdapterClone(" + Hex(displays) + ")");
      return clone_result;
    });
  }
  IDisplayExtension& extension() { return *box().ExtensionOf(&hybrid()); }
  const HybridBox& box() { return *ostrel().white_box().hybrid; }
  void End() { object_.reset(); }

  /// What the objects see connected. Windows sees nothing, unless a test says so.
  void Connected(uint32_t on_intel, uint32_t on_nvidia) {
    const auto set = [](FakeScript* script, uint32_t displays) {
      script->connected = displays;
      script->connected_count = CountBits(displays);
    };
    set(intel.get(), on_intel);
    set(nvidia.get(), on_nvidia);
    set(ccd.get(), 0);
  }
  /// What an object says of its mode.
  static void Mode(FakeScript* script, uint32_t mode, uint32_t displays) {
    script->mode = mode;
    script->active = displays;
    script->active_count = CountBits(displays);
  }

  /// What happened since the last call.
  std::string Told() {
    TakeWindowsCalls();
    std::string told;
    told.swap(told_);
    last_line_.clear();
    return told;
  }
  void Forget() {
    Told();
    ForgetLog();
  }
  /// SetNewDisplayMode: what happened, and the result.
  std::string Switch(uint32_t mode, uint32_t displays) {
    hybrid();
    Forget();
    const BOOL result = hybrid().SetNewDisplayMode(mode, displays);
    return Told() + std::to_string(result);
  }

  std::shared_ptr<FakeScript> intel;
  std::shared_ptr<FakeScript> nvidia;
  std::shared_ptr<FakeScript> ccd;
  std::shared_ptr<NativeSizes> sizes;
  BOOL clone_result = 1;
  bool tells_reads = true;  // of display settings; the listing of devices is one line a walk

 private:
  void Take(IMMonitor* object) {
    object_.reset(object);
    Forget();
  }
  void Listen(const std::string& name, FakeScript* script) {
    script->on_call = [this, name](const std::string& call) { Tell(name + call); };
  }
  void Tell(const std::string& line) {
    TakeWindowsCalls();
    told_ += line + "\n";
    last_line_ = line;
  }
  void TakeWindowsCalls() {
    std::istringstream lines(machine.TakeJournal());
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("EnumDisplayDevicesW", 0) == 0) line = "EnumDisplayDevicesW";
      const bool change =
          line.rfind("ChangeDisplaySettings", 0) == 0 || line.rfind("SetDisplayConfig", 0) == 0;
      const bool read = line.rfind("EnumDisplaySettings", 0) == 0 ||
                        (line == "EnumDisplayDevicesW" && last_line_ != line);
      last_line_ = line;
      if (change || (read && tells_reads)) told_ += line + "\n";
    }
  }

  std::unique_ptr<IMMonitor> object_;
  std::string told_;
  std::string last_line_;
};
