// The part of CommandLine that asks Windows and writes to the log.
#include "Common/CommandLine.h"
#include "Common/Logging.h"
#include "Common/Text.h"
#include "Common/Win.h"

#include <shellapi.h>

CommandLine CommandLine::ForCurrentProcess() {
  std::vector<std::wstring> arguments;
  int count = 0;
  wchar_t** split = CommandLineToArgvW(GetCommandLineW(), &count);
  if (split != nullptr) {
    arguments.assign(split, split + count);
    LocalFree(split);
  }
  return CommandLine(arguments);
}

std::string CommandLine::GetSwitchValueASCII(std::string_view name) const {
  const std::wstring* value = GetSwitchValue(name);
  if (value == nullptr) return std::string();
  if (!IsAscii(*value)) {
    LOG(WARNING) << "Value of --" << name << " must be ASCII.";
    return std::string();
  }
  return NarrowFromWide(*value);
}
