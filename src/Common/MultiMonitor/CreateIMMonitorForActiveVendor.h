// The narrow door to the active vendor's own back-end for code below the factory.
#pragma once

class IMMonitor;

/// A new object for GetActiveVendorId(), owned by the caller, not initialised. Null when there is
/// none. Implemented by the factory.
IMMonitor* CreateIMMonitorForActiveVendor();
