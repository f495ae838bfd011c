#pragma once

#include <string>

/// The folder of the host's executable, without a backslash behind it. Paths beyond 255 characters
/// are not supported.
/// @return false, with `folder` untouched, when Windows does not tell
bool GetHostFolder(std::wstring* folder);
