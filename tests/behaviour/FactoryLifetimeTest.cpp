// How long the factory's objects live: over the exports, timers, both sides of the library, and
// memory that runs out.
#include <gtest/gtest.h>

#include "tests/behaviour/FactoryHost.h"

namespace {

// --- Both sides of the library.

TEST(FactoryLifetime, TheControllerStartsAgainAfterBothSidesEnded) {
  StandInHost host(kDisplaysOnBoth);
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(host.Library().InitExtendMode()) << round;
    EXPECT_EQ(NameOf(host->ActiveMonitor()), "HybridController") << round;
    ASSERT_TRUE(host.Library().Init()) << round;
    host.Library().DeInitExtendMode();
    EXPECT_EQ(NameOf(host->ActiveMonitor()), "HybridController") << round;
    host.Library().DeInit();
    EXPECT_EQ(host->ActiveMonitor(), nullptr) << round;
    EXPECT_EQ(host.backends.Living(), "") << round;
  }
}

TEST(FactoryLifetime, NvidiaByARememberedAnswerStartsAgain) {
  StandInHost host(kVistaIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script);
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(host.Library().InitExtendMode()) << round;
    EXPECT_EQ(NameOf(host->ActiveMonitor()), "NvidiaMMImplV3") << round;
    host.Library().DeInitExtendMode();
    EXPECT_EQ(host.backends.Living(), "") << round;
  }
  // Probed and started, then started; without a probe started only.
  EXPECT_EQ(host.backends.TakeStarts(), "NvidiaMMImplV3 NvidiaMMImplV3 NvidiaMMImplV3 ");
}

TEST(FactoryLifetime, AnObjectThatDoesNotStartIsEnded) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.script.display_link_service = true;
  host.backends.script.display_link = Start::kFails;
  host.backends.script.nvidia = Start::kFails;
  EXPECT_FALSE(host.Library().InitExtendMode());
  EXPECT_EQ(host->ActiveMonitor(), nullptr);
  EXPECT_EQ(host.backends.Living(), "");
  EXPECT_FALSE(host.Library().Init());
  EXPECT_EQ(host.backends.Living(), "");
  EXPECT_EQ(host.machine.EndThreads(), 1u);  // the add-on host's, which stays connected
}

TEST(FactoryLifetime, AControllerThatDoesNotStartIsEndedWithItsParts) {
  StandInHost host(kDisplaysOnBoth);
  // The second start of NVIDIA's library is the controller's own.
  int starts = 0;
  host.backends.on_start = [&](Backend backend) {
    if (backend == Backend::kNvidiaMMImplV3) ++starts;
    if (starts == 1) host.backends.script.nvidia = Start::kFails;
  };
  EXPECT_FALSE(host.Library().InitExtendMode());
  EXPECT_EQ(host.backends.Made(Backend::kNvidiaMMImplV3CrossAdapter), 1u);
  EXPECT_EQ(host.backends.Living(), "");
}

TEST(FactoryLifetime, AnExceptionInTheDecisionEndsInAFailedStart) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.script.nvidia = Start::kThrows;
  EXPECT_FALSE(host.Library().InitExtendMode());
  EXPECT_FALSE(host.Library().Init());
  EXPECT_EQ(host.backends.Living(), "");
}

TEST(FactoryLifetime, UnsavedObjectsEndWithTheLastSide) {
  StandInHost host("win7 sis: internal 1366x768 active");
  host.backends.script.display_link_service = true;
  ASSERT_TRUE(host.Library().InitExtendMode());
  ASSERT_TRUE(host.Library().Init());
  for (int call = 0; call < 3; ++call) host.Library().IsExtendModeEnabled();
  const uint32_t made = host.backends.Made(Backend::kDisplayLinkWorkaroundImpl);
  EXPECT_GE(made, 4u);
  std::string all;
  for (uint32_t i = 0; i < made; ++i) all += "DisplayLinkWorkaroundImpl ";
  EXPECT_EQ(host.backends.Living(), all);
  host.Library().DeInit();
  EXPECT_EQ(host.backends.Living(), all);
  host.Library().DeInitExtendMode();
  EXPECT_EQ(host.backends.Living(), "");
}

// --- Objects in use.

/// A machine on which every look at the active vendor replaces the active object.
struct FlippingHost : StandInHost {
  FlippingHost() : StandInHost(kDisplaysOnBoth) {
    MakeNvidiaDiscrete(&backends.script);
    backends.script.intel_has_hdmi = true;
    EXPECT_TRUE(Library().InitExtendMode());
    backends.on_end = [this](Backend) { ++ended; };
  }
  uint32_t ended = 0;
};

