// Whether the DisplayLink software is on the machine.
#include "tests/behaviour/CoreHost.h"

namespace {

class DisplayLinkService : public testing::Test {
 protected:
  DisplayLinkService() : host("win7 intel: internal 1366x768 active, crt 1024x768") {
    host.ostrel();
    host.ForgetLog();
    at_rest_ = host.machine.Outstanding();
  }
  ~DisplayLinkService() override { EXPECT_EQ(host.machine.Outstanding(), at_rest_); }

  bool IsPresent() { return host.ostrel().white_box().display_link->IsDisplayLinkServicePresent(); }
  void Add(const char* name, bool running) {
    host.machine.model().services.push_back({name, running});
  }

  CoreHost host;

 private:
  std::string at_rest_;
};

TEST_F(DisplayLinkService, IsPresentWhileItRuns) {
  Add("DisplayLinkService", true);
  EXPECT_TRUE(IsPresent());
  EXPECT_EQ(host.TakeLog(), "");
}

TEST_F(DisplayLinkService, IsPresentWhileItIsStopped) {
  Add("DisplayLinkService", false);
  EXPECT_TRUE(IsPresent());
  EXPECT_EQ(host.machine.Calls("QueryServiceStatus"), 0u);
}

TEST_F(DisplayLinkService, IsAskedForByNameAndGivenBack) {
  Add("DisplayLinkService", true);
  host.machine.JournalReads(true);
  EXPECT_TRUE(IsPresent());
  EXPECT_EQ(host.machine.TakeJournal(),
            "OpenSCManagerW(0x80000000)=0\n"
            "OpenServiceW(DisplayLinkService 0x80000101)=0\n");
  EXPECT_EQ(host.machine.Calls("CloseServiceHandle"), 2u);
}

TEST_F(DisplayLinkService, IsAbsentWhenNoServiceHasItsName) {
  Add("DisplayLinkManager", true);
  EXPECT_FALSE(IsPresent());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "INFO Cannot open DislayLink service, name = DisplayLinkService, last error = 1060\n");
  EXPECT_EQ(host.machine.Calls("CloseServiceHandle"), 1u);
}

TEST_F(DisplayLinkService, IsAbsentWhenItMayNotBeOpened) {
  Add("DisplayLinkService", true);
  host.machine.Fail("OpenServiceW", 1, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(IsPresent());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "INFO Cannot open DislayLink service, name = DisplayLinkService, last error = 5\n");
}

TEST_F(DisplayLinkService, IsAbsentWhenTheManagerCannotBeOpened) {
  Add("DisplayLinkService", true);
  host.machine.Fail("OpenSCManagerW", 1, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(IsPresent());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Cannot open Service Control Manager, last error = 5\n");
  EXPECT_EQ(host.machine.Calls("OpenServiceW"), 0u);
  EXPECT_EQ(host.machine.Calls("CloseServiceHandle"), 0u);
}

TEST_F(DisplayLinkService, IsAskedAboutAnewEachTime) {
  EXPECT_FALSE(IsPresent());
  Add("DisplayLinkService", false);
  EXPECT_TRUE(IsPresent());
}

}  // namespace
