#include <gtest/gtest.h>

#include <string>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

namespace {

using sim::Library;
using sim::Machine;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active";

std::wstring PathOf(const Library& library) {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(library.module(), path, MAX_PATH);
  return path;
}

TEST(GetFileVersion, GivesTheFourNumbersOfTheFixedBlock) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  std::string text;
  ASSERT_TRUE(ostrel.white_box().foundation->GetFileVersion(PathOf(ostrel).c_str(), &text));
  EXPECT_EQ(text, "1.0.0.0");
}

TEST(GetFileVersion, FailsOnNullsWithoutTouchingTheText) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  std::string text = "before";
  EXPECT_FALSE(ostrel.white_box().foundation->GetFileVersion(nullptr, &text));
  EXPECT_FALSE(ostrel.white_box().foundation->GetFileVersion(PathOf(ostrel).c_str(), nullptr));
  EXPECT_EQ(text, "before");
}

TEST(GetFileVersion, FailsSilentlyOnFilesWithoutAVersion) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  const std::string log = machine.Log();
  const std::wstring plain = machine.TempFolder() + L"\\plain.dll";
  WriteFileText(plain, "no resource in here");
  std::string text = "before";
  EXPECT_FALSE(ostrel.white_box().foundation->GetFileVersion(plain.c_str(), &text));
  EXPECT_FALSE(ostrel.white_box().foundation->GetFileVersion(L"C:\\no\\such.dll", &text));
  EXPECT_EQ(text, "before");
  EXPECT_EQ(machine.Log(), log);
}

}  // namespace
