/*
 * Ostrel: switches a notebook's displays on the press of a hotkey.
 *
 * For C and C++ hosts on 64-bit Windows. Link with the import library (Ostrel.lib,
 * libOstrel.dll.a), or bind at run time with LoadLibrary and GetProcAddress; for that every export
 * has a pointer type of its own name, with "Proc" behind it:
 *
 *     HMODULE library = LoadLibraryA("Ostrel.dll");
 *     Ostrel_InitProc init = (Ostrel_InitProc)(void*)GetProcAddress(library, "Ostrel_Init");
 *
 * A host that binds at run time may define OSTREL_NO_PROTOTYPES before it includes this header.
 *
 * TWO SIDES. The switch side (Ostrel_Init to Ostrel_DeInit) is the pop-up that a press of the
 * hotkey opens. The extend-mode side (Ostrel_InitExtendMode to Ostrel_DeInitExtendMode) is queries
 * and commands without any user interface. A host may use one, the other, or both, in either order;
 * they share one connection to the graphics driver.
 *
 * CALLING ORDER
 *   1. Ostrel_Init, and Ostrel_InitExtendMode if queries are wanted.
 *   2. Ostrel_RegisterNotification, once, after Ostrel_Init has succeeded.
 *   3. On each press of the hotkey, Ostrel_Run or Ostrel_RunEx.
 *   4. Optionally Ostrel_Stop or Ostrel_Cancel, to end the pop-up before its timer does.
 *   5. Ostrel_DeInit and Ostrel_DeInitExtendMode.
 * An export that is called while its side is not up gives its failure result, 0, and changes no
 * display; the one exception is Ostrel_RegisterNotification.
 *
 * THREADS. There is no lock: call all exports from one thread at a time, and those of the pop-up
 * (Run, RunEx, Stop, Cancel, DeInit) from the thread that opened it. That thread must pump window
 * messages: the pop-up, its timer and the switch itself run inside the host's message loop, which
 * is held up for as long as a switch takes. No export waits for the user.
 *
 * COM. The library never initialises COM. With Intel graphics the calling thread must have done so.
 * On the extend-mode side the library calls CoUninitialize once: when Ostrel_DeInitExtendMode ends
 * the last side, or when Ostrel_InitExtendMode fails while no side is up.
 *
 * FAILURES. No exception and no message box ever leaves the library. Failures show in the results
 * told below and, many of them, in the log, %APPDATA%\hd\Ostrel.log.
 */
#ifndef OSTREL_OSTREL_H_
#define OSTREL_OSTREL_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A 32-bit truth value: 0 is false or failure, everything else true or success. BOOL's type. */
typedef int OstrelBool;

/* A window handle. The same type as HWND, without the need for windows.h. */
struct HWND__;
#ifdef NO_STRICT
typedef void* OstrelWindow;
#else
typedef struct HWND__* OstrelWindow;
#endif

/* Display modes, as Ostrel_GetCurrentDisplayMode writes them. */
#define OSTREL_MODE_OTHER 0u  /* no number here: three displays, or two adapters side by side */
#define OSTREL_MODE_SINGLE 1u /* one display shows the desktop */
#define OSTREL_MODE_CLONE 2u  /* two displays show the same desktop */
#define OSTREL_MODE_EXTEND 3u /* the desktop extends over the displays */
#define OSTREL_MODE_HSPAN 4u  /* one desktop, spanned horizontally */
#define OSTREL_MODE_VSPAN 5u  /* one desktop, spanned vertically */

/* Displays. A mask holds one bit for each; outputs without a bit here (HDMI, DisplayPort) are
 * dropped from masks. */
#define OSTREL_DISPLAY_PANEL 0x1u /* the notebook's built-in panel */
#define OSTREL_DISPLAY_CRT 0x2u   /* analogue VGA output */
#define OSTREL_DISPLAY_TV 0x4u    /* S-Video, composite or component television output */
#define OSTREL_DISPLAY_DVI 0x8u   /* DVI output */

/* Graphics vendors, as Ostrel_GetVgaVendor returns them. */
#define OSTREL_VENDOR_UNKNOWN 0u
#define OSTREL_VENDOR_INTEL 1u
#define OSTREL_VENDOR_AMD 2u
#define OSTREL_VENDOR_NVIDIA 3u
#define OSTREL_VENDOR_VIA 4u
#define OSTREL_VENDOR_SIS 5u

