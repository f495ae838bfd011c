// The pop-up's pixels against golden pictures that a person has looked at.
//
// The goldens lie in tests/session/golden. With OSTREL_REWRITE_GOLDENS=1 in the environment the
// tests write them anew and fail, so that nobody takes new goldens for a passed test: look at them,
// then run again without it. A picture that differs is written to golden-differs beside this
// program.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/PngFile.h"
#include "tests/support/SessionBench.h"

namespace {

// What rounding may differ by: a golden goes through straight alpha on its way into a PNG file and
// back, and the item pictures through the renderer of the machine that builds them.
constexpr int kTolerance = 4;

std::wstring WideAscii(const std::string& text) { return std::wstring(text.begin(), text.end()); }

std::wstring GoldenFolder() {
  const char* const given = std::getenv("OSTREL_GOLDEN_FOLDER");
  if (given != nullptr) return WideAscii(given);
  std::string folder = __FILE__;
  folder = folder.substr(0, folder.find_last_of("/\\")) + "/golden";
  if (folder[0] == '/') folder = "Z:" + folder;  // a path of the machine that Wine runs on
  return WideAscii(folder);
}

bool Rewrites() {
  const char* const rewrite = std::getenv("OSTREL_REWRITE_GOLDENS");
  return rewrite != nullptr && std::string(rewrite) == "1";
}

int Difference(uint32_t a, uint32_t b) {
  int most = 0;
  for (int shift = 0; shift != 32; shift += 8) {
    const int difference =
        std::abs(static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF));
    if (difference > most) most = difference;
  }
  return most;
}

void KeepForComparison(const std::wstring& name, const sim::Picture& shown) {
  std::wstring folder = BuiltPictureFolder();
  folder = folder.substr(0, folder.find_last_of(L'\\')) + L"\\golden-differs";
  CreateDirectoryW(folder.c_str(), nullptr);
  WritePng(folder + L"\\" + name + L".png", shown);
}

void ExpectGolden(const std::wstring& name, const sim::Picture& shown) {
  const std::wstring path = GoldenFolder() + L"\\" + name + L".png";
  if (Rewrites()) {
    ASSERT_TRUE(WritePng(path, shown));
    FAIL() << "the golden picture has been written anew: look at it, then run again";
  }
  sim::Picture golden;
  ASSERT_TRUE(ReadPng(path, &golden)) << "no golden picture";
  ASSERT_EQ(shown.width, golden.width);
  ASSERT_EQ(shown.height, golden.height);
  int most = 0;
  size_t beyond = 0;
  for (size_t i = 0; i != golden.pixels.size(); ++i) {
    const int difference = Difference(shown.pixels[i], golden.pixels[i]);
    if (difference > most) most = difference;
    if (difference > kTolerance) ++beyond;
  }
  EXPECT_EQ(beyond, 0u) << "pixels differ by more than " << kTolerance << " a channel, by up to "
                        << most;
  if (beyond != 0) KeepForComparison(name, shown);
}

void Open(SessionBench* bench, uint32_t connected, uint32_t count) {
  bench->script->connected = connected;
  bench->script->connected_count = count;
  ASSERT_TRUE(bench->Start());
  ASSERT_TRUE(bench->ostrel().Run());
}

TEST(Golden, PanelAlone) {
  SessionBench bench;
  Open(&bench, 0x01, 1);
  ExpectGolden(L"panel", bench.machine.PopupPicture());
}

TEST(Golden, PanelAndCrtAtOpening) {
  SessionBench bench;
  Open(&bench, 0x03, 2);
  ExpectGolden(L"panel-crt", bench.machine.PopupPicture());
}

TEST(Golden, PanelAndCrtAfterAPress) {
  SessionBench bench;
  Open(&bench, 0x03, 2);
  bench.ostrel().Run();
  ExpectGolden(L"panel-crt-second", bench.machine.PopupPicture());
}

TEST(Golden, NoItemHighlighted) {
  SessionBench bench;
  bench.script->mode = IMMonitor::DM_HSPAN;
  bench.script->active = 0x03;
  Open(&bench, 0x03, 2);
  ExpectGolden(L"panel-crt-none", bench.machine.PopupPicture());
}

TEST(Golden, EveryConnector) {
  SessionBench bench;
  Open(&bench, 0x7F, 7);
  ExpectGolden(L"every-connector", bench.machine.PopupPicture());
}

TEST(Golden, TwoAdapters) {
  SessionBench bench;
  bench.script->vendor = kVendorHybrid;
  Open(&bench, 0x33, 4);
  ExpectGolden(L"two-adapters", bench.machine.PopupPicture());
}

TEST(Golden, ThreeDisplaysTogether) {
  SessionBench bench;
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  bench.script->connected = 0x33;
  bench.script->connected_count = 4;
  ASSERT_TRUE(bench.Start<FakeAmdMonitor>());
  ASSERT_TRUE(bench.ostrel().Run());
  ExpectGolden(L"three-displays", bench.machine.PopupPicture());
}

TEST(Golden, AnItemWithoutItsPicture) {
  SessionBench bench;
  const std::wstring picture = bench.machine.HostFolder() + L"\\OstrelRes\\NB-CRT.png";
  ASSERT_TRUE(DeleteFileW(picture.c_str()));
  Open(&bench, 0x03, 2);
  bench.ostrel().Run();
  ExpectGolden(L"panel-crt-missing", bench.machine.PopupPicture());
}

TEST(Golden, NothingToChoose) {
  SessionBench bench;
  Open(&bench, 0x80, 1);
  ExpectGolden(L"empty", bench.machine.PopupPicture());
}

}  // namespace
