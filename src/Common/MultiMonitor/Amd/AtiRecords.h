// What AMD's legacy control library takes and gives, without any operating-system header. Words are
// 32 bits, little-endian. A display is a bit in a vector of seven; the bit's position is its
// display index.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr uint32_t kAtiDisplays = 7;  // bits of a display vector

enum AtiArrangement : uint32_t {
  kAtiClone = 2,
  kAtiSingle = 3,
  kAtiExtended = 5,
};

/// Which displays show a desktop, or shall.
struct AtiConfigRecord {
  uint32_t size;
  uint32_t arrangement;
  uint32_t vectors[kAtiDisplays];
  int32_t vector_count;
  uint32_t rest[6];  // zero
};
static_assert(sizeof(AtiConfigRecord) == 64, "the library's size");
static_assert(offsetof(AtiConfigRecord, vector_count) == 36, "behind seven words");

/// What hangs on one display index.
struct AtiDeviceConfig {
  uint32_t size;
  uint32_t kind;
  uint32_t own[3];  // the library's
};
static_assert(sizeof(AtiDeviceConfig) == 20, "the library's size");

constexpr uint32_t kAtiEdidRoom = 256;
constexpr uint32_t kAtiEdidMost = 272;

struct AtiEdidRecord {
  uint32_t size;
  uint32_t unused;
  uint32_t data_size;  // in: bytes of room, up to kAtiEdidRoom; out: bytes
  uint32_t unused_too;
  uint8_t data[kAtiEdidMost];  // to the record's end, beyond the room that is told
};
static_assert(sizeof(AtiEdidRecord) == 288, "the library's size");
static_assert(offsetof(AtiEdidRecord, data_size) == 8, "the library's place");
static_assert(offsetof(AtiEdidRecord, data) == 16, "the library's place");

constexpr uint32_t kAtiSlots = 2;

struct AtiDisplaySlot {
  uint32_t display;  // a display vector; the type of a display where one is asked for by type
  uint32_t own[3];   // the library's
};
static_assert(sizeof(AtiDisplaySlot) == 16, "the library's size");

/// One display device of the adapter and what it shows.
struct AtiAdapterEntry {
  uint32_t size;
  uint32_t adapter;
  uint32_t slot_count;
  AtiDisplaySlot slots[kAtiSlots];
  uint32_t height;  // pixels
  uint32_t width;   // pixels
  uint32_t bits_per_pixel;
  uint32_t frequency;  // Hz
  uint32_t own;        // the library's
  uint32_t x;
  uint32_t own_too;  // the library's
};
static_assert(sizeof(AtiAdapterEntry) == 72, "the library's size");
static_assert(offsetof(AtiAdapterEntry, height) == 44, "behind two slots");
static_assert(offsetof(AtiAdapterEntry, x) == 64, "the library's place");

/// The two display devices of the adapter. Words that are the library's go back as they came.
struct AtiAdapterConfig {
  uint32_t size;
  uint32_t set;  // 1 in a set call
  AtiAdapterEntry entries[2];
  uint32_t last;
};
static_assert(sizeof(AtiAdapterConfig) == 156, "the library's size");
static_assert(offsetof(AtiAdapterConfig, last) == 152, "behind two entries");

/// A record with its size word, all else zero.
AtiConfigRecord MakeAtiConfigRecord();
/// @param data_size  bytes of room told to the library, up to kAtiEdidRoom
AtiEdidRecord MakeAtiEdidRecord(uint32_t data_size);
/// With the size words of both entries.
AtiAdapterConfig MakeAtiAdapterConfig();

/// The MD_* flag of one display.
/// @param device_kind  decides where it has a flag
/// @param type         of EnumDisplays; decides otherwise
/// @return 0 for a display without a flag
uint32_t DisplayOfAtiDevice(uint32_t device_kind, uint32_t type);
/// The same by the kind alone.
uint32_t DisplayOfAtiKind(uint32_t device_kind);

/// The type that an extended desktop's second display is asked for by.
/// @param types  of the connected displays, by display index
uint32_t AtiTargetType(const uint32_t* types, size_t count);

/// Finds the display vector among the display slots of the entries, all of which are looked at: a
/// slot that is not in use has no display.
/// @param display_vector  of one display at least
/// @return the entry that shows it; null when neither does
const AtiAdapterEntry* FindAtiEntry(const AtiAdapterConfig& config, uint32_t display_vector);

/// The position of the lowest bit; 0 for an empty vector.
uint32_t AtiIndexOfVector(uint32_t display_vector);
