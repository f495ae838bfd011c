#include <gtest/gtest.h>

#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

// After windows.h.
#include <winsvc.h>

namespace sim {
namespace {

constexpr char kMachine[] = "win7 intel: internal 1366x768 active";
constexpr DWORD kConfigOnly = SERVICE_QUERY_CONFIG;

class Services : public testing::Test {
 protected:
  Services() : machine(kMachine) {
    machine.model().services = {{"Dock", true}, {"Spooler", false}};
  }

  SC_HANDLE Manager() { return FAKE(OpenSCManagerW)(nullptr, nullptr, GENERIC_READ); }
  SC_HANDLE Open(SC_HANDLE manager, const wchar_t* name, DWORD access = GENERIC_READ) {
    return FAKE(OpenServiceW)(manager, name, access);
  }
  static void Close(SC_HANDLE handle) { EXPECT_TRUE(FAKE(CloseServiceHandle)(handle)); }
  static DWORD Error() { return GetLastError(); }

  Machine machine;
};

TEST_F(Services, RunningAndStoppedServicesAreTold) {
  const SC_HANDLE manager = Manager();
  ASSERT_NE(manager, nullptr);
  const struct {
    const wchar_t* name;
    DWORD state;
  } rows[] = {{L"Dock", SERVICE_RUNNING}, {L"spooler", SERVICE_STOPPED}};
  for (const auto& row : rows) {
    const SC_HANDLE service = Open(manager, row.name);
    ASSERT_NE(service, nullptr);
    SERVICE_STATUS status = {};
    EXPECT_TRUE(FAKE(QueryServiceStatus)(service, &status));
    EXPECT_EQ(status.dwCurrentState, row.state);
    Close(service);
  }
  Close(manager);
}

TEST_F(Services, StateIsTheOneOfTheMoment) {
  const SC_HANDLE manager = Manager();
  const SC_HANDLE service = Open(manager, L"Dock");
  machine.model().services[0].running = false;
  SERVICE_STATUS status = {};
  EXPECT_TRUE(FAKE(QueryServiceStatus)(service, &status));
  EXPECT_EQ(status.dwCurrentState, static_cast<DWORD>(SERVICE_STOPPED));
  Close(service);
  Close(manager);
}

TEST_F(Services, ServiceThatIsNotInstalledDoesNotExist) {
  const SC_HANDLE manager = Manager();
  EXPECT_EQ(Open(manager, L"Nobody"), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_SERVICE_DOES_NOT_EXIST));
  Close(manager);
}

TEST_F(Services, NamesThatCannotBeAreRefused) {
  const SC_HANDLE manager = Manager();
  EXPECT_EQ(Open(manager, L""), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_NAME));
  EXPECT_EQ(Open(manager, L"a\\b"), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_NAME));
  EXPECT_EQ(Open(manager, nullptr), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_ADDRESS));
  Close(manager);
}

TEST_F(Services, OnlyTheManagersHandleOpensServices) {
  const SC_HANDLE manager = Manager();
  const SC_HANDLE service = Open(manager, L"Dock");
  EXPECT_EQ(Open(service, L"Dock"), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  EXPECT_EQ(Open(nullptr, L"Dock"), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  SERVICE_STATUS status = {};
  EXPECT_FALSE(FAKE(QueryServiceStatus)(manager, &status));
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  Close(service);
  Close(manager);
}

TEST_F(Services, StatusNeedsTheRightToAskForIt) {
  const SC_HANDLE manager = Manager();
  const SC_HANDLE service = Open(manager, L"Dock", kConfigOnly);
  ASSERT_NE(service, nullptr);
  SERVICE_STATUS status = {};
  EXPECT_FALSE(FAKE(QueryServiceStatus)(service, &status));
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  Close(service);
  Close(manager);
}

TEST_F(Services, OtherMachinesAndDatabasesAreRefused) {
  EXPECT_EQ(FAKE(OpenSCManagerW)(L"\\\\other", nullptr, GENERIC_READ), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(RPC_S_SERVER_UNAVAILABLE));
  EXPECT_EQ(FAKE(OpenSCManagerW)(nullptr, L"ServicesFailed", GENERIC_READ), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_DATABASE_DOES_NOT_EXIST));
  EXPECT_EQ(FAKE(OpenSCManagerW)(nullptr, L"Else", GENERIC_READ), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_NAME));
  const SC_HANDLE manager = FAKE(OpenSCManagerW)(nullptr, L"ServicesActive", GENERIC_READ);
  ASSERT_NE(manager, nullptr);
  Close(manager);
}

TEST_F(Services, HandlesAreInTheLedgerUntilTheyAreClosed) {
  const SC_HANDLE manager = Manager();
  const SC_HANDLE service = Open(manager, L"Dock");
  EXPECT_NE(machine.Outstanding().find("service manager 0x"), std::string::npos);
  EXPECT_NE(machine.Outstanding().find("service 0x"), std::string::npos);
  Close(manager);
  EXPECT_EQ(machine.Outstanding().find("service manager 0x"), std::string::npos);
  EXPECT_NE(machine.Outstanding(), "");
  Close(service);
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST_F(Services, HandleClosedTwiceFailsTheTest) {
  const SC_HANDLE manager = Manager();
  Close(manager);
  CaughtFailures failures;
  EXPECT_FALSE(FAKE(CloseServiceHandle)(manager));
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  EXPECT_EQ(failures.list().size(), 1u);
}

TEST_F(Services, FaultsAnswerAsDocumentedAndLeaveNothingOpen) {
  machine.Fail("OpenSCManagerW", 1);
  EXPECT_EQ(Manager(), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  const SC_HANDLE manager = Manager();
  machine.Fail("OpenServiceW", 1);
  EXPECT_EQ(Open(manager, L"Dock"), nullptr);
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  const SC_HANDLE service = Open(manager, L"Dock");
  SERVICE_STATUS status = {};
  machine.Fail("QueryServiceStatus", 1, ERROR_INVALID_HANDLE);
  EXPECT_FALSE(FAKE(QueryServiceStatus)(service, &status));
  EXPECT_EQ(Error(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  machine.Fail("CloseServiceHandle", 1);
  EXPECT_FALSE(FAKE(CloseServiceHandle)(service));
  EXPECT_NE(machine.Outstanding().find("service 0x"), std::string::npos);
  Close(service);
  Close(manager);
  EXPECT_EQ(machine.Outstanding(), "");
}

}  // namespace
}  // namespace sim
