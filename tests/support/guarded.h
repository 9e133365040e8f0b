// Memory that ends exactly where a buffer ends: the bytes are followed by a
// page that may not be read or written, so any access past the last element
// faults at once, natively and under Wine alike (where there is no
// AddressSanitizer).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace effects::test {

class GuardedBytes {
 public:
  GuardedBytes() = default;
  explicit GuardedBytes(size_t size) : size_(size) {
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
  }
  ~GuardedBytes() { release(); }
  GuardedBytes(GuardedBytes&& o) noexcept { *this = static_cast<GuardedBytes&&>(o); }
  GuardedBytes& operator=(GuardedBytes&& o) noexcept {
    if (this != &o) {
      release();
      base_ = o.base_; data_ = o.data_; size_ = o.size_; total_ = o.total_;
      o.base_ = o.data_ = nullptr;
      o.size_ = o.total_ = 0;
    }
    return *this;
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  uint8_t* data() const { return data_; }
  size_t size() const { return size_; }

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
    if (!base_) return;
#if defined(_WIN32)
    VirtualFree(base_, 0, MEM_RELEASE);
#else
    munmap(base_, total_);
#endif
    base_ = data_ = nullptr;
  }
  uint8_t* base_ = nullptr;
  uint8_t* data_ = nullptr;
  size_t size_ = 0, total_ = 0;
};

}  // namespace effects::test
