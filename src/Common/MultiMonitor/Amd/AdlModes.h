// What the AMD back-end writes into the maps that it asks for.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/Amd/AdlRecords.h"

/// Pixels that any display should take.
constexpr int32_t kAdlUsualWidth = 1024;
constexpr int32_t kAdlUsualHeight = 768;

inline void SetAdlUsualSize(ADLMode* mode) {
  mode->iXRes = kAdlUsualWidth;
  mode->iYRes = kAdlUsualHeight;
}

inline void SetAdlUsualDepthAndRate(ADLMode* mode) {
  mode->iColourDepth = 32;
  mode->fRefreshRate = 60.0F;
}

/// Makes the map one desktop for the first displays of the list.
inline void SpreadAdlMap(int32_t target_count, ADLDisplayMap* map) {
  map->iNumDisplayTarget = target_count;
  map->iFirstDisplayTargetArrayIndex = 0;
  map->displayMode.iXPos = 0;
  map->displayMode.iYPos = 0;
  SetAdlUsualSize(&map->displayMode);
  SetAdlUsualDepthAndRate(&map->displayMode);
}
