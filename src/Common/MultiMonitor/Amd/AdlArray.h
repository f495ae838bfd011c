// Arrays that the AMD Display Library hands out.
#pragma once

#include <utility>

#include "Common/Win.h"

/// The callback that the library is given for its arrays: the ordinary heap.
void* WINAPI AllocateAdlBuffer(int size);

/// Gives one of them back and forgets it. @param lpBuffer  where its address is; never null. A null
/// address in there is no array.
void FreeAdlBuffer(void** lpBuffer);

/// An array that the library allocates in a call, and its length.
template <typename Record>
class AdlArray {
 public:
  AdlArray() = default;
  AdlArray(const AdlArray&) = delete;
  AdlArray& operator=(const AdlArray&) = delete;
  ~AdlArray() { Reset(); }

  /// Where a call writes the array; what was there is given back first.
  Record** Receive() {
    Reset();
    return &records_;
  }
  /// Where it writes the length.
  int* ReceiveCount() { return &count_; }

  /// As the library told it, whatever stands behind it.
  int told_count() const { return count_; }
  /// How many records there are.
  int size() const { return records_ != nullptr && count_ > 0 ? count_ : 0; }
  bool empty() const { return size() == 0; }
  Record& operator[](int place) { return records_[place]; }
  const Record& operator[](int place) const { return records_[place]; }
  Record* data() { return records_; }
  const Record* data() const { return records_; }
  const Record* begin() const { return records_; }
  const Record* end() const { return records_ + size(); }

  /// Hands the array and its length on to who gives it back.
  Record* Release(int* count) {
    *count = std::exchange(count_, 0);
    return std::exchange(records_, nullptr);
  }

  /// Takes an array over that was handed on.
  void Adopt(Record* records, int count) {
    Reset();
    records_ = records;
    count_ = count;
  }

  void Reset() {
    void* buffer = records_;
    FreeAdlBuffer(&buffer);
    records_ = nullptr;
    count_ = 0;
  }

 private:
  Record* records_ = nullptr;
  int count_ = 0;
};
