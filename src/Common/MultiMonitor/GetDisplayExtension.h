// The narrow door to the active object's IDisplayExtension for code below the factory.
#pragma once

class IDisplayExtension;

/// The active object's IDisplayExtension, or a new NullDisplayExtension with count 0. Never null;
/// not AddRef'ed. Implemented by the factory.
IDisplayExtension* GetDisplayExtension();
