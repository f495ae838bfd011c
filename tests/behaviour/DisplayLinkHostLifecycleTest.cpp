// The library's own connection to the add-on host: when its two sides make and end it.
#include "sim/faces/DisplayLink.h"
#include "tests/behaviour/CoreHost.h"

namespace {

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active, crt 1024x768";

class DisplayLinkConnection : public testing::Test {
 protected:
  void On(const std::string& text) { host_ = std::make_unique<CoreHost>(text, L"--v=1"); }
  void OnNotebookWithService(bool running = true) {
    On(kNotebook);
    machine().model().services.push_back({"DisplayLinkService", running});
  }
  CoreHost& host() { return *host_; }
  sim::Machine& machine() { return host_->machine; }
  sim::Library& ostrel() { return host_->ostrel(); }
  const DisplayLinkBox& box() { return *ostrel().white_box().display_link; }
  bool IsConnected() { return box().ConnectedHost() != nullptr; }
  int32_t Clients() { return box().StateOf(box().ConnectedHost()).client_connections; }
  size_t InLog(const std::string& text) { return CountOf(machine().Log(), text); }

 private:
  std::unique_ptr<CoreHost> host_;
};

TEST_F(DisplayLinkConnection, TakesTheSharedHostAndLetsItGo) {
  OnNotebookWithService();
  EXPECT_FALSE(IsConnected());
  box().ConnectDisplayLinkHost();
  EXPECT_TRUE(IsConnected());
  EXPECT_EQ(box().GetInstance().get(), box().ConnectedHost());
  EXPECT_EQ(Clients(), 1);
  box().DisconnectDisplayLinkHost();
  EXPECT_FALSE(IsConnected());
  EXPECT_EQ(InLog("Disconnect() client_connections_ = 1\n"), 1u);
  EXPECT_FALSE(box().StateOf(box().GetInstance().get()).stop);  // the stopped one is gone
}

TEST_F(DisplayLinkConnection, WithoutAHostThereIsNothingToEnd) {
  OnNotebookWithService();
  box().DisconnectDisplayLinkHost();
  EXPECT_FALSE(IsConnected());
  EXPECT_EQ(InLog("Disconnect()"), 0u);
}

TEST_F(DisplayLinkConnection, MadeTwiceItCountsTwiceAndIsEndedOnce) {
  OnNotebookWithService();
  box().ConnectDisplayLinkHost();
  box().ConnectDisplayLinkHost();
  EXPECT_EQ(Clients(), 2);
  const auto host = box().GetInstance();
  box().DisconnectDisplayLinkHost();
  EXPECT_FALSE(IsConnected());
  EXPECT_EQ(box().StateOf(host.get()).client_connections, 1);
  box().DisconnectDisplayLinkHost();
  EXPECT_EQ(box().StateOf(host.get()).client_connections, 1);
  box().Disconnect(host.get());
}

// --- By the exports.

TEST_F(DisplayLinkConnection, IsMadeByTheFirstSideAndSharedByTheSecond) {
  OnNotebookWithService();
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_TRUE(IsConnected());
  EXPECT_EQ(Clients(), 2);  // the display object is the other
  ASSERT_TRUE(ostrel().Init());
  EXPECT_EQ(Clients(), 2);
  ostrel().DeInit();
  ostrel().DeInitExtendMode();
}

TEST_F(DisplayLinkConnection, EndsWithEitherSideForBoth) {
  OnNotebookWithService();
  ASSERT_TRUE(ostrel().InitExtendMode());
  ASSERT_TRUE(ostrel().Init());
  const auto host = box().GetInstance();
  ostrel().DeInit();
  EXPECT_FALSE(IsConnected());
  EXPECT_EQ(box().StateOf(host.get()).client_connections, 1);  // the object's, which stays
  EXPECT_FALSE(box().StateOf(host.get()).stop);
  ostrel().DeInitExtendMode();
  EXPECT_EQ(box().StateOf(host.get()).client_connections, 0);
  EXPECT_TRUE(box().StateOf(host.get()).stop);
}

TEST_F(DisplayLinkConnection, IsMadeWhileTheServiceIsStopped) {
  OnNotebookWithService(false);
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_TRUE(IsConnected());
  ostrel().DeInitExtendMode();
}

TEST_F(DisplayLinkConnection, IsNotMadeWithoutTheService) {
  On(kNotebook);
  ostrel().InitExtendMode();
  EXPECT_FALSE(IsConnected());
  EXPECT_EQ(machine().Calls("CreateThread"), 0u);
  EXPECT_GT(InLog("Cannot open DislayLink service"), 0u);
  ostrel().DeInitExtendMode();
}

TEST_F(DisplayLinkConnection, IsNotMadeBeforeWindows7) {
  On("vista intel: internal 1366x768 active, crt 1024x768");
  machine().model().services.push_back({"DisplayLinkService", true});
  ostrel().InitExtendMode();
  EXPECT_FALSE(IsConnected());
  EXPECT_EQ(machine().Calls("OpenSCManagerW"), 0u);
  ostrel().DeInitExtendMode();
}

TEST_F(DisplayLinkConnection, StaysWhenTheDisplayObjectCannotBeStarted) {
  OnNotebookWithService();
  machine().Fail("LoadLibraryA", 1, ERROR_MOD_NOT_FOUND, sim::Machine::Repeat::kFromThenOn);
  EXPECT_FALSE(ostrel().Init());
  // The object that did not start has taken the library's client away; the host is kept.
  ASSERT_TRUE(IsConnected());
  EXPECT_EQ(Clients(), 0);
  const auto host = box().GetInstance();
  EXPECT_FALSE(ostrel().Init());  // a client again, of the same host
  EXPECT_EQ(box().ConnectedHost(), host.get());
  EXPECT_EQ(Clients(), 0);
  EXPECT_EQ(InLog("::Connect() client_connections_ = 0\n"), 2u);
  EXPECT_EQ(InLog("::Disconnect() client_connections_ = 1\n"), 2u);
  EXPECT_EQ(machine().Calls("CreateThread"), 2u);
  box().DisconnectDisplayLinkHost();
  EXPECT_FALSE(IsConnected());
}

// --- With the simulated library: what a run of the thread leaves in the machine.

TEST_F(DisplayLinkConnection, SubscribesWithTheLibraryWhileItLasts) {
  On("win7 intel, displaylink: internal 1366x768 active, usb@2 1680x1050");
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_EQ(sim::NivoListeners(machine()), 0u);
  machine().Advance(200);
  EXPECT_EQ(sim::SubscribedPids(machine()),
            (std::vector<uint32_t>{0x1004307, 0x1000290, 0x10002E9}));
  EXPECT_EQ(sim::NivoListeners(machine()), 1u);
  EXPECT_EQ(box().NivoDisplays(box().ConnectedHost()).size(), 1u);
  machine().Unplug("usb");
  machine().Advance(200);
  EXPECT_EQ(box().NivoDisplays(box().ConnectedHost()).size(), 0u);
  ostrel().DeInitExtendMode();
  EXPECT_EQ(sim::NivoListeners(machine()), 0u);
  EXPECT_TRUE(sim::SubscribedPids(machine()).empty());
}

}  // namespace
