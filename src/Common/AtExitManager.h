// What has to be undone when the library is unloaded. The entry point makes the one manager at
// attach and destroys it at detach.
#pragma once

#include <vector>

class AtExitManager {
 public:
  AtExitManager();
  /// Runs what was registered, the last first. A callback may register further ones; they run too.
  ~AtExitManager();
  AtExitManager(const AtExitManager&) = delete;
  AtExitManager& operator=(const AtExitManager&) = delete;

  /// Has `callback(parameter)` run when the current manager is destroyed. Without a manager nothing
  /// is kept.
  static void RegisterCallback(void (*callback)(void*), void* parameter);

 private:
  struct Entry {
    void (*callback)(void*);
    void* parameter;
  };
  std::vector<Entry> entries_;
};
