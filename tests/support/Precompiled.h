// What nearly every test includes, read once per test program. It only saves time: each file still
// includes what it uses, and clang-tidy, which does not see this header, tells of one that does
// not.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/Win.h"
#include "sim/Machine.h"
