// The interface of Intel's driver: a COM object in a process of its own. Only the operations that
// are called have their arguments; the others hold the places of their neighbours.
#pragma once

#include "Common/Win.h"

constexpr wchar_t kCuiProgId[] = L"IgfxExt.CUIExternal";

// {7160A13D-73DA-4CEA-95B9-37356478588A}
constexpr CLSID kCuiClsid = {
    0x7160A13D, 0x73DA, 0x4CEA, {0x95, 0xB9, 0x37, 0x35, 0x64, 0x78, 0x58, 0x8A}};

// {F932C038-6484-45CA-8FA1-7C8C279F7AEE}
constexpr IID kCuiInterfaceId = {
    0xF932C038, 0x6484, 0x45CA, {0x8F, 0xA1, 0x7C, 0x8C, 0x27, 0x9F, 0x7A, 0xEE}};

// Block identifiers.
constexpr GUID IGFX_GET_SET_N_VIEW_CONFIG_GUID = {
    0x21ADA76B, 0xA70E, 0x4D4E, {0x94, 0xE2, 0x4B, 0x8E, 0xE0, 0xCC, 0x32, 0x84}};
constexpr GUID kCuiActiveDevicesGuid = {
    0x381ECED3, 0xEFF1, 0x4DF2, {0xB5, 0x60, 0x66, 0x48, 0xE3, 0x52, 0xB1, 0x8E}};
constexpr GUID kCuiEdidGuid = {
    0x897843AE, 0x998A, 0x4EEC, {0xA2, 0x1E, 0xEA, 0x64, 0x2B, 0x44, 0x90, 0xEC}};
constexpr GUID kCuiConnectorsGuid = {
    0x2F317ACE, 0x3968, 0x4A57, {0x96, 0x67, 0xC6, 0xA4, 0x7B, 0x6C, 0x4B, 0x8C}};

/// What `err` holds on success.
constexpr DWORD IGFX_SUCCESS = 0;

/// Status bits of a device.
constexpr DWORD kCuiDeviceAttached = 0x02;
constexpr DWORD kCuiDeviceActive = 0x10;

/// Arguments of the aspect operations.
constexpr DWORD kCuiAspectUid = 4096;
constexpr DWORD kCuiAspectOperatingMode = 1;

/// Results below 0 are failures. `err` is the driver's own number for what went wrong.
class ICUIExternal8 : public IUnknown {
 public:
  // 3 to 10
  virtual HRESULT STDMETHODCALLTYPE EnumActiveDevices() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetConfiguration() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SupportedEvents() = 0;
  virtual HRESULT STDMETHODCALLTYPE RegisterEvent() = 0;
  virtual HRESULT STDMETHODCALLTYPE RegisterNotify() = 0;
  virtual HRESULT STDMETHODCALLTYPE DeRegisterEvent() = 0;
  virtual HRESULT STDMETHODCALLTYPE DeRegisterNotify() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetConfiguration() = 0;

  /// 11. Changes which devices are active.
  /// @param size     bytes of `records`: one CuiActiveDevices or two
  /// @param err      out
  virtual HRESULT STDMETHODCALLTYPE ChangeActiveDevices(REFGUID block, UINT size, BYTE* records,
                                                        DWORD* err) = 0;
  /// 12. One device of an adapter.
  /// @param device_name  \\.\DISPLAYn
  /// @param type         in: the kinds wanted, all ones for all of them; out: the device's kind
  /// @return non-zero behind the last device
  virtual HRESULT STDMETHODCALLTYPE EnumDevices(BSTR device_name, UINT index, DWORD* uid,
                                                DWORD* type, DWORD* status) = 0;

  // 13 to 24
  virtual HRESULT STDMETHODCALLTYPE Mccs13() = 0;
  virtual HRESULT STDMETHODCALLTYPE Mccs14() = 0;
  virtual HRESULT STDMETHODCALLTYPE Mccs15() = 0;
  virtual HRESULT STDMETHODCALLTYPE Mccs16() = 0;
  virtual HRESULT STDMETHODCALLTYPE Mccs17() = 0;
  virtual HRESULT STDMETHODCALLTYPE Mccs18() = 0;
  virtual HRESULT STDMETHODCALLTYPE Mccs19() = 0;
  virtual HRESULT STDMETHODCALLTYPE Power20() = 0;
  virtual HRESULT STDMETHODCALLTYPE Power21() = 0;
  virtual HRESULT STDMETHODCALLTYPE Power22() = 0;
  virtual HRESULT STDMETHODCALLTYPE Power23() = 0;
  virtual HRESULT STDMETHODCALLTYPE Power24() = 0;

  // 25 and 26
  virtual HRESULT STDMETHODCALLTYPE GetGammaRamp() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetGammaRamp() = 0;

  /// 27. @param current  out: the aspect setting
  virtual HRESULT STDMETHODCALLTYPE GetAspectScaling(DWORD uid, DWORD operating_mode,
                                                     DWORD* capabilities, DWORD* current,
                                                     DWORD* err) = 0;
  /// 28. @param preference  the aspect setting
  virtual HRESULT STDMETHODCALLTYPE SetAspectScaling(DWORD uid, DWORD preference, DWORD* err) = 0;

  // 29 to 42
  virtual HRESULT STDMETHODCALLTYPE GetAvailableConnectors() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetConnectorSelection() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetConnectorAttachedStatus() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetConnectorSelection() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCloneRefreshRates() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetCloneView() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTvParameters() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetTvParameters() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInverterParams() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetInverterParams() = 0;
  virtual HRESULT STDMETHODCALLTYPE DownScale39() = 0;
  virtual HRESULT STDMETHODCALLTYPE DownScale40() = 0;
  virtual HRESULT STDMETHODCALLTYPE DownScale41() = 0;
  virtual HRESULT STDMETHODCALLTYPE DownScale42() = 0;

  /// 43. Reads a block. @param data  in and out, `size` bytes
  virtual HRESULT STDMETHODCALLTYPE GetDeviceData(REFGUID block, DWORD size, BYTE* data,
                                                  DWORD* err) = 0;
  /// 44. Writes a block. @param data  in and out, `size` bytes
  virtual HRESULT STDMETHODCALLTYPE SetDeviceData(REFGUID block, DWORD size, BYTE* data,
                                                  DWORD* err) = 0;

 protected:
  ~ICUIExternal8() = default;  // Release ends the object, never a delete through this interface
};
