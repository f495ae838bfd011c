// What the simulated AtiPdl64.dll knows and does, apart from its calling conventions. It counts
// adapters as Windows counts display devices, and displays by their bit in a display vector.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/faces/AmdDriver.h"
#include "sim/faces/AmdDriverRules.h"

namespace sim {

constexpr uint32_t kLegacyDisplays = 7;  // bits of a vector

// --- Devices (AmdLegacyDevices.cpp).

/// The source behind an adapter number, when a working AMD adapter has it.
std::optional<size_t> LegacySource(const Model& model, uint32_t adapter);
/// The adapter's connectors by display index.
std::vector<size_t> LegacyDisplays(const Model& model, size_t gpu);
std::optional<size_t> LegacyConnector(const Model& model, size_t gpu, uint32_t index);
/// Zero for a connector beyond the seventh.
uint32_t LegacyVector(const Model& model, size_t connector);
uint32_t LegacyType(const Connector& connector);
uint32_t LegacyKind(const Connector& connector);
/// The vector of all the adapter's outputs of a kind: 1 panels, 2 CRT, 4 television, 8 digital.
uint32_t LegacyVectorOfKind(const Model& model, size_t gpu, uint32_t kind);

// --- AtiConfigRecord and AtiAdapterConfig (AmdLegacyConfig.cpp).

constexpr size_t kLegacyConfigSize = 64;
constexpr size_t kLegacyAdapterConfigSize = 156;

AmdLegacyResult GetLegacyActive(const Model& model, size_t gpu, AmdRecord record);
AmdLegacyResult SetLegacyConfig(Model& model, uint32_t adapter, const AmdRecord& record);
std::string DescribeLegacyConfig(const AmdRecord& record);
AmdLegacyResult GetLegacyAdapterConfig(const Model& model, AmdRecord record);
AmdLegacyResult SetLegacyAdapterConfig(Model& model, const AmdRecord& record);
std::string DescribeLegacyAdapterConfig(const AmdRecord& record);
/// The device shows a desktop of its own, or nothing any more.
AmdLegacyResult ExtendLegacy(Model& model, uint32_t adapter, bool enable);

}  // namespace sim
