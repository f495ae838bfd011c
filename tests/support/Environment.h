// What every test program has around its tests: a watchdog, a report of the machine when a test
// fails or crashes, and a check that no test leaves anything behind.
#pragma once

namespace test_support {

/// Call once, after testing::InitGoogleTest.
void InstallEnvironment();

}  // namespace test_support
