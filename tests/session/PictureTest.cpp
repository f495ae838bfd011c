// What the pop-up shows: the order of drawing, the cost of a press, pictures and GDI+ calls that
// fail.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/SessionBench.h"

namespace {

using sim::Drawn;
using Pictures = std::vector<std::string>;

std::string Describe(const Drawn& drawn) {
  std::ostringstream text;
  text << drawn.file << " at " << drawn.x << "," << drawn.y << " " << drawn.width << "x"
       << drawn.height;
  return text.str();
}

/// The journal's lines that begin with one of the pop-up's own calls.
std::string PopupCalls(const std::string& journal) {
  const char* const kStarts[] = {"Gdip",      "CreateSolidBrush(", "UpdateLayeredWindow(",
                                 "SetTimer(", "KillTimer(",        "PostMessageA("};
  std::string kept;
  std::istringstream lines(journal);
  for (std::string line; std::getline(lines, line);) {
    for (const char* start : kStarts) {
      if (line.rfind(start, 0) == 0) kept += line + "\n";
    }
  }
  return kept;
}

class PopupPicture : public testing::Test {
 protected:
  void Open() {
    ASSERT_TRUE(bench.Start());
    ASSERT_TRUE(bench.ostrel().Run());
  }
  std::wstring Picture(const wchar_t* name) {
    return bench.machine.HostFolder() + L"\\OstrelRes\\" + name;
  }
  void Break(const wchar_t* name) {
    FILE* const file = _wfopen(Picture(name).c_str(), L"wb");
    ASSERT_NE(file, nullptr);
    std::fputs("this is no picture", file);
    std::fclose(file);
  }
  uint32_t Pixel(uint32_t x, uint32_t y) {
    const sim::Picture& picture = bench.machine.PopupPicture();
    return picture.pixels.at(y * picture.width + x) & 0xFFFFFF;
  }

