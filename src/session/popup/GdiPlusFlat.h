// The one door to GDI+. Only its flat functions are used (namespace Gdiplus::DllExports); the C++
// wrapper classes that come with the same headers are left alone, so that every status is seen
// where it arises.
#pragma once

#include "Common/Win.h"

// The GDI+ headers need COM's storage interfaces, which WIN32_LEAN_AND_MEAN leaves out, and min and
// max, which NOMINMAX leaves out.
#include <objidl.h>
#include <propidl.h>

#include <algorithm>

namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus

#include <gdiplus.h>