TEST(FactoryLifetime, AnObjectReplacedWithinAnExportLivesUntilTheExportReturns) {
  FlippingHost host;
  uint32_t seen = 0;
  host.backends.operations->on_call = [&](const std::string& call) {
    if (call != "GetActiveDisplays") return;
    IMMonitor* const before = host->ActiveMonitor();
    host.ended = 0;
    host->OnActiveDisplayAdapterVendorChanged();
    host.Library().IsExtendModeEnabled();  // an export within the export ends nothing either
    EXPECT_NE(host->ActiveMonitor(), before);
    EXPECT_NE(host.backends.Living().find("NvidiaMMImplV3 NvidiaMMImplV3 "), std::string::npos)
        << host.backends.Living();
    seen = host.ended;
  };
  uint32_t displays = 0;
  uint32_t count = 0;
  EXPECT_TRUE(host.Library().GetActiveDisplays(&displays, &count));
  EXPECT_EQ(displays, 1u);
  EXPECT_GT(host.ended, seen);
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
  EXPECT_EQ(host.backends.complaints(), "");
}

TEST(FactoryLifetime, EveryRecheckedExportLeavesOneObject) {
  FlippingHost host;
  for (int call = 0; call < 3; ++call) {
    host.Library().IsExtendModeEnabled();
    EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
    host.Library().EnableExtendMode(1);
    EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
    host.Library().SetNewDisplayMode(1, 1);
    EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
    host.Library().HasExternalMonitorConnected();
    EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
  }
  EXPECT_EQ(host.backends.complaints(), "");
}

FlippingHost* g_flipping = nullptr;

TEST(FactoryLifetime, AnObjectReplacedWithinATimerLivesUntilTheTimerReturns) {
  FlippingHost host;
  host.machine.model().wave_out_devices = 2;
  g_flipping = &host;
  host.Library().white_box().session->RepeatDetection([] {
    FlippingHost& flipping = *g_flipping;
    IMMonitor* const before = flipping->GetMultiMonitorObject();
    flipping->OnActiveDisplayAdapterVendorChanged();
    EXPECT_NE(flipping->ActiveMonitor(), before);
    before->DetectDisplays();  // a complaint if it had ended
    g_flipping = nullptr;
    return true;
  });
  host.machine.Advance(2000);
  EXPECT_EQ(g_flipping, nullptr);
  EXPECT_EQ(host.backends.complaints(), "");
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
  host.Library().white_box().session->RepeatDetection([] { return true; });
  host.machine.Advance(12000);
}

// --- What is thrown on the way.

TEST(FactoryLifetime, AControllerThatCannotBeMadeEndsItsParts) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.script.display_link_service = true;
  // The third DisplayLink object is the controller's own; the second the one of its Intel side.
  host.backends.on_start = [&](Backend backend) {
    if (backend == Backend::kDisplayLinkWorkaroundImpl &&
        host.backends.Made(Backend::kDisplayLinkWorkaroundImpl) == 2) {
      host.backends.maker_throws = Backend::kDisplayLinkWorkaroundImpl;
    }
  };
  EXPECT_THROW(host->GetMultiMonitorObject(), std::runtime_error);
  EXPECT_EQ(host->ActiveMonitor(), nullptr);
  EXPECT_EQ(host->State().active_vendor, 0);
  EXPECT_EQ(host.backends.Living(), "");
}

TEST(FactoryLifetime, AnIntelSideThatThrowsLeavesTheControllersNvidiaObjectToNobody) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.script.display_link_service = true;
  host.backends.on_start = [&](Backend backend) {
    if (backend == Backend::kDisplayLinkWorkaroundImpl) {
      host.backends.script.display_link = Start::kThrows;  // from the next one on
    }
  };
  EXPECT_THROW(host->GetMultiMonitorObject(), std::runtime_error);
  EXPECT_EQ(host.backends.Made(Backend::kNvidiaMMImplV3CrossAdapter), 1u);
  EXPECT_EQ(host.backends.Living(), "DisplayLinkWorkaroundImpl ");  // the active object
  EXPECT_EQ(NameOf(host->ActiveMonitor()), "DisplayLinkWorkaroundImpl");
  host->DeleteMultiMonitorObject();
  EXPECT_EQ(host.backends.Living(), "");
}