/*
 * Notification codes: wParam of the message that the library posts (never sends) to the registered
 * window. lParam is always 0. CLOSED is posted before any change of the displays begins; nothing is
 * posted when a change is done.
 */
#define OSTREL_NOTIFICATION_OPENED 1u /* the pop-up has just been created */
#define OSTREL_NOTIFICATION_CLOSED 2u /* the pop-up has just been destroyed, whatever ended it */

/* The lowest message number that is ever posted: WM_USER. */
#define OSTREL_FIRST_MESSAGE_ID 1024u

/* ---- Pointer types for hosts that bind at run time ---- */

typedef OstrelBool (*Ostrel_InitProc)(void);
typedef void (*Ostrel_DeInitProc)(void);
typedef OstrelBool (*Ostrel_RunProc)(void);
typedef OstrelWindow (*Ostrel_RunExProc)(void);
typedef OstrelBool (*Ostrel_StopProc)(void);
typedef OstrelBool (*Ostrel_CancelProc)(void);
typedef OstrelBool (*Ostrel_SaveCurrentModeProc)(void);
typedef OstrelBool (*Ostrel_RegisterNotificationProc)(OstrelWindow receiver, uint32_t message_id);
typedef void (*Ostrel_SetLassoBoxStatusProc)(uint32_t status);
typedef OstrelBool (*Ostrel_FlushRememberedSettingsProc)(void);
typedef OstrelBool (*Ostrel_InitExtendModeProc)(void);
typedef void (*Ostrel_DeInitExtendModeProc)(void);
typedef OstrelBool (*Ostrel_GetConnectedDisplaysProc)(uint32_t* displays, uint32_t* count);
typedef OstrelBool (*Ostrel_GetActiveDisplaysProc)(uint32_t* displays, uint32_t* count);
typedef OstrelBool (*Ostrel_GetCurrentDisplayModeProc)(uint32_t* mode, uint32_t* displays);
typedef OstrelBool (*Ostrel_SetNewDisplayModeProc)(uint32_t mode, uint32_t displays);
typedef OstrelBool (*Ostrel_EnableExtendModeProc)(uint32_t enable);
typedef OstrelBool (*Ostrel_IsExtendModeEnabledProc)(void);
typedef OstrelBool (*Ostrel_ChangeToNBOnlySingleDisplayModeProc)(void);
typedef OstrelBool (*Ostrel_HasDualOutputCapabilityProc)(void);
typedef OstrelBool (*Ostrel_HasExternalMonitorConnectedProc)(void);
typedef uint32_t (*Ostrel_GetVgaVendorProc)(void);
typedef OstrelBool (*Ostrel_PermitToChangeModeProc)(void);
typedef OstrelBool (*Ostrel_DetectDisplayConnectedFeatureIsValidProc)(void);

#ifndef OSTREL_NO_PROTOTYPES

#if defined(OSTREL_BUILDING) || !defined(_WIN32)
#define OSTREL_API
#else
#define OSTREL_API __declspec(dllimport)
#endif

/* ---- The switch side: the pop-up ---- */

/*
 * Starts the switch side: GDI+, the graphics driver, the pop-up's object.
 * Needs:  nothing; a second call while the side is up returns 1 at once.
 * Gives:  1; 0 when GDI+ cannot be started, no display object answers for this machine, or it
 *         cannot be initialised. After a failure GDI+ is stopped again and the call may be
 *         repeated.
 * Never:  opens a window, changes a display, initialises COM.
 */
OSTREL_API OstrelBool Ostrel_Init(void);

/*
 * Ends the switch side. An open pop-up is destroyed (OSTREL_NOTIFICATION_CLOSED is posted) and its
 * selection is NOT applied. Ostrel_Init may follow and starts from the beginning; configuration
 * values stay as they were first read.
 * Needs:  Ostrel_Init; does nothing otherwise. The thread that opened the pop-up.
 * Never:  changes a display, calls CoUninitialize.
 */
OSTREL_API void Ostrel_DeInit(void);

/*
 * One press of the hotkey: opens the pop-up, or moves the highlight one forward when it is open.
 * The pop-up closes by itself 3000 ms after opening, 1500 ms after the last touch, and then the
 * highlighted mode is switched to.
 * Needs:  Ostrel_Init, and a thread that pumps messages.
 * Gives:  1 when the pop-up is open now; 0 when it could not be opened or the side is not up.
 * Never:  waits for the user; tells whether the later switch succeeds.
 */
OSTREL_API OstrelBool Ostrel_Run(void);

