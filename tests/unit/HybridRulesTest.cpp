// What a machine with two adapters decides from numbers: against the rules told once more, as text.
#include "Common/MultiMonitor/Hybrid/HybridRules.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using N = DisplayNumbers;
constexpr uint32_t kAdvancedP1 = 128;
constexpr uint32_t kAdvancedP2 = 256;

// --- The current mode.

std::string Shown(const HybridMode& mode) {
  if (!mode.known) return "unknown";
  return std::to_string(mode.mode) + " on " + std::to_string(mode.displays);
}
std::string Shown(uint32_t mode, uint32_t displays) { return Shown({true, mode, displays}); }

uint32_t BitsIn(uint32_t mask) {
  uint32_t bits = 0;
  for (uint32_t bit = 0; bit < 32; ++bit) bits += mask >> bit & 1;
  return bits;
}

// The number of the first rule that fits.
int RuleFor(const HybridAnswers& a) {
  const bool fits[] = {
      false,
      a.i_ok == false && a.n_ok == false,
      a.i_ok == false || a.i_mode == 0,
      a.n_ok == false || a.n_mode == 0 || a.n_conn_count == 0,
      a.i_conn_count == 1 && (a.n_mode == 2 || a.n_mode == 4) && BitsIn(a.n_active | a.i_disp) < 3,
      a.n_mode == 2 && a.i_mode == 1 && (a.n_disp & 0x01) != 0 && (a.n_disp & 0x10) != 0,
      a.i_mode == a.n_mode && !(a.n_mode == 4 && BitsIn(a.n_disp | a.i_disp) >= 3),
      a.c_mode == 4 && a.n_mode == 4,
      true,
  };
  int rule = 1;
  while (!fits[rule]) ++rule;
  return rule;
}

std::string Expected(const HybridAnswers& a) {
  switch (RuleFor(a)) {
    case 1:
      return "unknown";
    case 2:
      return Shown(a.n_mode, a.n_disp);
    case 3:
      return Shown(a.i_mode, a.i_disp);
    case 4:
      return Shown(a.n_mode, a.n_disp | 0x01);
    case 5:
      return Shown(2, a.n_disp);
    case 6:
      return Shown(a.i_mode, a.n_disp | (a.i_disp != 0 ? a.i_disp : a.c_disp & ~0x30u));
    case 7:
      return Shown(kAdvancedP1, a.n_disp | a.i_disp);
    default:
      return Shown(kAdvancedP2, a.n_active | a.i_disp);
  }
}

std::string Told(const HybridAnswers& a) {
  return "i " + std::to_string(a.i_ok) + " " + Shown(a.i_mode, a.i_disp) + " of " +
         std::to_string(a.i_conn_count) + ", c " + Shown(a.c_mode, a.c_disp) + ", n " +
         std::to_string(a.n_ok) + " " + Shown(a.n_mode, a.n_disp) + " of " +
         std::to_string(a.n_conn_count) + " active " + std::to_string(a.n_active);
}

/// Calls `body` with the answers as they are, once for each value put into one of them.
template <typename Value, typename Body>
void ForEach(Value* field, const std::vector<Value>& values, const Body& body) {
  for (const Value& value : values) {
    *field = value;
    body();
  }
}