  SessionBench bench;
};

// --- The order of everything at opening.

TEST_F(PopupPicture, IsMadeAndShownInOrder) {
  ASSERT_TRUE(bench.Start());
  bench.machine.JournalReads(true);
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(PopupCalls(bench.machine.TakeJournal()),
            "GdipCreatePen1(0xff808080 width=2 unit=0)=0\n"
            "GdipCreatePen1(0xffe0e0e0 width=2 unit=0)=0\n"
            "CreateSolidBrush(0xe0e0e0)=1\n"
            "GdipLoadImageFromFile(NB.png)=0\n"
            "GdipLoadImageFromFile(NB-CRT.png)=0\n"
            "GdipLoadImageFromFile(CRT.png)=0\n"
            "GdipLoadImageFromFile(Extend.png)=0\n"
            "GdipLoadImageFromFile(bg_left.png)=0\n"
            "GdipLoadImageFromFile(bg_right.png)=0\n"
            "GdipLoadImageFromFile(bg_center.png)=0\n"
            "GdipLoadImageFromFile(selected.png)=0\n"
            "GdipCreateBitmapFromScan0(370x100 format=0x26200a)=0\n"
            "GdipCloneBitmapAreaI(0,0 370x100)=0\n"
            "UpdateLayeredWindow(size=370x100 flags=2)=1\n"
            "PostMessageA(id=1025 wparam=1 lparam=0)\n"
            "KillTimer(id=1234)=1\n"
            "SetTimer(id=1234 period=3000)=1\n");
}

TEST_F(PopupPicture, APressCostsOneCloneTwoDrawingsAndOneUpdate) {
  Open();
  const char* const kFunctions[] = {"GdipCloneBitmapAreaI",
                                    "GdipDrawImageRectI",
                                    "UpdateLayeredWindow",
                                    "GdipGetImageGraphicsContext",
                                    "GdipDeleteGraphics",
                                    "GdipCreateHBITMAPFromBitmap",
                                    "GdipDisposeImage",
                                    "GdipLoadImageFromFile",
                                    "GdipCreateBitmapFromScan0",
                                    "GetDC",
                                    "CreateCompatibleDC",
                                    "DeleteObject",
                                    "DeleteDC",
                                    "ReleaseDC",
                                    "GetClientRect",
                                    "InvalidateRect",
                                    "UpdateWindow",
                                    "KillTimer",
                                    "SetTimer"};
  const uint32_t kCosts[] = {1, 2, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  std::vector<uint32_t> before;
  for (const char* function : kFunctions) before.push_back(bench.machine.Calls(function));
  bench.ostrel().Run();
  for (size_t i = 0; i != before.size(); ++i) {
    EXPECT_EQ(bench.machine.Calls(kFunctions[i]) - before[i], kCosts[i]) << kFunctions[i];
  }
}

TEST_F(PopupPicture, AMouseMoveOntoAnotherItemCostsTheSame) {
  Open();
  const uint32_t clones = bench.machine.Calls("GdipCloneBitmapAreaI");
  const uint32_t drawings = bench.machine.Calls("GdipDrawImageRectI");
  const uint32_t updates = bench.machine.Calls("UpdateLayeredWindow");
  const uint32_t repaints = bench.machine.Calls("InvalidateRect");
  bench.machine.MoveMouse(200, 50);
  EXPECT_EQ(bench.machine.Calls("GdipCloneBitmapAreaI"), clones + 1);
  EXPECT_EQ(bench.machine.Calls("GdipDrawImageRectI"), drawings + 2);
  EXPECT_EQ(bench.machine.Calls("UpdateLayeredWindow"), updates + 1);
  EXPECT_EQ(bench.machine.Calls("InvalidateRect"), repaints + 1);
}

// --- What is drawn, and where.

TEST_F(PopupPicture, HasItsBackgroundBelowItsItems) {
  Open();
  const std::vector<Drawn>& drawing = bench.machine.PopupDrawing();
  // Left end, one centre a pixel column, right end, four items, and the highlight.
  constexpr size_t kColumns = 370 - 10 - 10;
  ASSERT_EQ(drawing.size(), 1 + kColumns + 1 + 4 + 2);
  EXPECT_EQ(Describe(drawing[0]), "bg_left.png at 0,0 10x100");
  for (size_t i = 0; i != kColumns; ++i) {
    const Drawn& column = drawing[1 + i];
    ASSERT_EQ(column.file, "bg_center.png");
    ASSERT_EQ(column.x, static_cast<int32_t>(10 + i));
    ASSERT_EQ(column.y, 0);
  }
  const size_t right = 1 + kColumns;
  EXPECT_EQ(Describe(drawing[right]), "bg_right.png at 360,0 10x100");
  EXPECT_EQ(Describe(drawing[right + 1]), "NB.png at 10,10 80x80");
  EXPECT_EQ(Describe(drawing[right + 2]), "NB-CRT.png at 100,10 80x80");
  EXPECT_EQ(Describe(drawing[right + 3]), "CRT.png at 190,10 80x80");
  EXPECT_EQ(Describe(drawing[right + 4]), "Extend.png at 280,10 80x80");
  EXPECT_EQ(Describe(drawing[right + 5]), "selected.png at 10,10 80x80");
  EXPECT_EQ(Describe(drawing[right + 6]), "NB.png at 10,10 80x80");
}

TEST_F(PopupPicture, OfOneItemIsAHundredSquare) {
  bench.script->connected = 0x01;
  bench.script->connected_count = 1;
  Open();
  EXPECT_EQ(bench.machine.PopupPicture().width, 100u);
  EXPECT_EQ(bench.machine.PopupPicture().height, 100u);
  EXPECT_EQ(bench.Highlight(), "selected.png at 10,10 80x80\nNB.png at 10,10 80x80\n");
}

TEST_F(PopupPicture, OfSevenItemsPutsTheFifthAt370) {
  bench.script->connected = 0x13;
  bench.script->connected_count = 3;
  Open();
  EXPECT_EQ(bench.machine.PopupPicture().width, 640u);
  for (int i = 0; i != 4; ++i) bench.ostrel().Run();
  EXPECT_EQ(bench.Highlight(), "selected.png at 370,10 80x80\nHDMI.png at 370,10 80x80\n");
}

TEST_F(PopupPicture, DrawsTheCentreAtItsOwnWidthOverItself) {
  WriteSolidPicture(Picture(L"bg_center.png"), 7, 100, 0x00FF00);
  Open();
  const Drawn& first = bench.machine.PopupDrawing()[1];
  const Drawn& second = bench.machine.PopupDrawing()[2];
  EXPECT_EQ(Describe(first), "bg_center.png at 10,0 7x100");
  EXPECT_EQ(Describe(second), "bg_center.png at 11,0 7x100");
}

TEST_F(PopupPicture, WithEndsWiderThanTheWindowHasNoCentreAndOverlappingEnds) {
  WriteSolidPicture(Picture(L"bg_left.png"), 300, 100, 0xFF0000);
  WriteSolidPicture(Picture(L"bg_right.png"), 200, 100, 0x0000FF);
  Open();
  const std::vector<Drawn>& drawing = bench.machine.PopupDrawing();
  EXPECT_EQ(Describe(drawing[0]), "bg_left.png at 0,0 300x100");
  EXPECT_EQ(Describe(drawing[1]), "bg_right.png at 170,0 200x100");
  EXPECT_EQ(Describe(drawing[2]), "NB.png at 10,10 80x80");
  EXPECT_EQ(Pixel(169, 5), 0xFF0000u);
  EXPECT_EQ(Pixel(170, 5), 0x0000FFu);  // the right end lies over the left one
}

TEST_F(PopupPicture, WithEndsThatJustFitHasNoCentre) {
  WriteSolidPicture(Picture(L"bg_left.png"), 170, 100, 0xFF0000);
  WriteSolidPicture(Picture(L"bg_right.png"), 200, 100, 0x0000FF);
  Open();
  EXPECT_EQ(Describe(bench.machine.PopupDrawing()[1]), "bg_right.png at 170,0 200x100");
}

TEST_F(PopupPicture, ScalesAPictureToEightyAndTheFrameNot) {
  WriteSolidPicture(Picture(L"NB.png"), 20, 20, 0x102030);
  WriteSolidPicture(Picture(L"selected.png"), 86, 84, 0xA0B0C0);
  Open();
  EXPECT_EQ(bench.Highlight(), "selected.png at 10,10 86x84\nNB.png at 10,10 80x80\n");
  EXPECT_EQ(Pixel(50, 50), 0x102030u);  // the picture stands on the frame
  EXPECT_EQ(Pixel(92, 50), 0xA0B0C0u);  // which reaches out behind it
  EXPECT_EQ(Pixel(50, 92), 0xA0B0C0u);
}

TEST_F(PopupPicture, TakesTheFrameFromTheOldItemWhenTheHighlightMoves) {
  WriteSolidPicture(Picture(L"selected.png"), 86, 84, 0xA0B0C0);
  Open();
  const uint32_t framed = Pixel(92, 50);
  bench.ostrel().Run();
  EXPECT_EQ(framed, 0xA0B0C0u);
  EXPECT_NE(Pixel(92, 50), framed);
  EXPECT_EQ(Pixel(182, 50), framed);
}

TEST_F(PopupPicture, FramesTheFirstFlaggedItemWhateverIsSelected) {
  Open();
  bench.box().FlagItem(2, 1);
  bench.box().SelectItem(3);
  EXPECT_EQ(bench.Flags(), "0011");
  EXPECT_EQ(bench.Highlight(), "selected.png at 190,10 80x80\nCRT.png at 190,10 80x80\n");
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "EnableExtendModeOnDisplays(1, 0x2)\n");
}

// --- Pictures that cannot be read.

TEST_F(PopupPicture, AMissingItemPictureIsDrawnEmptyAndStillFramed) {
  ASSERT_TRUE(DeleteFileW(Picture(L"CRT.png").c_str()));
  Open();
  EXPECT_EQ(bench.State().items.size(), 4u);
  EXPECT_EQ(bench.ItemPictures(), (Pictures{"NB.png", "NB-CRT.png", "Extend.png"}));
  bench.ostrel().Run();
  bench.ostrel().Run();
  EXPECT_EQ(bench.Highlight(), "selected.png at 190,10 80x80\n");
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(1, 0x2)\n");  // and it can be chosen
}

TEST_F(PopupPicture, ABrokenItemPictureIsDrawnEmpty) {
  Break(L"NB.png");
  Open();
  EXPECT_EQ(bench.ItemPictures(), (Pictures{"NB-CRT.png", "CRT.png", "Extend.png"}));
}

TEST_F(PopupPicture, WithoutAnyOfTheFourBackgroundsThereIsNoPopup) {
  ASSERT_TRUE(bench.Start());
  for (const wchar_t* name : {L"bg_left.png", L"bg_right.png", L"bg_center.png", L"selected.png"}) {
    const std::wstring aside = Picture(name) + L".aside";
    ASSERT_TRUE(MoveFileW(Picture(name).c_str(), aside.c_str()));
    EXPECT_FALSE(bench.ostrel().Run());
    EXPECT_EQ(bench.machine.Popup(), nullptr);
    EXPECT_FALSE(bench.State().has_backgrounds);
    EXPECT_TRUE(bench.State().items.empty());
    ASSERT_TRUE(MoveFileW(aside.c_str(), Picture(name).c_str()));
  }
  EXPECT_TRUE(bench.ostrel().Run());
}

TEST_F(PopupPicture, ABrokenBackgroundIsAsGoodAsNone) {
  Break(L"selected.png");
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.ostrel().Run());
  EXPECT_EQ(bench.TakeNotifications(), "");
}

