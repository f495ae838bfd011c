#include <gtest/gtest.h>

#include <intrin.h>

#include <string>

#include "Common/cpu_id.h"
#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

namespace {

using sim::Library;
using sim::Machine;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active";
constexpr char kKey[] = "HKLM\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";

void SetVendor(Machine* machine, const std::string& vendor) {
  machine->model().registry[kKey]["VendorIdentifier"] = vendor;
}

TEST(GetCPUBrand, IsTheWholeVendorTextAndReadAtEveryCall) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  const FoundationBox& box = *ostrel.white_box().foundation;
  struct Row {
    const char* vendor;
    int brand;
  };
  for (const Row& row : {Row{"GenuineIntel", kIntelCPU}, Row{"AuthenticAMD", kAmdCPU},
                         Row{"GenuineIntel ", kUnknownCPU}, Row{"genuineintel", kUnknownCPU},
                         Row{"GenuineInte", kUnknownCPU}, Row{"", kUnknownCPU}}) {
    SetVendor(&machine, row.vendor);
    EXPECT_EQ(box.GetCPUBrand(), row.brand) << row.vendor;
  }
  EXPECT_EQ(kIntelCPU, 1);
  EXPECT_EQ(kAmdCPU, 2);
}

TEST(GetCPUBrand, VendorTextBeyondTheBufferIsUnknown) {
  Machine machine(kNotebook);
  SetVendor(&machine, "GenuineIntel" + std::string(300, 'x'));
  Library ostrel(machine, Library::Build::kWhiteBox);
  EXPECT_EQ(ostrel.white_box().foundation->GetCPUBrand(), kUnknownCPU);
}

TEST(GetCPUBrand, MissingKeyIsUnknownAndChecked) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --enable-dcheck");
  machine.model().registry.erase(kKey);
  Library ostrel(machine, Library::Build::kWhiteBox);
  const size_t start = machine.Log().size();
  testing::internal::CaptureStderr();
  EXPECT_EQ(ostrel.white_box().foundation->GetCPUBrand(), kUnknownCPU);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(Messages(machine.Log().substr(start)), "Check failed: rv == ERROR_SUCCESS. \n");
}

TEST(GetIntelCPUGeneration, ClassifiesThisProcessor) {
  Machine machine(kNotebook);
  SetVendor(&machine, "GenuineIntel");
  Library ostrel(machine, Library::Build::kWhiteBox);
  int registers[4] = {};
  __cpuid(registers, 1);
  const uint32_t eax = static_cast<uint32_t>(registers[0]);
  const uint32_t fields = eax & 0x00FF0FF0;
  const uint8_t expected = fields == 0x000206A0 ? 0 : fields == 0x000306A0 ? 1 : 255;
  EXPECT_EQ(ostrel.white_box().foundation->GetIntelCPUGeneration(), expected);
}

TEST(GetIntelCPUGeneration, ChecksThatTheProcessorIsIntels) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --enable-dcheck");
  SetVendor(&machine, "AuthenticAMD");
  Library ostrel(machine, Library::Build::kWhiteBox);
  const size_t start = machine.Log().size();
  testing::internal::CaptureStderr();
  ostrel.white_box().foundation->GetIntelCPUGeneration();
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(Messages(machine.Log().substr(start)), "Check failed: GetCPUBrand() == kIntelCPU. \n");
}

}  // namespace
