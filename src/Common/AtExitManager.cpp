#include "Common/AtExitManager.h"

namespace {
AtExitManager* g_current = nullptr;
}

AtExitManager::AtExitManager() { g_current = this; }

AtExitManager::~AtExitManager() {
  while (!entries_.empty()) {
    const Entry last = entries_.back();
    entries_.pop_back();
    last.callback(last.parameter);
  }
  g_current = nullptr;
}

void AtExitManager::RegisterCallback(void (*callback)(void*), void* parameter) {
  if (g_current != nullptr) g_current->entries_.push_back({callback, parameter});
}
