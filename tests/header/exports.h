/* Every export of the header, for the checks that a C and a C++ host make of it. */
#ifndef TESTS_HEADER_EXPORTS_H_
#define TESTS_HEADER_EXPORTS_H_

#define FOR_EVERY_EXPORT(X)                 \
  X(Ostrel_Init)                            \
  X(Ostrel_DeInit)                          \
  X(Ostrel_Run)                             \
  X(Ostrel_RunEx)                           \
  X(Ostrel_Stop)                            \
  X(Ostrel_Cancel)                          \
  X(Ostrel_SaveCurrentMode)                 \
  X(Ostrel_RegisterNotification)            \
  X(Ostrel_SetLassoBoxStatus)               \
  X(Ostrel_FlushRememberedSettings)         \
  X(Ostrel_InitExtendMode)                  \
  X(Ostrel_DeInitExtendMode)                \
  X(Ostrel_GetConnectedDisplays)            \
  X(Ostrel_GetActiveDisplays)               \
  X(Ostrel_GetCurrentDisplayMode)           \
  X(Ostrel_SetNewDisplayMode)               \
  X(Ostrel_EnableExtendMode)                \
  X(Ostrel_IsExtendModeEnabled)             \
  X(Ostrel_ChangeToNBOnlySingleDisplayMode) \
  X(Ostrel_HasDualOutputCapability)         \
  X(Ostrel_HasExternalMonitorConnected)     \
  X(Ostrel_GetVgaVendor)                    \
  X(Ostrel_PermitToChangeMode)              \
  X(Ostrel_DetectDisplayConnectedFeatureIsValid)

/* The name of a number in the header, and what it must be. */
#define FOR_EVERY_NUMBER(X)        \
  X(OSTREL_MODE_OTHER, 0)          \
  X(OSTREL_MODE_SINGLE, 1)         \
  X(OSTREL_MODE_CLONE, 2)          \
  X(OSTREL_MODE_EXTEND, 3)         \
  X(OSTREL_MODE_HSPAN, 4)          \
  X(OSTREL_MODE_VSPAN, 5)          \
  X(OSTREL_DISPLAY_PANEL, 1)       \
  X(OSTREL_DISPLAY_CRT, 2)         \
  X(OSTREL_DISPLAY_TV, 4)          \
  X(OSTREL_DISPLAY_DVI, 8)         \
  X(OSTREL_VENDOR_UNKNOWN, 0)      \
  X(OSTREL_VENDOR_INTEL, 1)        \
  X(OSTREL_VENDOR_AMD, 2)          \
  X(OSTREL_VENDOR_NVIDIA, 3)       \
  X(OSTREL_VENDOR_VIA, 4)          \
  X(OSTREL_VENDOR_SIS, 5)          \
  X(OSTREL_NOTIFICATION_OPENED, 1) \
  X(OSTREL_NOTIFICATION_CLOSED, 2) \
  X(OSTREL_FIRST_MESSAGE_ID, 1024)

#endif
