// Memory that ends exactly where a buffer ends: the bytes are followed by a
// page that may not be read or written, so any access past the last element
// faults at once, natively and under Wine alike (where there is no
// AddressSanitizer).
//
// Under AddressSanitizer the bytes come from the heap instead: its red zones
// catch the same accesses (and those before the first element), without a
// fresh mapping per buffer.
//
// GuardedBytes::reserved makes buffers of many gigabytes for the calls whose
// sizes imply them: the address range is real and ends at a guard page, but
// it is one small block of memory mapped again and again, so an export that
// walks all of it costs time, not memory. Its contents are whatever the last
// write through any alias left.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define EFFECTS_GUARDED_ON_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define EFFECTS_GUARDED_ON_HEAP 1
#endif
#endif

namespace effects::test {

class GuardedBytes {
 public:
  GuardedBytes() = default;
  explicit GuardedBytes(size_t size) : size_(size) {
#if defined(EFFECTS_GUARDED_ON_HEAP)
    heap_ = new uint8_t[size == 0 ? 1 : size];
    data_ = heap_;
#else
    const size_t page = pageSize();
    const size_t dataPages = (size + page - 1) / page;
    total_ = (dataPages + 1) * page;
#if defined(_WIN32)
    base_ = static_cast<uint8_t*>(VirtualAlloc(nullptr, total_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    if (!base_) throw std::bad_alloc();
    DWORD old;
    VirtualProtect(base_ + dataPages * page, page, PAGE_NOACCESS, &old);
#else
    void* p = mmap(nullptr, total_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) throw std::bad_alloc();
    base_ = static_cast<uint8_t*>(p);
    mprotect(base_ + dataPages * page, page, PROT_NONE);
#endif
    data_ = base_ + dataPages * page - size;
#endif
  }
  // `size` bytes of address space ending at a guard page, backed by one
  // block of kAliasBlock bytes mapped over and over (POSIX only). Throws
  // std::runtime_error when the range cannot be had.
  static GuardedBytes reserved(size_t size) {
#if defined(_WIN32) || !defined(MFD_CLOEXEC)
    (void)size;
    throw std::runtime_error("no aliased reservations on this platform");
#else
    GuardedBytes g;
    const size_t page = pageSize();
    const size_t dataPages = size / page + (size % page != 0);
    if (dataPages > (SIZE_MAX / page) - 1) throw std::runtime_error("reservation too large");
    const size_t dataBytes = dataPages * page;
    g.size_ = size;
    g.total_ = dataBytes + page;
    void* p = mmap(nullptr, g.total_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (p == MAP_FAILED) throw std::runtime_error("cannot reserve the address range");
    g.base_ = static_cast<uint8_t*>(p);
    const int fd = memfd_create("effects-guarded", MFD_CLOEXEC);
    if (fd < 0 || ftruncate(fd, static_cast<off_t>(kAliasBlock)) != 0) {
      if (fd >= 0) close(fd);
      throw std::runtime_error("cannot make the block behind a reservation");
    }
    for (size_t at = 0; at < dataBytes; at += kAliasBlock) {
      const size_t n = std::min(kAliasBlock, dataBytes - at);
      if (mmap(g.base_ + at, n, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, fd, 0) == MAP_FAILED) {
        close(fd);
        throw std::runtime_error("cannot map the block behind a reservation");
      }
    }
    close(fd);
    g.data_ = g.base_ + dataBytes - size;
    g.aliased_ = true;
    return g;
#endif
  }
  static constexpr size_t kAliasBlock = size_t(64) << 20;

  ~GuardedBytes() { release(); }
  GuardedBytes(GuardedBytes&& o) noexcept { *this = static_cast<GuardedBytes&&>(o); }
  GuardedBytes& operator=(GuardedBytes&& o) noexcept {
    if (this != &o) {
      release();
      base_ = o.base_; data_ = o.data_; size_ = o.size_; total_ = o.total_; aliased_ = o.aliased_;
      heap_ = o.heap_;
      o.base_ = o.data_ = o.heap_ = nullptr;
      o.size_ = o.total_ = 0;
      o.aliased_ = false;
    }
    return *this;
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  uint8_t* data() const { return data_; }
  size_t size() const { return size_; }
  // Whether the bytes are aliases of one small block (see reserved()).
  bool aliased() const { return aliased_; }

 private:
  static size_t pageSize() {
#if defined(_WIN32)
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
#else
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
#endif
  }
  void release() {
    delete[] heap_;
    heap_ = nullptr;
    if (!base_) {
      data_ = nullptr;
      return;
    }
#if defined(_WIN32)
    VirtualFree(base_, 0, MEM_RELEASE);
#else
    munmap(base_, total_);
#endif
    base_ = data_ = nullptr;
  }
  uint8_t* base_ = nullptr;
  uint8_t* data_ = nullptr;
  uint8_t* heap_ = nullptr;  // the bytes, when they come from the heap
  size_t size_ = 0, total_ = 0;
  bool aliased_ = false;
};

}  // namespace effects::test
