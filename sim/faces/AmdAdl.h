// What the exports of the simulated atiadlxx.dll share: its session, its refusals, the arrays that
// it hands out, and the records that several of them write.
#pragma once

#include <cstdint>
#include <vector>

#include "Common/Win.h"
#include "sim/Failure.h"
#include "sim/faces/AmdDriverRules.h"
#include "sim/faces/FaceHelp.h"

namespace sim {

using AdlAllocate = void*(WINAPI*)(int size);

// Sizes of the published records.
constexpr size_t kAdlAdapterInfoSize = 1572;
constexpr size_t kAdlDisplayInfoSize = 552;
constexpr size_t kAdlModeSize = 60;
constexpr size_t kAdlTargetSize = 28;
constexpr size_t kAdlMapSize = 80;
constexpr size_t kAdlEdidSize = 288;
constexpr size_t kAdlSlsGridSize = 24;
constexpr size_t kAdlSlsMapSize = 80;
constexpr size_t kAdlSlsTargetSize = 112;
constexpr size_t kAdlSlsModeSize = 80;
constexpr size_t kAdlTransientModeSize = 88;
constexpr size_t kAdlSlsOffsetSize = 52;

// ADLDisplayID, in every record that names a display.
constexpr size_t kAdlLogicalIndexAt = 0;
constexpr size_t kAdlPhysicalIndexAt = 4;
constexpr size_t kAdlLogicalAdapterAt = 8;
constexpr size_t kAdlPhysicalAdapterAt = 12;
constexpr int32_t kAdlFirstPhysicalIndex = 32;

// --- The session (AmdAdlControl.cpp).

/// A declared fault's result, or that nobody has called ADL_Main_Control_Create; kAdlOk when
/// neither stands in the way.
int32_t AdlRefusal(const Call& call);
/// The same, and that the index names no adapter or one that is disabled.
int32_t AdlRefusal(const Call& call, int32_t adapter_index, AdlAdapter* adapter);
/// The adapters that this session lists.
std::vector<AdlAdapter> ListedAdlAdapters(const Model& model);

// --- Arrays for the client (AmdAdlControl.cpp).

/// Memory of the client for an array of records, zeroed. Null when there is none to be had, and for
/// no records. It stands in the ledger until the library frees it.
void* NewAdlArray(size_t count, size_t record_size);

/// Hands the array and its length out where all of it could be had. A pointer that is not null
/// before the call is an array that nobody gave back, or was never set: the test fails.
template <typename Record>
int32_t GiveAdlArray(size_t count, size_t record_size, int* count_out, Record** array_out,
                     AmdRecord* written) {
  if (*array_out != nullptr) ReportFailure("ADL is given an array pointer that is not null");
  void* const array = NewAdlArray(count, record_size);
  if (array == nullptr && count != 0) return kAdlError;
  *count_out = static_cast<int>(count);
  *array_out = static_cast<Record*>(array);
  *written = AmdRecord(array, count * record_size);
  return kAdlOk;
}

// --- Records (AmdAdlRecords.cpp).

/// `logical_adapter` is the iAdapterIndex that the display is mapped to, -1 for none.
void PutAdlDisplayId(const Model& model, size_t connector, int32_t logical_adapter,
                     AmdRecord record);
/// ADLMode of what the source shows on the connector.
void PutAdlMode(const Model& model, size_t source, size_t connector, AmdRecord record);

// --- The exports, by topic.

void AddAdlControlEntries(std::vector<Entry>* entries);
void AddAdlDisplayEntries(std::vector<Entry>* entries);
void AddAdlMapEntries(std::vector<Entry>* entries);
void AddAdlSlsEntries(std::vector<Entry>* entries);

}  // namespace sim
