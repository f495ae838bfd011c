#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/desktop/XServer.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const std::string option = "--desktop_colour=";
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.compare(0, option.size(), option) == 0) {
      SetDesktopColour(
          static_cast<uint32_t>(std::strtoul(argument.c_str() + option.size(), nullptr, 16)));
    }
  }
  return RUN_ALL_TESTS();
}
