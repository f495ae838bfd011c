// The switch side's exports, and those that need no side.
#include "Common/Logging.h"
#include "Common/ProcessState.h"
#include "Common/Win.h"
#include "session/DMSwitch.h"
#include "session/ExportCall.h"
#include "session/Lifecycle.h"
#include "session/catalogue/RememberedSettings.h"

// The shell's path functions need what Common/Win.h brings.
#include <shlwapi.h>

namespace {

/// The session object while the switch side is up; null otherwise.
DMSwitch* ReadySession() { return g_switchReady ? g_pDMSwitchDialog : nullptr; }

// One press of the hotkey. @return the pop-up's window, null when it could not be opened
HWND Press() {
  DMSwitch* const session = ReadySession();
  if (session == nullptr) return nullptr;
  if (session->dialog() != nullptr) {
    session->MoveSelection(true);
  } else if (session->ShowPopup() == 0) {
    return nullptr;
  }
  return session->dialog();
}

}  // namespace

OstrelBool Ostrel_Init() {
  return ExportCall<BOOL>(0, [] { return StartSwitchSide(); });
}

void Ostrel_DeInit() {
  ExportCall([] { EndSwitchSide(); });
}

OstrelBool Ostrel_Run() {
  return ExportCall<BOOL>(0, [] { return Press() != nullptr ? 1 : 0; });
}

OstrelWindow Ostrel_RunEx() {
  return ExportCall<HWND>(nullptr, [] { return Press(); });
}

OstrelBool Ostrel_Stop() {
  return ExportCall<BOOL>(0, [] {
    DMSwitch* const session = ReadySession();
    if (session == nullptr) return 0;
    session->ClosePopup();
    // Deliberate: what became of the switch does not show in the result.
    session->ApplySelection();
    return 1;
  });
}

OstrelBool Ostrel_Cancel() {
  return ExportCall<BOOL>(0, [] {
    DMSwitch* const session = ReadySession();
    if (session == nullptr) return 0;
    if (session->SelectionChanged()) session->RestoreSelection();
    session->ClosePopup();
    return 1;
  });
}

OstrelBool Ostrel_SaveCurrentMode() {
  return ExportCall<BOOL>(0, [] {
    DMSwitch* const session = ReadySession();
    if (session == nullptr) return 0;
    // Deliberate: 1 also when nothing was written.
    session->SaveCurrentMode();
    return 1;
  });
}

OstrelBool Ostrel_RegisterNotification(OstrelWindow receiver, uint32_t message_id) {
  return ExportCall<BOOL>(0, [=] {
    DCHECK(g_pDMSwitchDialog != NULL);
    // Deliberate: without a session the store goes through the null pointer.
    g_pDMSwitchDialog->RegisterNotification(receiver, message_id);
    return 1;
  });
}

void Ostrel_SetLassoBoxStatus(uint32_t status) {
  ExportCall([status] { g_lassoBoxStatus = status; });
}

OstrelBool Ostrel_FlushRememberedSettings() {
  return ExportCall<BOOL>(0, [] {
    // Deliberate: works before any initialisation; no file to delete is 0.
    EnsureSettingsPath();
    if (!PathFileExistsA(SettingsPath().c_str())) return FALSE;
    return DeleteFileA(SettingsPath().c_str());
  });
}

// Deliberate: exported under a second name, too, Ostrel_DetectDisplayConnectedFeatureIsValid; the
// module definition file makes it.
OstrelBool Ostrel_PermitToChangeMode() {
  return ExportCall<BOOL>(0, [] { return 1; });
}
