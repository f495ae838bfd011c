#include "sim/Ledger.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "sim/Face.h"
#include "sim/Faults.h"
#include "sim/Journal.h"
#include "sim/Machine.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/SampleLibrary.h"

namespace sim {
namespace {

const void* Handle(uint64_t number) { return reinterpret_cast<const void*>(number); }

int Throwing(int) { throw std::runtime_error("inside"); }

TEST(Ledger, BalancedIsEmpty) {
  Ledger ledger;
  ledger.Take("key", 0x20);
  EXPECT_TRUE(ledger.Give("key", 0x20));
  EXPECT_EQ(ledger.Outstanding(), "");
}

TEST(Ledger, TellsWhatIsOut) {
  Ledger ledger;
  ledger.Take("module", 0x30);
  ledger.Take("module", 0x30);
  ledger.Take("key", 0x20);
  EXPECT_EQ(ledger.Outstanding(), "key 0x20\nmodule 0x30 (2 times)\n");
  EXPECT_EQ(ledger.Count("module"), 2u);
}

TEST(Ledger, SameNumberOfAnotherKindIsAnotherThing) {
  Ledger ledger;
  ledger.Take("key", 0x20);
  EXPECT_FALSE(ledger.Give("device list", 0x20));
  EXPECT_TRUE(ledger.Holds("key", 0x20));
}

TEST(Ledger, ResidentIsToldOnlyAfterTheEnd) {
  Ledger ledger;
  ledger.Take("file", 0x10);
  ledger.MarkResident();
  EXPECT_EQ(ledger.Outstanding(), "");
  ledger.Take("file", 0x10);
  EXPECT_EQ(ledger.Outstanding(), "file 0x10\n");
  EXPECT_TRUE(ledger.Give("file", 0x10));
  ledger.Settle();
  EXPECT_EQ(ledger.Outstanding(), "file 0x10\n");
}

TEST(Ledger, ResidentThatIsGivenBackIsNoLongerOne) {
  Ledger ledger;
  ledger.Take("file", 0x10);
  ledger.MarkResident();
  EXPECT_TRUE(ledger.Give("file", 0x10));
  ledger.Take("file", 0x10);  // another with the same number
  EXPECT_EQ(ledger.Outstanding(), "file 0x10\n");
}

TEST(Ledger, GivingBackTwiceFailsTheTest) {
  Machine machine(kSampleMachine);
  LedgerTake("key", Handle(0x20));
  LedgerGive("key", Handle(0x20));
  CaughtFailures failures;
  LedgerGive("key", Handle(0x20));
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0], "gave back what it does not hold: key 0x20");
}

TEST(Journal, TakingEmptiesAndHistoryStays) {
  Journal journal;
  journal.Write("one");
  EXPECT_EQ(journal.Take(), "one\n");
  journal.Write("two");
  EXPECT_EQ(journal.text(), "two\n");
  EXPECT_EQ(journal.history(), "one\ntwo\n");
}

TEST(Journal, CallWritesNameArgumentsAndResult) {
  Machine machine(kSampleMachine);
  Call call("SetDisplayConfig");
  EXPECT_EQ(call.Changed(31, "paths=%u flags=0x%x", 0u, 0x42u), 31);
  EXPECT_EQ(machine.TakeJournal(), "SetDisplayConfig(paths=0 flags=0x42)=31\n");
}

TEST(Journal, ReadsStandThereOnRequestOnly) {
  Machine machine(kSampleMachine);
  Call call("Sleep");
  call.Read(0, "%d", 1);
  EXPECT_EQ(machine.TakeJournal(), "");
  machine.JournalReads(true);
  call.Read(0, "%d", 2);
  EXPECT_EQ(machine.TakeJournal(), "Sleep(2)=0\n");
}

TEST(Faults, NthCallFailsOnce) {
  Faults faults;
  faults.Declare("f", 2, 31, false);
  EXPECT_FALSE(faults.OnCall("f"));
  EXPECT_EQ(faults.OnCall("f"), 31u);
  EXPECT_FALSE(faults.OnCall("f"));
  EXPECT_EQ(faults.Calls("f"), 3u);
  EXPECT_EQ(faults.Given(), 1u);
}

