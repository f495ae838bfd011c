// The graphics vendors' back-ends as scripted objects under the real factory: which of them are
// made, started and ended can be read, and that none is used or ended after its end. Win7CCD,
// NullMonitorController and HybridController stay the real ones; Win7CCD is watched on request.
//
//   StandInBackends backends(ostrel.white_box().factory);
//   backends.script.nvidia = Start::kFails;
//   EXPECT_EQ(NameOf(ostrel.white_box().factory->GetMultiMonitorObject()), "IntelMMImpl");
//   EXPECT_EQ(backends.TakeStarts(), "IntelMMImpl NvidiaMMImplV3 NvidiaMMImplV3 ");
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/FakeMonitor.h"
#include "tests/whitebox/FactoryBox.h"

/// The classes that have stand-ins; their names are those of the classes.
enum class Backend {
  kIntelMMImpl,
  kADLImpl,
  kAtiMMImpl,
  kSisMMImpl,
  kViaMMImpl,
  kNvidiaMMImpl,
  kNvidiaMMImplV2,
  kNvidiaMMImplV3,
  kNvidiaMMImplV3CrossAdapter,
  kDisplayLinkWorkaroundImpl,
  kWin7CCD,
};
constexpr size_t kBackends = 11;

/// How an Initial ends.
enum class Start { kWorks, kFails, kThrows, kThrowsBadCast };

/// How the machine's libraries answer.
struct BackendScript {
  Start intel = Start::kWorks;
  bool intel_has_hdmi = false;
  Start nvidia = Start::kWorks;
  bool discrete_only = false;
  bool could_manage = false;             // CouldManageMultipleDisplay
  bool cross_adapter_capable = false;    // what IDisplayExtensionNvidia says
  std::optional<uint32_t> adapter_mode;  // absent: the driver does not tell
  bool adl_qualifies = true;
  Start adl = Start::kWorks;
  bool display_link_service = false;
  Start display_link = Start::kWorks;
};

class StandInBackends {
 public:
  /// From here on stand-ins are made; one such object at a time.
  /// @param watches_win7_ccd  lists the real Win7CCD with the stand-ins, in what was made, started
  ///                          and ended
  explicit StandInBackends(const FactoryBox* factory, bool watches_win7_ccd = false);
  ~StandInBackends();
  StandInBackends(const StandInBackends&) = delete;
  StandInBackends& operator=(const StandInBackends&) = delete;

  /// The classes whose Initial was called, in order, each with a blank behind it.
  std::string TakeStarts();
  /// Everything that was made, asked and ended, one "Class.Operation" a line.
  std::string TakeTrace();
  /// The classes of the objects there are, sorted by Backend, each with a blank behind it.
  std::string Living() const;
  const std::array<int, kBackends>& living() const { return living_; }
  uint32_t Made(Backend backend) const { return made_[static_cast<size_t>(backend)]; }
  /// What was done to objects that had ended; "" when nothing was.
  const std::string& complaints() const { return complaints_; }
  /// Gives back the memory of ended objects, which is kept so that their use shows.
  void Forget();

  BackendScript script;
  /// What the operations beyond the script answer, for all objects.
  const std::shared_ptr<FakeScript> operations = std::make_shared<FakeScript>();
  std::optional<Backend> maker_throws;
  std::optional<Backend> maker_gives_null;
  bool traces = true;                             // TakeTrace costs time
  std::function<void(Backend backend)> on_start;  // at the begin of each Initial
  std::function<void(Backend backend)> on_end;

  // --- For the stand-ins.
  static StandInBackends& Current();
  void Note(Backend backend, const char* operation);
  void NoteMade(Backend backend);
  void NoteEnded(Backend backend);
  BOOL NoteStart(Backend backend, Start start);
  void Bury(void* memory);
  void Complain(const char* text);
  std::map<const void*, Backend> watched;  // the living objects that are derived from Win7CCD

 private:
  const FactoryBox* factory_;
  std::string starts_;
  std::string trace_;
  std::string complaints_;
  std::array<int, kBackends> living_{};
  std::array<uint32_t, kBackends> made_{};
  std::vector<void*> graves_;
};

const char* NameOf(Backend backend);

/// The name of the object's class, stand-in or real; "none" for null.
std::string NameOf(IMMonitor* object);