TEST_F(PopupPicture, BackgroundsThatASessionLeftAreUsedAgain) {
  Open();
  bench.machine.Advance(3000);  // nothing was moved: the session has not ended
  const uint32_t loaded = bench.machine.Calls("GdipLoadImageFromFile");
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Calls("GdipLoadImageFromFile"), loaded + 4);  // the items' alone
}

TEST_F(PopupPicture, BackgroundsAreLoadedAnewAfterASwitch) {
  Open();
  bench.ostrel().Run();
  bench.machine.Advance(1500);
  const uint32_t loaded = bench.machine.Calls("GdipLoadImageFromFile");
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Calls("GdipLoadImageFromFile"), loaded + 8);
}

// --- Calls that fail. None may leak or crash; the library's unload tells leaks.

TEST_F(PopupPicture, WithoutABitmapThereIsNoPopup) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GdipCreateBitmapFromScan0", 1);
  EXPECT_FALSE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_FALSE(bench.State().has_backgrounds);
  EXPECT_FALSE(bench.State().has_whole_bitmap);
  EXPECT_TRUE(bench.ostrel().Run());
}

TEST_F(PopupPicture, WithoutPensThereIsOne) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GdipCreatePen1", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_TRUE(bench.ostrel().Run());
}

TEST_F(PopupPicture, WithoutAGraphicsForTheBackgroundShowsTheItems) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GdipGetImageGraphicsContext", 1);
  EXPECT_TRUE(bench.ostrel().Run());
  ASSERT_FALSE(bench.machine.PopupDrawing().empty());
  EXPECT_EQ(bench.machine.PopupDrawing()[0].file, "NB.png");
}