TEST(Faults, CountFromTheDeclaration) {
  Faults faults;
  faults.OnCall("f");
  faults.Declare("f", 1, 5, false);
  EXPECT_EQ(faults.OnCall("f"), 5u);
}

TEST(Faults, FromThenOnUntilCleared) {
  Faults faults;
  faults.Declare("f", 2, 7, true);
  EXPECT_FALSE(faults.OnCall("f"));
  EXPECT_EQ(faults.OnCall("f"), 7u);
  EXPECT_EQ(faults.OnCall("f"), 7u);
  faults.Clear();
  EXPECT_FALSE(faults.OnCall("f"));
}

TEST(Faults, OtherFunctionsAreLeftAlone) {
  Faults faults;
  faults.Declare("f", 1, 7, true);
  EXPECT_FALSE(faults.OnCall("g"));
}

TEST(Faults, UnknownFunctionFailsTheTest) {
  Machine machine(kSampleMachine);
  CaughtFailures failures;
  machine.Fail("SetDisplayConfgi", 1);
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0],
            "a fault was declared for SetDisplayConfgi, which is not simulated");
}

TEST(Faults, FunctionThatCannotFailIsRefused) {
  Machine machine(kSampleMachine);
  CaughtFailures failures;
  for (const char* function : {"Sleep", "CoUninitialize", "GdiplusShutdown", "GetTickCount64"}) {
    machine.Fail(function, 1);
    ASSERT_EQ(failures.list().size(), 1u) << function;
    EXPECT_EQ(failures.list()[0],
              std::string("a fault was declared for ") + function + ", which cannot fail");
    failures.list().clear();
  }
}

TEST(Faults, OneThatNeverHappenedFailsTheTest) {
  CaughtFailures failures;
  {
    Machine machine(kSampleMachine);
    Call("SetTimer");
    machine.Fail("SetTimer", 2);
    Call("SetTimer");
    machine.Fail("KillTimer", 1);
    Call("KillTimer");
    machine.ClearFaults();
    ASSERT_EQ(failures.list().size(), 1u);
    EXPECT_EQ(failures.list()[0], "a declared fault was never asked for: SetTimer, call 2");
    machine.Fail("KillTimer", 3);
    machine.Fail("PostMessageA", 1, 0, Machine::Repeat::kFromThenOn);
    EXPECT_EQ(failures.list().size(), 1u);
  }
  ASSERT_EQ(failures.list().size(), 3u);
  EXPECT_EQ(failures.list()[1], "a declared fault was never asked for: KillTimer, call 3");
  EXPECT_EQ(failures.list()[2], "a declared fault was never asked for: PostMessageA, call 1");
}

TEST(Faults, OneThatNeverHappenedMayBeForgiven) {
  CaughtFailures failures;
  {
    Machine machine(kSampleMachine);
    machine.ForgiveUnusedFaults();
    machine.Fail("SetTimer", 2);
    machine.ClearFaults();
    machine.Fail("SetTimer", 1);
  }
  EXPECT_TRUE(failures.list().empty());
}

TEST(Guard, ExceptionOfASimulatedFunctionFailsTheTestAndStopsThere) {
  CaughtFailures failures;
  EXPECT_EQ(reinterpret_cast<int (*)(int)>(Guard<Throwing>())(1), 0);
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0], "a simulated function threw: inside");
}

TEST(Machine, FoldersAreNewAndGoWithIt) {
  std::wstring folder;
  {
    Machine machine(kSampleMachine);
    folder = machine.HostFolder();
    machine.Config("Settings", "Some Key", 5);
    EXPECT_EQ(
        GetPrivateProfileIntW(L"Settings", L"Some Key", 0, (folder + L"\\Ostrel.cfg").c_str()), 5u);
  }
  EXPECT_EQ(GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(Machine, ReportHoldsMachineJournalAndLog) {
  TakeLastReport();
  {
    Machine machine(kSampleMachine);
    JournalLine("a line that was taken");
    machine.TakeJournal();
  }
  const std::string report = TakeLastReport();
  EXPECT_NE(report.find("connector internal"), std::string::npos);
  EXPECT_NE(report.find("a line that was taken"), std::string::npos);
  EXPECT_NE(report.find("--- log"), std::string::npos);
  EXPECT_EQ(TakeLastReport(), "");
}

}  // namespace
}  // namespace sim
