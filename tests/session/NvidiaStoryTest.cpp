// Presses of the hotkey on notebooks that switch through NVIDIA's driver: the library as it ships,
// its own calls, the driver of the simulated machine.

#include "ostrel/ostrel.h"
#include "sim/faces/NvidiaDriver.h"
#include "tests/session/Story.h"

namespace {

/// A switch to one item: what the driver was told, and what came of it in the end.
struct Switch {
  const char* picture;
  const char* driver;    // the arguments of its one call; its result is 0
  const char* topology;  // and the desktops from left to right
  const char* desktops;
};
struct Notebook {
  const char* file;
  const char* function;  // the one that this notebook's driver is asked to switch with
  const char* connected;
  Pictures offered;
  Switch back;  // to the panel alone, after each of the others
  std::vector<Switch> switches;
};

std::ostream& operator<<(std::ostream& out, const Notebook& notebook) {
  return out << notebook.file;
}

class NvidiaStory : public Story {
 protected:
  void OnNotebook(const std::string& file) {
    OnFile(file);
    ThroughTheVendor();
  }
  void TearDown() override {
    if (ostrel) ostrel->DeInitExtendMode();
    Story::TearDown();
  }

  /// The mask and the number of displays.
  std::string Connected() {
    EXPECT_TRUE(ostrel->InitExtendMode());
    uint32_t displays = 0;
    uint32_t count = 0;
    EXPECT_TRUE(ostrel->GetConnectedDisplays(&displays, &count));
    return std::to_string(displays) + " (" + std::to_string(count) + ")";
  }
  void SwitchTo(const Switch& item, const std::string& function) {
    machine->TakeJournal();
    Choose(item.picture);
    EXPECT_EQ(TakeLines({"NvAPI_"}), function + "(" + item.driver + ")=0\n") << item.picture;
    EXPECT_EQ(machine->Topology(), item.topology);
    EXPECT_EQ(Desktops(), item.desktops);
    Look();
    EXPECT_EQ(Highlighted(), item.picture);
  }
};

// --- Every item of the pop-up, and back.

constexpr char kPaths[] = "NvAPI_DISP_SetDisplayConfig";
constexpr char kView[] = "NvAPI_SetViewEx";

// The driver is told 1024x768 for anything but an extended desktop; the size that the displays take
// best comes behind it.
const Notebook kWindows7 = {
    "nvidia-panel-crt",
    kPaths,
    "3 (2)",
    {"NB.png", "NB-CRT.png", "CRT.png", "p1024x768.png", "Extend.png"},
    {"NB.png", "flags=2 paths=[[[display=0x80061001 internal] 1024x768x32 format=21 gdi]]",
     "single internal", "internal 1920x1080x32@60 at 0,0"},
    {{"NB-CRT.png",
      "flags=2 paths=[[[display=0x80061001 internal] [display=0x80061002 crt] 1024x768x32 "
      "format=21 gdi]]",
      "clone internal+crt", "internal+crt 1024x768x32@60 at 0,0"},
     {"CRT.png", "flags=2 paths=[[[display=0x80061002 crt] 1024x768x32 format=21 gdi]]",
      "single crt", "crt 1024x768x32@60 at 0,0"},
     {"Extend.png",
      "flags=10 paths=[[[display=0x80061001 internal] 1920x1080x32 format=21 gdi] "
      "[[display=0x80061002 crt] 1024x768x32 format=21 at 1920,0]]",
      "extend internal+crt", "internal 1920x1080x32@60 at 0,0; crt 1024x768x32@60 at 1920,0"}}};

const Notebook kVista = {
    "vista-nvidia",
    kView,
    "3 (2)",
    {"NB.png", "NB-CRT.png", "CRT.png", "p1024x768.png", "Extend.png"},
    {"NB.png", "handle=1 view=0 paths=[[mask=0x10000 1024x768x32@60 source=0 primary gdi]]",
     "single internal", "internal 1280x800x32@60 at 0,0"},
    {{"NB-CRT.png",
      "handle=1 view=1 paths=[[mask=0x10000 1024x768x32@60 source=0 primary gdi] "
      "[mask=0x1 1024x768x32@60 source=0]]",
      "clone internal+crt", "internal+crt 1280x800x32@60 at 0,0"},
     {"CRT.png", "handle=1 view=0 paths=[[mask=0x1 1024x768x32@60 source=0 primary gdi]]",
      "single crt", "crt 1280x1024x32@60 at 0,0"},
     {"Extend.png",
      "handle=1 view=4 paths=[[mask=0x10000 1280x800x32@60 source=0 gdi] "
      "[mask=0x1 1024x768x32@60 source=0 at 1280,0]]",
      "extend internal+crt", "internal 1280x800x32@60 at 0,0; crt 1280x1024x32@60 at 1280,0"}}};

// Below Vista the size comes back when the display changes have come to rest.
const Notebook kServer2003 = {
    "server2003-nvidia",
    kView,
    "9 (2)",
    {"NB.png", "NB-DVI.png", "DVI.png", "p1024x768.png", "Extend.png"},
    {"NB.png", "handle=1 view=0 paths=[[mask=0x10000 1024x768x32@60 source=0 primary gdi]]",
     "single internal", "internal 1280x800x32@60 at 0,0"},
    {{"NB-DVI.png",
      "handle=1 view=1 paths=[[mask=0x10000 1024x768x32@60 source=0 primary gdi] "
      "[mask=0x20000 1024x768x32@60 source=0]]",
      "clone internal+dvi", "internal+dvi 1280x800x32@60 at 0,0"},
     {"DVI.png", "handle=1 view=0 paths=[[mask=0x20000 1024x768x32@60 source=0 primary gdi]]",
      "single dvi", "dvi 1600x1200x32@60 at 0,0"},
     {"Extend.png",
      "handle=1 view=4 paths=[[mask=0x10000 1280x800x32@60 source=0 gdi] "
      "[mask=0x20000 1024x768x32@60 source=0 at 1280,0]]",
      "extend internal+dvi", "internal 1280x800x32@60 at 0,0; dvi 1600x1200x32@60 at 1280,0"}}};

// The export tells no HDMI, and counts it.
const Notebook kDiscrete = {
    "intel-nvidia-discrete",
    kPaths,
    "1 (2)",
    {"NB.png", "NB-HDMI.png", "HDMI.png", "p1024x768.png", "Extend.png"},
    {"NB.png", "flags=2 paths=[[[display=0x80062001 internal] 1024x768x32 format=21 gdi]]",
     "single internal", "internal 1600x900x32@60 at 0,0"},
    {{"NB-HDMI.png",
      "flags=2 paths=[[[display=0x80062001 internal] [display=0x80062002 hdmi] 1024x768x32 "
      "format=21 gdi]]",
      "clone internal+hdmi", "internal+hdmi 1600x900x32@60 at 0,0"},
     {"HDMI.png", "flags=2 paths=[[[display=0x80062002 hdmi] 1024x768x32 format=21 gdi]]",
      "single hdmi", "hdmi 1920x1080x32@60 at 0,0"},
     {"Extend.png",
      "flags=10 paths=[[[display=0x80062001 internal] 1600x900x32 format=21 gdi] "
      "[[display=0x80062002 hdmi] 1920x1080x32 format=21 at 1600,0]]",
      "extend internal+hdmi", "internal 1600x900x32@60 at 0,0; hdmi 1920x1080x32@60 at 1600,0"}}};

class NvidiaNotebook : public NvidiaStory, public testing::WithParamInterface<Notebook> {
 protected:
  void SetUp() override { OnNotebook(GetParam().file); }
};

TEST_P(NvidiaNotebook, ReportsItsDisplaysAndOffersTheirItems) {
  StartProcess();
  EXPECT_EQ(Connected(), GetParam().connected);
  EXPECT_EQ(ostrel->GetVgaVendor(), OSTREL_VENDOR_NVIDIA);
  EXPECT_EQ(Look(), GetParam().offered);
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(TakeLines({"NvAPI_"}), "");
}

TEST_P(NvidiaNotebook, GoesToEachItemAndBack) {
  StartProcess();
  for (const Switch& item : GetParam().switches) {
    SwitchTo(item, GetParam().function);
    SwitchTo(GetParam().back, GetParam().function);
  }
}

TEST_P(NvidiaNotebook, GoesFromItemToItem) {
  StartProcess();
  std::vector<Switch> items(GetParam().switches.rbegin(), GetParam().switches.rend());
  items.push_back(items.front());
  for (const Switch& item : items) {
    Choose(item.picture);
    EXPECT_EQ(machine->Topology(), item.topology);
  }
}

TEST_P(NvidiaNotebook, RefusedSwitchLeavesTheNotebookAsItIs) {
  machine->Fail(GetParam().function, 1, 0, sim::Machine::Repeat::kFromThenOn);
  StartProcess();
  const std::string before = Desktops();
  Choose(GetParam().switches[0].picture);
  EXPECT_EQ(Desktops(), before);
  EXPECT_EQ(Remembered().find("Active Display Mode"), std::string::npos);
}

TEST_P(NvidiaNotebook, GivesTheDriversLibraryBack) {
  StartProcess();
  Choose(GetParam().switches[0].picture);
  EXPECT_GE(sim::NvInitializations(*machine), 1u);
  EndProcess();
  EXPECT_EQ(sim::NvInitializations(*machine), 0u);
  EXPECT_EQ(machine->Outstanding(), "");
}

INSTANTIATE_TEST_SUITE_P(Folder, NvidiaNotebook,
                         testing::Values(kWindows7, kVista, kServer2003, kDiscrete),
                         [](const testing::TestParamInfo<Notebook>& info) {
                           std::string name = info.param.file;
                           for (char& letter : name) letter = letter == '-' ? '_' : letter;
                           return name;
                         });

// --- The size that was left is the size that comes back.

struct Memory {
  const char* file;
  const char* clone;
  const char* connectors;
};
class NvidiaMemory : public NvidiaStory, public testing::WithParamInterface<Memory> {
 protected:
  void SetUp() override { OnNotebook(GetParam().file); }
  std::string At(const char* size) {
    return std::string(GetParam().connectors) + " " + size + "x32@60 at 0,0";
  }
};

TEST_P(NvidiaMemory, CloneComesBackInTheSizeOfTheLastTime) {
  StartProcess();
  Choose(GetParam().clone);
  UserSets("internal", 800, 600);
  Choose("NB.png");
  EXPECT_NE(Desktops(), "internal 800x600x32@60 at 0,0");
  Choose(GetParam().clone);
  EXPECT_EQ(Desktops(), At("800x600"));
}

TEST_P(NvidiaMemory, AndInTheNextProcessThoughWindowsForgot) {
  StartProcess();
  Choose(GetParam().clone);
  UserSets("internal", 800, 600);
  Choose("NB.png");
  EndProcess();
  WindowsForgets();
  StartProcess();
  Choose(GetParam().clone);
  EXPECT_EQ(Desktops(), At("800x600"));
}

INSTANTIATE_TEST_SUITE_P(Folder, NvidiaMemory,
                         testing::Values(Memory{"nvidia-panel-crt", "NB-CRT.png", "internal+crt"},
                                         Memory{"vista-nvidia", "NB-CRT.png", "internal+crt"},
                                         Memory{"server2003-nvidia", "NB-DVI.png", "internal+dvi"},
                                         Memory{"intel-nvidia-discrete", "NB-HDMI.png",
                                                "internal+hdmi"}),
                         [](const testing::TestParamInfo<Memory>& info) {
                           std::string name = info.param.file;
                           for (char& letter : name) letter = letter == '-' ? '_' : letter;
                           return name;
                         });

// The panel is told the size that the monitor had, and cannot show it.
class NvidiaVista : public NvidiaStory {
 protected:
  void SetUp() override { OnNotebook("vista-nvidia"); }
};

TEST_F(NvidiaVista, ExtendedDesktopFromALargerMonitorAloneIsRefused) {
  StartProcess();
  Choose("CRT.png");
  machine->TakeJournal();
  Choose("Extend.png");
  EXPECT_EQ(TakeLines({"NvAPI_"}),
            "NvAPI_SetViewEx(handle=1 view=4 paths=[[mask=0x10000 1280x1024x32@60 source=0 gdi] "
            "[mask=0x1 1024x768x32@60 source=0 at 1280,0]])=-1\n");
  EXPECT_EQ(machine->Topology(), "single crt");
}

// --- Two adapters: which of them leads is the driver's to say.

class TwoAdapters : public NvidiaStory {
 protected:
  std::string Vendor() {
    StartProcess();
    const uint32_t vendor = ostrel->GetVgaVendor();
    EndProcess();
    return vendor == OSTREL_VENDOR_NVIDIA  ? "nvidia"
           : vendor == OSTREL_VENDOR_INTEL ? "intel"
                                           : std::to_string(vendor);
  }
};

TEST_F(TwoAdapters, NvidiaLeadsInModes1And3) {
  OnNotebook("intel-nvidia-discrete");
  std::optional<uint32_t>& mode = machine->model().adapters[1].nvidia_hybrid_mode;
  EXPECT_EQ(Vendor(), "nvidia");
  mode = 3;
  EXPECT_EQ(Vendor(), "nvidia");
  for (const uint32_t other : {0U, 2U, 4U}) {
    mode = other;
    EXPECT_EQ(Vendor(), "intel") << other;
  }
  mode.reset();  // the driver does not tell
  EXPECT_EQ(Vendor(), "intel");
}

class Integrated : public NvidiaStory {
 protected:
  void SetUp() override { OnNotebook("intel-nvidia-integrated"); }
};

TEST_F(Integrated, IntelsDriverSwitchesAndNvidiasOnlyAnswers) {
  StartProcess();
  EXPECT_EQ(Connected(), "1 (2)");
  EXPECT_EQ(ostrel->GetVgaVendor(), OSTREL_VENDOR_INTEL);
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-HDMI.png", "HDMI.png", "p1024x768.png", "Extend.png"}));
  const Switch items[] = {
      {"NB-HDMI.png", "", "clone internal+hdmi", "internal+hdmi 1600x900x32@60 at 0,0"},
      {"HDMI.png", "", "single hdmi", "hdmi 1920x1080x32@60 at 0,0"},
      {"Extend.png", "", "extend internal+hdmi",
       "internal 1600x900x32@60 at 0,0; hdmi 1920x1080x32@60 at 1600,0"}};
  for (const Switch& item : items) {
    for (const Switch& one :
         {item, Switch{"NB.png", "", "single internal", "internal 1600x900x32@60 at 0,0"}}) {
      machine->TakeJournal();
      Choose(one.picture);
      EXPECT_EQ(machine->Topology(), one.topology);
      EXPECT_EQ(Desktops(), one.desktops);
      EXPECT_EQ(machine->Journal().find("NvAPI_"), std::string::npos);
      EXPECT_NE(TakeLines({"ICUIExternal8::ChangeActiveDevices("}), "");
    }
  }
  EXPECT_GE(machine->Calls("NvAPI_GetHybridMode"), 1u);
}

TEST_F(Integrated, CloneComesBackInTheSizeOfTheLastTime) {
  StartProcess();
  Choose("NB-HDMI.png");
  UserSets("internal", 800, 600);
  Choose("NB.png");
  Choose("NB-HDMI.png");
  EXPECT_EQ(Desktops(), "internal+hdmi 800x600x32@60 at 0,0");
}

}  // namespace
