// The narrow door to the operating system's own back-end for code below the factory.
#pragma once

class Win7CCD;

/// A new Win7CCD, or its DisplayLink derivative when the DisplayLink service is present. Owned by
/// the caller, not initialised. Without memory it throws std::bad_alloc or is null. Implemented by
/// the factory.
Win7CCD* CreateWin7CCDObject();
