#include <gtest/gtest.h>

#include <memory>

#include "sim/Library.h"
#include "sim/Machine.h"

namespace {

using sim::Library;
using sim::Machine;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active";

TEST(LoadDLL, ResolvesInOrderAndLeavesMissingNamesNull) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  ProbeSlots* slots = nullptr;
  const std::unique_ptr<LoadDLL> probe(
      ostrel.white_box().foundation->MakeProbeLibrary(false, &slots));
  EXPECT_FALSE(probe->IsLoaded());
  EXPECT_TRUE(probe->Load("kernel32.dll"));
  EXPECT_TRUE(probe->IsLoaded());
  ASSERT_NE(slots->lstrlen_a, nullptr);
  EXPECT_EQ(slots->lstrlen_a("four"), 4);
  EXPECT_EQ(slots->no_such_entry, nullptr);
  EXPECT_EQ(slots->also_no_such, nullptr);
}

TEST(LoadDLL, MissingRequiredNameFailsButTheOthersAreBoundAndTheModuleIsHeld) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  ProbeSlots* slots = nullptr;
  const std::unique_ptr<LoadDLL> probe(
      ostrel.white_box().foundation->MakeProbeLibrary(true, &slots));
  EXPECT_FALSE(probe->Load("kernel32.dll"));
  EXPECT_TRUE(probe->IsLoaded());
  EXPECT_NE(slots->lstrlen_a, nullptr);
}

TEST(LoadDLL, NullNameAndAbsentLibraryGiveNoModule) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  ProbeSlots* slots = nullptr;
  const std::unique_ptr<LoadDLL> probe(
      ostrel.white_box().foundation->MakeProbeLibrary(false, &slots));
  const uint32_t loads = machine.Calls("LoadLibraryA");
  EXPECT_FALSE(probe->Load(nullptr));
  EXPECT_EQ(machine.Calls("LoadLibraryA"), loads);
  EXPECT_FALSE(probe->Load("NoSuchLibrary.dll"));
  EXPECT_EQ(machine.Calls("LoadLibraryA"), loads + 1);
  EXPECT_FALSE(probe->IsLoaded());
}

TEST(LoadDLL, SecondLoadGivesTheFirstModuleBack) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  ProbeSlots* slots = nullptr;
  const uint32_t before = machine.Calls("FreeLibrary");
  {
    const std::unique_ptr<LoadDLL> probe(
        ostrel.white_box().foundation->MakeProbeLibrary(false, &slots));
    EXPECT_TRUE(probe->Load("kernel32.dll"));
    EXPECT_TRUE(probe->Load("kernel32.dll"));
    EXPECT_EQ(machine.Calls("FreeLibrary"), before + 1);
    EXPECT_FALSE(probe->Load(nullptr));
    EXPECT_EQ(machine.Calls("FreeLibrary"), before + 2);
  }
  EXPECT_EQ(machine.Calls("FreeLibrary"), before + 2);  // nothing was held any more
}

TEST(LoadDLL, DestructionGivesTheModuleBack) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  ProbeSlots* slots = nullptr;
  const std::string outstanding = machine.Outstanding();
  {
    const std::unique_ptr<LoadDLL> probe(
        ostrel.white_box().foundation->MakeProbeLibrary(false, &slots));
    EXPECT_TRUE(probe->Load("kernel32.dll"));
    EXPECT_NE(machine.Outstanding(), outstanding);
  }
  EXPECT_EQ(machine.Outstanding(), outstanding);
}

}  // namespace
