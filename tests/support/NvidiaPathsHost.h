// NVIDIA back-ends over display paths on simulated notebooks, and the calls of the driver in the
// journal's words.
#pragma once

#include "tests/support/NvidiaHost.h"

#include <vector>

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kDp = IMMonitor::MD_DP;
constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr uint32_t kExtend = IMMonitor::DM_EXTEND;

constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr char kSetConfig[] = "NvAPI_DISP_SetDisplayConfig";
constexpr char kReadGroups[] = "NvAPI_DISP_GetHCloneTopology";
constexpr char kWriteGroups[] = "NvAPI_DISP_SetHCloneTopology";

// A notebook of two adapters: the first one is Intel's, with the panel.
constexpr char kTwoAdapters[] =
    "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, hdmi@2 1920x1080, dvi@2 "
    "1280x1024, dp@2 2560x1440";
// All on one adapter.
constexpr char kNvidiaAlone[] =
    "win7 nvidia: internal 1600x900 active, crt 1280x1024, hdmi 1920x1080, dvi 1280x1024, dp "
    "2560x1440";

// The usual source mode, in which single and clone are set.
constexpr char kUsualMode[] = "1024x768x32 format=21 gdi";

inline std::string Failed(const std::string& condition) {
  return "Check failed: " + condition + ". \n";
}

template <typename Object>
struct NvidiaPathsHost : NvidiaHost {
  /// Every connector has a target id of its own, so that one of another adapter shows.
  explicit NvidiaPathsHost(const std::string& text, const std::wstring& switches = L"")
      : NvidiaHost(text, switches) {
    uint32_t target_id = 0x701;
    for (sim::Connector& connector : model().connectors) connector.target_id = target_id++;
  }
  ~NvidiaPathsHost() { End(); }
  NvidiaPathsHost(const NvidiaPathsHost&) = delete;
  NvidiaPathsHost& operator=(const NvidiaPathsHost&) = delete;

  const NvidiaPathsBox& paths() { return *box().Paths(); }

  /// The object before Initial, made by `make` at the first call.
  Object& bare(Object* (*make)()) {
    if (own_ == nullptr) {
      own_ = make();
      Adopt(own_);
    }
    return *own_;
  }
  Object& own() {
    nv();
    return *own_;
  }

  // --- The journal's words.
  std::string Own(const std::string& id) {
    return "[display=" + Hex(sim::NvDisplayIdOf(model(), id)) + " " + id + "]";
  }
  std::string Foreign(const std::string& id) {
    return "[target=" + Hex(connector(id).target_id) + " " + id + "]";
  }
  static std::string Set(uint32_t flags, const std::string& paths, int32_t result = 0) {
    return std::string(kSetConfig) + "(flags=" + std::to_string(flags) + " paths=[" + paths +
           "])=" + std::to_string(result) + "\n";
  }
  /// Single and clone in the usual mode: the one call of the driver and its result.
  static std::string SetOne(const std::string& path, int32_t result = 0,
                            const std::string& mode = kUsualMode) {
    return Set(2, "[" + path + " " + mode + "]", result);
  }
  static std::string WriteGroups(const std::string& groups, int32_t result = 0) {
    return std::string(kWriteGroups) + "(groups=" + groups + ")=" + std::to_string(result) + "\n";
  }

  /// A switch with everything else forgotten: what changed the machine, and the result.
  std::string Apply(uint32_t mode, uint32_t displays, const NvidiaModeSettings* settings) {
    Forget();
    const BOOL result = own().ApplyDisplayMode(mode, displays, settings);
    return machine.TakeJournal() + std::to_string(result);
  }
  std::string Apply(uint32_t mode, uint32_t displays) { return Apply(mode, displays, nullptr); }

 private:
  Object* own_ = nullptr;  // NvidiaHost's
};

struct V3Host : NvidiaPathsHost<NvidiaMMImplV3> {
  explicit V3Host(const std::string& text = kNvidiaAlone, const std::wstring& switches = L"")
      : NvidiaPathsHost(text, switches) {
    bare(paths().NewV3);
  }
};

struct CrossHost : NvidiaPathsHost<NvidiaMMImplV3CrossAdapter> {
  explicit CrossHost(const std::string& text = kTwoAdapters, const std::wstring& switches = L"")
      : NvidiaPathsHost(text, switches) {
    bare(paths().NewCrossAdapter);
  }
};
