// Records of the AMD Display Library, as its published interface lays them out: 32-bit fields with
// nothing between them. No operating-system header, so that what is decided over them also builds
// outside Windows.
#pragma once

#include <cstddef>
#include <cstdint>

/// Results. Above 0 the call has worked with a reservation, below 0 it has failed.
constexpr int32_t ADL_OK = 0;
constexpr int32_t ADL_ERR_NOT_INIT = -2;
constexpr int32_t ADL_ERR_INVALID_ADL_IDX = -5;

constexpr int32_t ADL_TRUE = 1;
constexpr size_t ADL_MAX_PATH = 256;

/// iDisplayInfoValue.
constexpr int32_t kAdlDisplayConnected = 0x1;
constexpr int32_t kAdlDisplayMapped = 0x2;

struct ADLAdapterInfo {
  int32_t iSize;
  int32_t iAdapterIndex;
  char strUDID[ADL_MAX_PATH];
  int32_t iBusNumber;
  int32_t iDeviceNumber;
  int32_t iFunctionNumber;
  int32_t iVendorID;
  char strAdapterName[ADL_MAX_PATH];
  char strDisplayName[ADL_MAX_PATH];
  int32_t iPresent;
  int32_t iExist;
  char strDriverPath[ADL_MAX_PATH];
  char strDriverPathExt[ADL_MAX_PATH];
  char strPNPString[ADL_MAX_PATH];
  int32_t iOSDisplayIndex;
};
static_assert(sizeof(ADLAdapterInfo) == 1572 && offsetof(ADLAdapterInfo, iAdapterIndex) == 4 &&
              offsetof(ADLAdapterInfo, strAdapterName) == 280 &&
              offsetof(ADLAdapterInfo, iPresent) == 792 &&
              offsetof(ADLAdapterInfo, iOSDisplayIndex) == 1568);

struct ADLDisplayID {
  int32_t iDisplayLogicalIndex;
  int32_t iDisplayPhysicalIndex;
  int32_t iDisplayLogicalAdapterIndex;
  int32_t iDisplayPhysicalAdapterIndex;
};
static_assert(sizeof(ADLDisplayID) == 16 &&
              offsetof(ADLDisplayID, iDisplayLogicalAdapterIndex) == 8);

struct ADLDisplayInfo {
  ADLDisplayID displayID;
  int32_t iDisplayControllerIndex;
  char strDisplayName[ADL_MAX_PATH];
  char strDisplayManufacturerName[ADL_MAX_PATH];
  int32_t iDisplayType;
  int32_t iDisplayOutputType;
  int32_t iDisplayConnector;
  int32_t iDisplayInfoMask;
  int32_t iDisplayInfoValue;
};
static_assert(sizeof(ADLDisplayInfo) == 552 && offsetof(ADLDisplayInfo, strDisplayName) == 20 &&
              offsetof(ADLDisplayInfo, iDisplayType) == 532 &&
              offsetof(ADLDisplayInfo, iDisplayConnector) == 540 &&
              offsetof(ADLDisplayInfo, iDisplayInfoValue) == 548);

/// Pixels, bits per pixel, Hz, degrees.
struct ADLMode {
  int32_t iAdapterIndex;
  ADLDisplayID displayID;
  int32_t iXPos;
  int32_t iYPos;
  int32_t iXRes;
  int32_t iYRes;
  int32_t iColourDepth;
  float fRefreshRate;
  int32_t iOrientation;
  int32_t iModeFlag;
  int32_t iModeMask;
  int32_t iModeValue;
};
static_assert(sizeof(ADLMode) == 60 && offsetof(ADLMode, iXPos) == 20 &&
              offsetof(ADLMode, iXRes) == 28 && offsetof(ADLMode, fRefreshRate) == 40 &&
              offsetof(ADLMode, iModeValue) == 56);

/// One display that shows the desktop of a map.
struct ADLDisplayTarget {
  ADLDisplayID displayID;
  int32_t iDisplayMapIndex;
  int32_t iDisplayTargetMask;
  int32_t iDisplayTargetValue;
};
static_assert(sizeof(ADLDisplayTarget) == 28 && offsetof(ADLDisplayTarget, iDisplayMapIndex) == 16);