TEST_F(PopupPicture, WithoutAGraphicsForTheItemsShowsTheBackgroundAndTheHighlight) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GdipGetImageGraphicsContext", 2);
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.ItemPictures(), Pictures{});
  EXPECT_EQ(bench.Highlight(), "selected.png at 10,10 80x80\nNB.png at 10,10 80x80\n");
}

TEST_F(PopupPicture, WithoutAGraphicsForTheHighlightShowsNoFrame) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GdipGetImageGraphicsContext", 3);
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Highlight(), "");
}

TEST_F(PopupPicture, ASizeThatCannotBeReadCountsAsNothing) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GdipGetImageWidth", 1);  // the left end's
  EXPECT_TRUE(bench.ostrel().Run());
  const std::vector<Drawn>& drawing = bench.machine.PopupDrawing();
  bool found = false;
  for (const Drawn& drawn : drawing) {
    if (drawn.file != "bg_center.png") continue;
    EXPECT_EQ(drawn.x, 0);  // the middle begins where a left end of no width ends
    found = true;
    break;
  }
  EXPECT_TRUE(found);
}

TEST_F(PopupPicture, WithoutACloneNothingNewIsShown) {
  Open();
  bench.machine.Fail("GdipCloneBitmapAreaI", 1);
  const uint32_t updates = bench.machine.Calls("UpdateLayeredWindow");
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Flags(), "0100");
  EXPECT_EQ(bench.machine.Calls("UpdateLayeredWindow"), updates);
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Calls("UpdateLayeredWindow"), updates + 1);
}

class ComposingCall : public PopupPicture, public testing::WithParamInterface<const char*> {};

TEST_P(ComposingCall, MayFailOnceOrForGood) {
  ASSERT_TRUE(bench.Start());
  bench.machine.ForgiveUnusedFaults();  // not every function is called eight times
  for (uint32_t nth = 1; nth <= 8; ++nth) {
    for (const auto repeat : {sim::Machine::Repeat::kOnce, sim::Machine::Repeat::kFromThenOn}) {
      bench.machine.Fail(GetParam(), nth, 0, repeat);
      const bool opened = bench.ostrel().Run() != 0;
      EXPECT_EQ(opened, bench.machine.Popup() != nullptr) << nth;
      if (opened) bench.ostrel().Run();
      bench.machine.ClearFaults();
      EXPECT_TRUE(bench.ostrel().Stop());
      bench.box().EndSession();
      bench.Calls();
    }
  }
  EXPECT_TRUE(bench.ostrel().Run());
}

INSTANTIATE_TEST_SUITE_P(
    PopupPicture, ComposingCall,
    testing::Values("GdipLoadImageFromFile", "GdipGetImageWidth", "GdipGetImageHeight",
                    "GdipCreateBitmapFromScan0", "GdipCloneBitmapAreaI",
                    "GdipGetImageGraphicsContext", "GdipDrawImageRectI",
                    "GdipCreateHBITMAPFromBitmap", "GdipCreatePen1", "CreateSolidBrush", "GetDC",
                    "CreateCompatibleDC", "UpdateLayeredWindow", "CreateDialogParamA"),
    [](const testing::TestParamInfo<const char*>& info) { return std::string(info.param); });

}  // namespace