/*
 * As Ostrel_Run, with another result.
 * Needs:  Ostrel_Init, and a thread that pumps messages.
 * Gives:  the pop-up's window, which belongs to the library: do not destroy it. Null on failure.
 * Never:  waits for the user.
 */
OSTREL_API OstrelWindow Ostrel_RunEx(void);

/*
 * Ends the pop-up now and switches to the highlighted mode on the calling thread, which is held up
 * meanwhile. Without a pop-up it applies what a refused switch left selected, usually nothing.
 * Needs:  Ostrel_Init, and the thread that opened the pop-up.
 * Gives:  1 whatever became of the switch; 0 only when the side is not up.
 * Never:  tells whether the switch succeeded.
 */
OSTREL_API OstrelBool Ostrel_Stop(void);

/*
 * Ends the pop-up and puts the highlight back to the current mode.
 * Needs:  Ostrel_Init, and the thread that opened the pop-up.
 * Gives:  1, pop-up or not; 0 only when the side is not up.
 * Never:  changes a display.
 */
OSTREL_API OstrelBool Ostrel_Cancel(void);

/*
 * Writes the last applied mode to Ostrel.ini, while a list of modes exists: during a pop-up, or
 * after one that changed nothing.
 * Needs:  Ostrel_Init.
 * Gives:  1, also when nothing was written; 0 only when the side is not up.
 */
OSTREL_API OstrelBool Ostrel_SaveCurrentMode(void);

/*
 * Names the window that is told about the pop-up (OSTREL_NOTIFICATION_*) and the message number to
 * use.
 * Needs:  a SUCCESSFUL Ostrel_Init. Called without one it stores through a null pointer and ends
 *         the process: there is no protection.
 * Takes:  receiver    a window; null means that nothing is posted. A window that is gone by then is
 *                     no error.
 *         message_id  OSTREL_FIRST_MESSAGE_ID or above; with a lower number nothing is ever posted.
 * Gives:  1. A second call overwrites the first.
 */
OSTREL_API OstrelBool Ostrel_RegisterNotification(OstrelWindow receiver, uint32_t message_id);

/*
 * Tells the library that the host's lasso box is on (non-zero) or off (0). While it is on, the
 * pop-up offers no presentation modes, and the operating system's own switching tries harder to
 * reach an external display. Needs:  nothing. The value outlives the initialisation calls.
 */
OSTREL_API void Ostrel_SetLassoBoxStatus(uint32_t status);

/*
 * Deletes Ostrel.ini, the remembered resolutions and the last applied mode, from the user's
 * temporary folder.
 * Needs:  nothing, not even an initialised side.
 * Gives:  non-zero when the file was deleted; 0 when there is none or it cannot be deleted.
 */
OSTREL_API OstrelBool Ostrel_FlushRememberedSettings(void);

/* ---- The extend-mode side: queries and commands ---- */

/*
 * Starts the extend-mode side.
 * Needs:  nothing; a second call while the side is up returns 1 at once. COM on this thread with
 *         Intel graphics.
 * Gives:  1; 0 when no display object answers for this machine or it cannot be initialised. After a
 *         failure with no side up the library has called CoUninitialize.
 * Never:  changes a display.
 */
OSTREL_API OstrelBool Ostrel_InitExtendMode(void);

/*
 * Ends the extend-mode side, and calls CoUninitialize when no side is left.
 * Needs:  Ostrel_InitExtendMode; does nothing otherwise.
 */
OSTREL_API void Ostrel_DeInitExtendMode(void);

/*
 * Reads which displays are attached, shown on or not, after asking the driver to look again.
 * Needs:  Ostrel_InitExtendMode.
 * Takes:  displays  out, required; mask of OSTREL_DISPLAY_*
 *         count     out, may be null; how many displays there are. It may exceed the bits of the
 *                   mask, since HDMI and DisplayPort are counted and have no bit.
 * Gives:  1; 0 when `displays` is null, the side is not up or the driver cannot be asked, with the
 *         outputs untouched.
 * Never:  changes a display.
 */
OSTREL_API OstrelBool Ostrel_GetConnectedDisplays(uint32_t* displays, uint32_t* count);

/*
 * Reads which displays show a desktop now. Everything else as Ostrel_GetConnectedDisplays.
 */
OSTREL_API OstrelBool Ostrel_GetActiveDisplays(uint32_t* displays, uint32_t* count);