// --- Memory that runs out, at each piece that a decision asks for.

struct MemoryRow {
  const char* machine;
  void (*prepare)(StandInHost* host);
  const char* answer;  // with memory
};
constexpr MemoryRow kMemoryRows[] = {
    {kDisplaysOnBoth, [](StandInHost*) {}, "HybridController"},
    {kDisplaysOnBoth, [](StandInHost* host) { host->backends.script.display_link_service = true; },
     "HybridController"},
    {kIntelAndNvidia, [](StandInHost*) {}, "IntelMMImpl"},
    {kIntelAndNvidia, [](StandInHost* host) { host->backends.script.adapter_mode = 1; },
     "NvidiaMMImplV3"},
    {kIntelAndAmd, [](StandInHost*) {}, "ADLImpl"},
    {"win7 sis: internal 1366x768 active", [](StandInHost*) {}, "Win7CCD"},
    {"vista sis: internal 1366x768 active", [](StandInHost*) {}, "NullMonitorController"},
    {"win7 intel, sis, intel: internal 1366x768 active", [](StandInHost*) {},
     "NullMonitorController"},
    {"win7 intel: internal 1366x768 active",
     [](StandInHost* host) {
       host->Install(kVendorIntel);
       host->machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
     },
     "Win7CCD"},
};

/// What the library holds when the decision has had `nth` pieces but one, and everything has ended.
/// @return false when there were enough
bool DecideWithPieces(StandInHost* host, uint32_t nth, const char* answer) {
  const ProjectorBox& memory = *host->Library().white_box().projectors;
  memory.RefuseMemory(nth);
  std::string is;
  try {
    is = host->Answer();
  } catch (const std::bad_alloc&) {
    is = "no memory";
  }
  const bool enough = memory.RefuseMemory(0);
  if (enough) {
    EXPECT_EQ(is, answer) << nth;
  }
  (*host)->Reset();
  EXPECT_EQ(host->backends.Living(), "") << nth;
  return !enough;
}

TEST(FactoryLifetime, NothingIsLeftWhereverMemoryRunsOut) {
  for (const MemoryRow& row : kMemoryRows) {
    StandInHost host(row.machine);
    row.prepare(&host);
    DecideWithPieces(&host, 0, row.answer);  // what is kept from the first use on
    uint32_t nth = 1;
    for (;; ++nth) {
      if (host.script->deleted) {
        host.script->deleted = false;
        host.Install(kVendorIntel);
      }
      const int64_t before = host->PiecesOut();
      const bool refused = DecideWithPieces(&host, nth, row.answer);
      EXPECT_LE(host->PiecesOut(), before) << row.answer << " " << nth;
      if (!refused) break;
      ASSERT_LT(nth, 1000u);
    }
    EXPECT_GT(nth, 2u) << row.answer;
  }
}

TEST(FactoryLifetime, TheMissingControllerIsTold) {
  StandInHost host(kDisplaysOnBoth);
  const ProjectorBox& memory = *host.Library().white_box().projectors;
  uint32_t told = 0;
  for (uint32_t nth = 1; nth < 1000; ++nth) {
    memory.RefuseMemory(nth);
    try {
      host->GetMultiMonitorObject();
    } catch (const std::bad_alloc&) {
      // Somewhere else.
    }
    const bool enough = memory.RefuseMemory(0);
    if (host->State().active_vendor == 0xFFFF && host->ActiveMonitor() == nullptr) {
      ++told;
      EXPECT_TRUE(host.LogHas("Check failed: m_instance. ")) << nth;
      EXPECT_EQ(host.backends.Living(), "") << nth;
    }
    if (enough) break;
    host->Reset();
  }
  EXPECT_EQ(told, 1u);
}

TEST(RetireMonitor, WithoutMemoryToNoteItTheObjectIsNotEndedInUse) {
  FactoryHost host("win7 intel: internal 1366x768 active");
  host->RunInCallScope(
      [](void* context) {
        FactoryHost& inner = *static_cast<FactoryHost*>(context);
        const ProjectorBox& memory = *inner.Library().white_box().projectors;
        auto* const monitor = new FakeMonitor(inner.script);
        memory.RefuseMemory(1);
        inner->RetireMonitor(monitor);
        EXPECT_FALSE(memory.RefuseMemory(0));  // it was asked for, and refused
        EXPECT_FALSE(inner.script->deleted);
      },
      &host);
  EXPECT_FALSE(host.script->deleted);
}

}  // namespace