TEST(DecideHybridMode, EveryCombinationGoesByTheFirstRuleThatFits) {
  HybridAnswers a;
  std::vector<int> decided(9);
  uint32_t wrong = 0;
  const auto check = [&] {
    ++decided[static_cast<size_t>(RuleFor(a))];
    const std::string expected = Expected(a);
    if (Shown(DecideHybridMode(a)) == expected) return;
    if (++wrong <= 10) ADD_FAILURE() << Told(a) << " is not " << expected;
  };
  const std::vector<uint32_t> modes = {0, 1, 2, 4, 8};
  const auto with_displays = [&] {
    ForEach(&a.i_disp, {0x00, 0x01, 0x02, 0x03}, [&] {
      ForEach(&a.n_disp, {0x00, 0x01, 0x10, 0x11, 0x30, 0x31, 0x08}, [&] {
        ForEach(&a.n_active, {0x00, 0x10, 0x30}, [&] { ForEach(&a.c_disp, {0x00, 0x33}, check); });
      });
    });
  };
  ForEach(&a.i_ok, {false, true}, [&] {
    ForEach(&a.n_ok, {false, true}, [&] {
      ForEach(&a.i_conn_count, {0u, 1u, 2u}, [&] {
        ForEach(&a.n_conn_count, {0u, 1u}, [&] {
          ForEach(&a.i_mode, modes, [&] {
            ForEach(&a.n_mode, modes, [&] { ForEach(&a.c_mode, {0u, 2u, 4u}, with_displays); });
          });
        });
      });
    });
  });
  EXPECT_EQ(wrong, 0u);
  for (int rule = 1; rule <= 8; ++rule) EXPECT_GT(decided[static_cast<size_t>(rule)], 0) << rule;
}

// Both adapters extended, three displays on: the start of the rows below.
HybridAnswers AllThree() {
  HybridAnswers a;
  a.i_ok = true;
  a.i_mode = N::DM_EXTEND;
  a.i_disp = 0x03;
  a.i_conn_count = 2;
  a.c_mode = N::DM_EXTEND;
  a.c_disp = 0x33;
  a.n_ok = true;
  a.n_mode = N::DM_EXTEND;
  a.n_disp = 0x11;
  a.n_conn_count = 2;
  a.n_active = 0x10;
  return a;
}

TEST(DecideHybridMode, ThreeExtendedAreTheFirstAdvancedArrangement) {
  EXPECT_EQ(Shown(DecideHybridMode(AllThree())), "128 on 19");
}

TEST(DecideHybridMode, ThreeThatWindowsDoesNotExtendAreTheSecond) {
  HybridAnswers a = AllThree();
  a.c_mode = N::DM_CLONE;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "256 on 19");
  a.n_active = 0x20;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "256 on 35");  // not what NVIDIA's mode names
}

TEST(DecideHybridMode, TwoExtendedAreExtended) {
  HybridAnswers a = AllThree();
  a.i_disp = 0x01;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "4 on 17");
}

TEST(DecideHybridMode, NobodyKnows) {
  HybridAnswers a = AllThree();
  a.i_ok = false;
  a.n_ok = false;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "unknown");
}

TEST(DecideHybridMode, OneAnswerStandsForBoth) {
  HybridAnswers a = AllThree();
  a.i_ok = false;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "4 on 17");
  a = AllThree();
  a.i_mode = 0;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "4 on 17");
  a = AllThree();
  a.n_ok = false;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "4 on 3");
  a = AllThree();
  a.n_mode = 0;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "4 on 3");
  a = AllThree();
  a.n_conn_count = 0;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "4 on 3");
}

TEST(DecideHybridMode, PanelAloneOnIntelBelongsToNvidiasPair) {
  HybridAnswers a = AllThree();
  a.i_conn_count = 1;
  a.i_mode = N::DM_SINGLE;
  a.i_disp = 0x01;
  a.n_disp = 0x10;
  for (const uint32_t mode : {N::DM_CLONE, N::DM_EXTEND}) {
    a.n_mode = mode;
    EXPECT_EQ(Shown(DecideHybridMode(a)), Shown(mode, 0x11)) << mode;
  }
  a.n_mode = N::DM_SINGLE;
  a.i_mode = N::DM_CLONE;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "256 on 17");  // no pair of NVIDIA's
  a.n_mode = N::DM_CLONE;
  a.n_active = 0x30;
  a.i_mode = N::DM_SINGLE;
  a.n_disp = 0x30;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "256 on 49");  // three in all
}

