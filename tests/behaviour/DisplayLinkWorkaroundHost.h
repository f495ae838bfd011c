// A notebook with the DisplayLink service on it, and the object that the service brings in
// Win7CCD's place.
#pragma once

#include <string>

#include "tests/behaviour/CcdReports.h"

struct DisplayLinkHost : CoreHost {
  /// On a machine with an adapter for USB the software is there anyway.
  explicit DisplayLinkHost(const std::string& text, const std::wstring& switches = L"--v=1")
      : CoreHost(text, switches) {
    if (machine.model().services.empty()) {
      machine.model().services.push_back({"DisplayLinkService", true});
    }
  }

  /// How the add-on host was joined and left since the last call, with the number of clients it had
  /// before: "Connect 0\nDisconnect 1\n".
  std::string TakeConnections() {
    const std::string log = TakeLog();
    std::string connections;
    size_t from = 0;
    for (size_t end = log.find('\n'); end != std::string::npos; end = log.find('\n', from)) {
      connections += Connection(log.substr(from, end - from));
      from = end + 1;
    }
    return connections;
  }

 private:
  static std::string Connection(const std::string& line) {
    const std::string kObject = "DisplayLinkAddOnHost::";
    const std::string kCount = "() client_connections_ = ";
    const size_t count = line.find(kCount);
    if (line.rfind(kObject, 0) != 0 || count == std::string::npos) return "";
    return line.substr(kObject.size(), count - kObject.size()) + " " +
           line.substr(count + kCount.size()) + "\n";
  }
};
