// Whether the AMD Display Library is the one to use, or AMD's older library.
#pragma once

/// @return true when this Windows takes the library, and the file in the system folder is new
/// enough
bool IsAdlAcceptable();
