// The narrow door to the adapter list for back-ends, which are built below the factory.
#pragma once

/// Whether more than one entry is left of the adapters' vendors after the factory's filters.
/// Neighbouring duplicates count once, others each time: AMD, Intel, AMD are three. Implemented by
/// the factory.
bool HasSeveralGraphicsVendors();
