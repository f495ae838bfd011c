// The one door through which <windows.h> enters the project, so that every file sees it with the
// same switches.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif

#include <windows.h>

// Left out by WIN32_LEAN_AND_MEAN; the side interfaces of the display-control layer count
// references like COM objects.
#include <unknwn.h>