/*
 * Reads the current mode.
 * Needs:  Ostrel_InitExtendMode.
 * Takes:  mode      out, required; one of OSTREL_MODE_*
 *         displays  out, may be null; mask of the active displays, OSTREL_DISPLAY_*
 * Gives:  1 with both outputs written. 0 in extended mode, WITH `mode` written (OSTREL_MODE_EXTEND)
 *         and `displays` untouched: preset `mode` to OSTREL_MODE_OTHER and look at it before the
 *         result. 0 with nothing written when `mode` is null, the side is not up or the driver
 *         cannot be asked.
 * Never:  changes a display.
 */
OSTREL_API OstrelBool Ostrel_GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays);

/*
 * Switches the mode.
 * Needs:  Ostrel_InitExtendMode.
 * Takes:  mode      OSTREL_MODE_SINGLE, OSTREL_MODE_CLONE or OSTREL_MODE_EXTEND; other numbers are
 *                   handed to the driver as they are, where OSTREL_MODE_HSPAN means the extended
 *                   desktop and OSTREL_MODE_VSPAN no mode at all
 *         displays  mask of OSTREL_DISPLAY_*, not 0; not looked at for OSTREL_MODE_EXTEND. Bits
 *                   that are none of these are dropped, also when nothing remains
 * Gives:  for OSTREL_MODE_EXTEND what Ostrel_EnableExtendMode(1) gives. For every other mode 0,
 *         SUCCESS OR FAILURE: do not read it, ask Ostrel_GetCurrentDisplayMode.
 * Never:  restores a resolution or remembers one.
 */
OSTREL_API OstrelBool Ostrel_SetNewDisplayMode(uint32_t mode, uint32_t displays);

/*
 * Turns the extended desktop on (1) or off (0); the library chooses the second display. Where so
 * configured ("Assure Primary Display is Notebook", on by default) the panel alone is switched to
 * first.
 * Needs:  Ostrel_InitExtendMode.
 * Gives:  non-zero when the desktop is as wanted now; 0 when the driver refused, the machine cannot
 *         drive two displays, or the side is not up (the adapters are looked at all the same).
 * Never:  chooses among several external displays: that is left to the driver.
 */
OSTREL_API OstrelBool Ostrel_EnableExtendMode(uint32_t enable);

/*
 * Needs:  Ostrel_InitExtendMode.
 * Gives:  non-zero while the desktop extends over more than one display; 0 otherwise, or when the
 *         side is not up.
 * Never:  changes a display.
 */
OSTREL_API OstrelBool Ostrel_IsExtendModeEnabled(void);

/*
 * Switches to the notebook's panel alone.
 * Needs:  Ostrel_InitExtendMode.
 * Gives:  non-zero when the driver did it; 0 when it refused or the side is not up.
 * Never:  restores a resolution or remembers one.
 */
OSTREL_API OstrelBool Ostrel_ChangeToNBOnlySingleDisplayMode(void);

/*
 * Needs:  Ostrel_InitExtendMode, also on a host that has the switch side up.
 * Gives:  non-zero when the machine can drive two displays at once; 0 otherwise, or when the side
 *         is not up.
 * Never:  changes a display.
 */
OSTREL_API OstrelBool Ostrel_HasDualOutputCapability(void);

/*
 * Needs:  Ostrel_InitExtendMode.
 * Gives:  non-zero when more than one display is attached (with Intel graphics also at once in
 *         extended mode); 0 otherwise, when the driver cannot be asked or when the side is not up.
 * Never:  changes a display.
 */
OSTREL_API OstrelBool Ostrel_HasExternalMonitorConnected(void);

/*
 * Reads who made the graphics adapter. While the switch side is up: the adapter that drives the
 * displays now, and OSTREL_VENDOR_UNKNOWN while no vendor's library is in use or two adapters are
 * driven together. Otherwise: the first adapter that Windows lists, which may be another one on a
 * machine with two.
 * Needs:  nothing.
 * Gives:  one of OSTREL_VENDOR_*.
 * Never:  changes a display.
 */
OSTREL_API uint32_t Ostrel_GetVgaVendor(void);

/*
 * Always 1. Two names of one function, kept for hosts that ask.
 * Needs:  nothing.
 */
OSTREL_API OstrelBool Ostrel_PermitToChangeMode(void);
OSTREL_API OstrelBool Ostrel_DetectDisplayConnectedFeatureIsValid(void);

#endif /* OSTREL_NO_PROTOTYPES */

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* OSTREL_OSTREL_H_ */
