// What an EDID tells the debugger. Under Windows the behaviour tests watch the real output.
#include <gtest/gtest.h>

#include "Common/MultiMonitor/Edid.h"
#include "tests/native/DebuggerLines.h"
#include "tests/support/EdidBlock.h"

namespace {

// The lines that were there when the exception arrived; "nothing raised" without one.
std::string LinesWhenRaised(const EdidBlock& block) {
  TakeDebuggerLines();
  EDID edid;
  try {
    edid.Load(block.bytes().data(), 128);
  } catch (const std::runtime_error&) {
    return TakeDebuggerLines();
  }
  return "nothing raised";
}

TEST(EdidDebuggerLine, IsWrittenBeforeTheExceptionIsRaised) {
  EXPECT_EQ(LinesWhenRaised(EdidBlock().Put(0, {1}).Sum()), kHeaderLine);
  EXPECT_EQ(LinesWhenRaised(EdidBlock().Put(18, {2}).Sum()), kHeaderLine);
  EXPECT_EQ(LinesWhenRaised(EdidBlock().Spoil()), kChecksumLine);
  EXPECT_EQ(LinesWhenRaised(EdidBlock().Put(0, {1})), kHeaderLine);  // the checksum is not asked
}

TEST(EdidDebuggerLine, ThereIsNoneWhereNothingIsRaised) {
  EXPECT_EQ(LinesWhenRaised(EdidBlock()), "nothing raised");
  EDID edid;
  EXPECT_EQ(edid.Load(EdidBlock().bytes().data(), 127), 0);
  EXPECT_EQ(TakeDebuggerLines(), "");
}

}  // namespace
