#include "core/scratch.h"

#include <cstdlib>
#include <limits>

namespace effects {
namespace {

struct ThreadScratch {
  void* buffer[kScratchSlots] = {};
  size_t size[kScratchSlots] = {};
  size_t limit = std::numeric_limits<size_t>::max();
  ~ThreadScratch() {
    for (void* b : buffer) std::free(b);
  }
};

ThreadScratch& mine() {
  thread_local ThreadScratch scratch;
  return scratch;
}

}  // namespace

void* scratchBytes(size_t bytes, ScratchSlot slot) {
  ThreadScratch& s = mine();
  const unsigned i = static_cast<unsigned>(slot);
  if (bytes > s.limit) return nullptr;
  if (bytes == 0) bytes = 1;
  if (s.size[i] >= bytes) return s.buffer[i];
  // The old contents need not survive, so free first: the peak stays at one
  // buffer's size.
  std::free(s.buffer[i]);
  s.buffer[i] = std::malloc(bytes);
  s.size[i] = s.buffer[i] ? bytes : 0;
  return s.buffer[i];
}

ScratchLimit::ScratchLimit(size_t bytes) : previous_(mine().limit) { mine().limit = bytes; }
ScratchLimit::~ScratchLimit() { mine().limit = previous_; }

}  // namespace effects
