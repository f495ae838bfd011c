// The control panel's monikers, its numbers, and its command lines.
#include "Common/MultiMonitor/Nvidia/NvidiaMonikers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Tokens = std::vector<std::string>;

Tokens TokensOf(const std::string& text) {
  Tokens tokens;
  for (MonikerTokenizer t(text); t.GetNext();) tokens.push_back(t.token());
  return tokens;
}

// --- Splitting.

TEST(MonikerTokenizer, CommasPart) {
  EXPECT_EQ(TokensOf("#DA"), Tokens{"#DA"});
  EXPECT_EQ(TokensOf("#DA,#AA"), (Tokens{"#DA", "#AA"}));
  EXPECT_EQ(TokensOf("#DA,#AA,#DB,#TA"), (Tokens{"#DA", "#AA", "#DB", "#TA"}));
}

TEST(MonikerTokenizer, EmptyTextHasNoToken) { EXPECT_EQ(TokensOf(""), Tokens{}); }

TEST(MonikerTokenizer, NothingBetweenCommasIsNoToken) {
  EXPECT_EQ(TokensOf(","), Tokens{});
  EXPECT_EQ(TokensOf(",,#DA,,#AA,"), (Tokens{"#DA", "#AA"}));
}

TEST(MonikerTokenizer, NothingElseParts) {
  EXPECT_EQ(TokensOf("#D A;#DB#DC,DD"), (Tokens{"#D A;#DB#DC", "DD"}));
}

TEST(MonikerTokenizer, StaysAtItsEnd) {
  MonikerTokenizer t("#DA");
  EXPECT_TRUE(t.GetNext());
  EXPECT_FALSE(t.GetNext());
  EXPECT_FALSE(t.GetNext());
  EXPECT_EQ(t.token(), "#DA");
}

// --- Numbers.

TEST(DisplayOfNvCplType, EveryRow) {
  EXPECT_EQ(DisplayOfNvCplType(4096), DisplayNumbers::MD_CRT);
  EXPECT_EQ(DisplayOfNvCplType(8192), DisplayNumbers::MD_DVI);
  EXPECT_EQ(DisplayOfNvCplType(8193), DisplayNumbers::MD_NB);
  EXPECT_EQ(DisplayOfNvCplType(8194), DisplayNumbers::MD_HDMI);
  EXPECT_EQ(DisplayOfNvCplType(12288), DisplayNumbers::MD_TV);
}

TEST(DisplayOfNvCplType, AnythingElseIsNone) {
  for (const uint32_t type : {0u, 1u, 4095u, 4097u, 8191u, 8195u, 12287u, 12289u, 0xFFFFFFFFu}) {
    EXPECT_EQ(DisplayOfNvCplType(type), 0u) << type;
  }
}

TEST(ModeOfNvCplState, EveryRow) {
  EXPECT_EQ(ModeOfNvCplState(4), DisplayNumbers::DM_SINGLE);
  EXPECT_EQ(ModeOfNvCplState(5), DisplayNumbers::DM_EXTEND);
  EXPECT_EQ(ModeOfNvCplState(6), DisplayNumbers::DM_CLONE);
  EXPECT_EQ(ModeOfNvCplState(7), DisplayNumbers::DM_HSPAN);
  EXPECT_EQ(ModeOfNvCplState(8), DisplayNumbers::DM_VSPAN);
}

TEST(ModeOfNvCplState, AnythingElseIsNone) {
  for (const int32_t state : {-1, 0, 1, 2, 3, 9, 100}) EXPECT_EQ(ModeOfNvCplState(state), 0u);
}

// --- Names.

TEST(NvCplDisplayName, TwoCharactersBehindTheFirst) {
  EXPECT_EQ(NvCplDisplayName("#DA"), "DA");
  EXPECT_EQ(NvCplDisplayName("#DAX"), "DA");
  EXPECT_EQ(NvCplDisplayName("DAX"), "AX");  // whatever the first one is
}

TEST(NvCplDisplayName, ShorterMonikersGiveWhatIsThere) {
  EXPECT_EQ(NvCplDisplayName("#D"), "D");
  EXPECT_EQ(NvCplDisplayName("#"), "");
  EXPECT_EQ(NvCplDisplayName(""), "");
}

// --- Lines.

TEST(DtcfgLine, EveryStateWithACommand) {
  EXPECT_EQ(DtcfgLine("0", 4, "DA", ""), "NvCpl.DLL,dtcfg setview 0 standard DA");
  EXPECT_EQ(DtcfgLine("0", 5, "DA", "AA"), "NvCpl.DLL,dtcfg setview 0 dualview DA AA");
  EXPECT_EQ(DtcfgLine("0", 6, "DB", "DC"), "NvCpl.DLL,dtcfg setview 0 clone DB DC");
}

TEST(DtcfgLine, OneDisplayTakesNoSecond) {
  EXPECT_EQ(DtcfgLine("0", 4, "DA", "AA"), "NvCpl.DLL,dtcfg setview 0 standard DA");
}

TEST(DtcfgLine, GpuStandsAsItIs) {
  EXPECT_EQ(DtcfgLine("1", 6, "DA", "AA"), "NvCpl.DLL,dtcfg setview 1 clone DA AA");
  EXPECT_EQ(DtcfgLine("", 6, "DA", "AA"), "");
}

TEST(DtcfgLine, EmptyWordsAreLeftOut) {
  EXPECT_EQ(DtcfgLine("0", 4, "", ""), "NvCpl.DLL,dtcfg setview 0 standard");
  EXPECT_EQ(DtcfgLine("0", 5, "DA", ""), "NvCpl.DLL,dtcfg setview 0 dualview DA");
  EXPECT_EQ(DtcfgLine("0", 6, "", "AA"), "NvCpl.DLL,dtcfg setview 0 clone AA");
}

TEST(DtcfgLine, OtherStatesHaveNone) {
  for (const int32_t state : {-1, 0, 1, 2, 3, 7, 8, 9}) {
    EXPECT_EQ(DtcfgLine("0", state, "DA", "AA"), "") << state;
  }
}

// --- The order.

TEST(KViewOrder, PanelFirstDisplayPortLast) {
  const std::vector<uint32_t> order(std::begin(kViewOrder), std::end(kViewOrder));
  EXPECT_EQ(order, (std::vector<uint32_t>{0x01, 0x02, 0x04, 0x08, 0x10, 0x20}));
}

}  // namespace
