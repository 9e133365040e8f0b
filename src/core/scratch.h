// Scratch memory for the exports that need a copy of a picture or a second
// picture to write into.
//
// Each thread keeps a few buffers that grow to the largest size asked of them
// and are reused by later calls on that thread (fresh pages cost many times a
// copy of the picture in page faults), and are released when the thread
// ends. Calls on different threads never share a buffer. A buffer's contents
// do not survive from one call to the next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/picture.h"

namespace effects {

// The slots a single export may hold at once; an export that calls another
// export's implementation takes care that their slots differ.
enum class ScratchSlot : unsigned { First = 0, Second = 1, Third = 2, Fourth = 3 };
inline constexpr unsigned kScratchSlots = 4;

// At least `bytes` bytes of this thread's buffer in `slot`, aligned for any
// pixel type; null when the memory cannot be had (the caller then changes
// nothing and returns its failure value).
void* scratchBytes(size_t bytes, ScratchSlot slot);

// A packed width x height picture in a scratch slot, uninitialised; empty
// when the size is empty or the memory cannot be had.
template <class P>
inline Picture<P> scratchPicture(int32_t width, int32_t height, ScratchSlot slot) {
  const size_t rowBytes = Picture<P>::packedRowBytes(width, height);
  if (rowBytes == 0) return {};
  void* p = scratchBytes(rowBytes * static_cast<size_t>(height), slot);
  return p ? Picture<P>::view(static_cast<P*>(p), width, height, static_cast<ptrdiff_t>(rowBytes))
           : Picture<P>{};
}

// A copy of `pic` (same size and stride) in a scratch slot; empty when the
// memory cannot be had.
template <class P>
inline Picture<std::remove_const_t<P>> scratchCopy(const Picture<P>& pic, ScratchSlot slot) {
  using Q = std::remove_const_t<P>;
  if (pic.empty()) return {};
  void* p = scratchBytes(pic.byteCount(), slot);
  if (p == nullptr) return {};
  std::memcpy(p, pic.data(), pic.byteCount());
  return Picture<Q>::view(static_cast<Q*>(p), pic.width(), pic.height(), pic.stride());
}

// For tests: makes this thread's scratch requests above `bytes` fail, until
// the returned guard is destroyed.
class ScratchLimit {
 public:
  explicit ScratchLimit(size_t bytes);
  ~ScratchLimit();
  ScratchLimit(const ScratchLimit&) = delete;
  ScratchLimit& operator=(const ScratchLimit&) = delete;

 private:
  size_t previous_;
};

}  // namespace effects