TEST(DecideHybridMode, CloneOverBothNeedsPanelAndHdmi) {
  HybridAnswers a = AllThree();
  a.i_mode = N::DM_SINGLE;
  a.n_mode = N::DM_CLONE;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "2 on 17");
  a.n_disp = 0x10;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "256 on 19");
  a.n_disp = 0x21;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "256 on 19");
}

TEST(DecideHybridMode, AgreedModeTakesWindowsWordOnlyWhereIntelNamesNoDisplay) {
  HybridAnswers a = AllThree();
  a.i_mode = N::DM_CLONE;
  a.n_mode = N::DM_CLONE;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "2 on 19");
  a.i_disp = 0;
  a.c_disp = 0x3A;
  EXPECT_EQ(Shown(DecideHybridMode(a)), "2 on 27");  // less HDMI and DisplayPort
}

// --- Whose a display is.

TEST(AdapterOfDisplay, PanelAndCrtAreIntelsAndDigitalOnesNvidias) {
  for (uint32_t mask = 0; mask < 0x200; ++mask) {
    const HybridAdapter expected = mask == 0x01 || mask == 0x02 ? HybridAdapter::kIntel
                                   : mask == 0x08 || mask == 0x10 || mask == 0x20
                                       ? HybridAdapter::kNvidia
                                       : HybridAdapter::kNone;
    EXPECT_EQ(AdapterOfDisplay(mask), expected) << mask;
  }
}

// --- Which display goes where.

std::string Shown(const std::vector<NvidiaPlacing>& placings) {
  std::string text;
  for (const NvidiaPlacing& placing : placings) {
    text += std::to_string(placing.display) + "@" + std::to_string(placing.entry) + " ";
  }
  return text;
}

std::string ExpectedSideBySide(uint32_t connected, uint32_t wanted, size_t entries) {
  const bool hdmi = (connected & 0x10) != 0;
  const bool dp = (connected & 0x20) != 0;
  const bool wants_hdmi = (wanted & 0x10) != 0;
  const bool wants_dp = (wanted & 0x20) != 0;
  std::string text;
  if (hdmi && dp) {
    if (entries >= 1 && wants_dp) text += "32@0 ";
    if (entries >= 2 && wants_hdmi) text += "16@1 ";
  } else if (hdmi) {
    if (entries >= 1 && wants_hdmi) text += "16@0 ";
  } else if (dp) {
    if (entries >= 1 && wants_dp) text += "32@0 ";
  }
  return text;
}

std::string ExpectedBesideClone(uint32_t connected, uint32_t wanted, size_t entries) {
  const bool crt = (connected & 0x02) != 0;
  const bool hdmi = (connected & 0x10) != 0;
  const bool dp = (connected & 0x20) != 0;
  const bool wants_hdmi = (wanted & 0x10) != 0;
  const bool wants_dp = (wanted & 0x20) != 0;
  if (!crt) return hdmi && entries >= 2 && wants_hdmi ? "16@1 " : "";
  if (!hdmi) return dp && entries >= 2 && wants_dp ? "32@1 " : "";
  if (!dp) return entries >= 1 && wants_hdmi ? "16@0 " : "";
  std::string text;
  if (entries >= 1 && wants_dp) text += "32@0 ";
  if (entries >= 2 && wants_hdmi) text += "16@1 ";
  return text;
}

TEST(HybridPlacings, EveryConnectedAndWantedSetIsPlacedAsTold) {
  for (uint32_t connected = 0; connected < 0x40; ++connected) {
    for (uint32_t wanted = 0; wanted < 0x40; ++wanted) {
      for (size_t entries = 0; entries <= 3; ++entries) {
        EXPECT_EQ(Shown(PlacingsSideBySide(connected, wanted, entries)),
                  ExpectedSideBySide(connected, wanted, entries))
            << connected << " " << wanted << " " << entries;
        EXPECT_EQ(Shown(PlacingsBesideClone(connected, wanted, entries)),
                  ExpectedBesideClone(connected, wanted, entries))
            << connected << " " << wanted << " " << entries;
      }
    }
  }
}

}  // namespace
