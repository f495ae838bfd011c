#include "Common/ProcessState.h"

HINSTANCE g_moduleInstance = nullptr;
uint32_t g_lassoBoxStatus = 0;