/// One desktop. Its targets stand in a row in the list of targets.
struct ADLDisplayMap {
  int32_t iDisplayMapIndex;
  ADLMode displayMode;
  int32_t iNumDisplayTarget;
  int32_t iFirstDisplayTargetArrayIndex;
  int32_t iDisplayMapMask;
  int32_t iDisplayMapValue;
};
static_assert(sizeof(ADLDisplayMap) == 80 && offsetof(ADLDisplayMap, displayMode) == 4 &&
              offsetof(ADLDisplayMap, iNumDisplayTarget) == 64 &&
              offsetof(ADLDisplayMap, iDisplayMapValue) == 76);

constexpr size_t ADL_MAX_EDIDDATA_SIZE = 256;

struct ADLDisplayEDIDData {
  int32_t iSize;
  int32_t iFlag;
  int32_t iEDIDSize;
  int32_t iBlockIndex;
  char cEDIDData[ADL_MAX_EDIDDATA_SIZE];
  int32_t iReserved[4];
};
static_assert(sizeof(ADLDisplayEDIDData) == 288 && offsetof(ADLDisplayEDIDData, iEDIDSize) == 8 &&
              offsetof(ADLDisplayEDIDData, cEDIDData) == 16);

// --- One picture across several displays ("SLS", a single large surface).

struct ADLSLSGrid {
  int32_t iAdapterIndex;
  int32_t iSLSGridIndex;
  int32_t iSLSGridRow;
  int32_t iSLSGridColumn;
  int32_t iSLSGridMask;
  int32_t iSLSGridValue;
};
static_assert(sizeof(ADLSLSGrid) == 24 && offsetof(ADLSLSGrid, iSLSGridColumn) == 12);

struct ADLSLSMap {
  int32_t iAdapterIndex;
  int32_t iSLSMapIndex;
  ADLSLSGrid grid;
  int32_t iSurfaceMapIndex;
  int32_t iOrientation;
  int32_t iNumSLSTarget;
  int32_t iFirstSLSTargetArrayIndex;
  int32_t iNumNativeMode;
  int32_t iFirstNativeModeArrayIndex;
  int32_t iNumBezelMode;
  int32_t iFirstBezelModeArrayIndex;
  int32_t iNumBezelOffset;
  int32_t iFirstBezelOffsetArrayIndex;
  int32_t iSLSMapMask;
  int32_t iSLSMapValue;
};
static_assert(sizeof(ADLSLSMap) == 80 && offsetof(ADLSLSMap, grid) == 8 &&
              offsetof(ADLSLSMap, iSurfaceMapIndex) == 32 &&
              offsetof(ADLSLSMap, iSLSMapValue) == 76);

struct ADLSLSTarget {
  int32_t iAdapterIndex;
  int32_t iSLSMapIndex;
  ADLDisplayTarget displayTarget;
  int32_t iSLSGridPositionX;
  int32_t iSLSGridPositionY;
  ADLMode viewSize;
  int32_t iSLSTargetMask;
  int32_t iSLSTargetValue;
};
static_assert(sizeof(ADLSLSTarget) == 112 && offsetof(ADLSLSTarget, viewSize) == 44);

struct ADLSLSMode {
  int32_t iAdapterIndex;
  int32_t iSLSMapIndex;
  int32_t iSLSModeIndex;
  ADLMode displayMode;
  int32_t iSLSNativeModeMask;
  int32_t iSLSNativeModeValue;
};
static_assert(sizeof(ADLSLSMode) == 80 &&
              offsetof(ADLSLSMode, displayMode) + offsetof(ADLMode, iXRes) == 40);

struct ADLBezelTransientMode {
  int32_t iAdapterIndex;
  int32_t iSLSMapIndex;
  int32_t iSLSModeIndex;
  ADLMode displayMode;
  int32_t iNumBezelOffset;
  int32_t iFirstBezelOffsetArrayIndex;
  int32_t iSLSBezelTransientModeMask;
  int32_t iSLSBezelTransientModeValue;
};
static_assert(sizeof(ADLBezelTransientMode) == 88 &&
              offsetof(ADLBezelTransientMode, displayMode) + offsetof(ADLMode, iYRes) == 44);

struct ADLSLSOffset {
  int32_t iAdapterIndex;
  int32_t iSLSMapIndex;
  ADLDisplayID displayID;
  int32_t iBezelModeIndex;
  int32_t iBezelOffsetX;
  int32_t iBezelOffsetY;
  int32_t iDisplayWidth;
  int32_t iDisplayHeight;
  int32_t iBezelOffsetMask;
  int32_t iBezelffsetValue;
};
static_assert(sizeof(ADLSLSOffset) == 52 && offsetof(ADLSLSOffset, iDisplayWidth) == 36);
