// What tells whether the DisplayLink software is on this machine.
#pragma once

namespace displaylink {

/// Whether the DisplayLink service exists and may be opened; whether it runs is not asked. Any
/// thread.
bool IsDisplayLinkServicePresent();

}  // namespace displaylink
