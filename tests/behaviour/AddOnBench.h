// The white-box build of the library on a notebook with a scripted DisplayLink add-on library.
#pragma once

#include <string>
#include <vector>

#include "sim/faces/StandardOutput.h"
#include "tests/behaviour/CoreHost.h"
#include "tests/behaviour/ScriptedAddOn.h"

class AddOnBench : public testing::Test {
 protected:
  using Host = displaylink::DisplayLinkAddOnHost;

  static constexpr char kLoaded[] = "\nApiDllLoadState: ApiLoadPending -> ApiLoaded\n";
  static constexpr char kDummy[] = "\nApiDllLoadState: ApiLoadPending -> DummyApiLoaded\n";
  static constexpr char kRetry[] = "\nApiDllLoadState: DummyApiLoaded -> ApiLoadPending\n";
  static constexpr char kSubscribed[] =
      "dlSubscribePids(1004307 1000290 10002e9 count 3, 0)\n"
      "dlRegisterNivoDisplayNotification(0)\n";
  static constexpr char kUnsubscribed[] =
      "dlUnRegisterNivoDisplayNotification(0)\n"
      "dlUnSubscribePids(null count -1, 0)\n";

  explicit AddOnBench(const std::wstring& switches = L"--v=1")
      : core("win7 intel: internal 1366x768 active, crt 1024x768", switches) {}
  ~AddOnBench() override { Settle(); }

  const DisplayLinkBox& box() { return *core.ostrel().white_box().display_link; }
  void Install() { add_on.Install(&core.machine); }
  std::string TakeOutput() { return sim::TakeStandardOutput(core.machine); }

  /// The host of the test's own reference, which ends with the test or by Drop.
  Host* host() {
    if (host_ == nullptr) host_ = box().GetInstance();
    return host_.get();
  }
  void Drop() { host_.reset(); }
  AddOnHostState state() { return box().StateOf(host()); }

  void Connect() { box().Connect(host()); }
  void Disconnect() { box().Disconnect(host()); }
  void Advance(uint32_t milliseconds) { core.machine.Advance(milliseconds); }
  void Tell(uint32_t event, uint64_t handle) {
    add_on.Tell(event, handle);
    Advance(100);
  }
  std::vector<uint64_t> Handles() {
    std::vector<uint64_t> handles;
    for (const displaylink::NivoDisplay& display : box().NivoDisplays(host())) {
      handles.push_back(display.handle);
    }
    return handles;
  }

  ScriptedAddOn add_on;
  CoreHost core;

 private:
  // A test that has failed may leave a client.
  void Settle() {
    while (host_ != nullptr && state().client_connections > 0) Disconnect();
    Drop();
  }

  boost::shared_ptr<Host> host_;
};
