#pragma once

/// A block of threads as the kernels see it (platform/nubrel/kernels/records_local.h), on a
/// processor. The threads of a phase run one after another, forward or backward. Each access to
/// memory is checked, and one that isn't allowed is a finding, and isn't made:
///
/// - an access to global memory that isn't inside the live buffer which the view's address is in,
///   or that isn't aligned;
/// - an access to shared memory outside of the view or the launch's memory;
/// - a race: a plain write of a thread, and any access of another one to the same place, in shared
///   memory in the same phase, in global memory in the same phase or of another block; there a
///   write is seen only if it is the first of the two;
/// - any access between phases.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/nubrel/kernels/geometry_local.h"

namespace Nubrel {

/// The last change of an element of global memory.
struct EmulatedChange {
  unsigned long block = 0;
  unsigned long phase = 0;
  int thread = 0;
  bool isAddition = false;
};

/// What the blocks of one launch share.
struct EmulatedLaunch {
  std::string kernel;
  /// The bytes from an address on to the end of its live buffer; none if it isn't in one.
  std::function<std::span<std::byte>(ZQCUAddress)> getMemory;
  unsigned int sharedBytes = 0;
  bool backward = false;  ///< the order of the threads in the first phase; it changes with each

  std::unordered_map<const std::byte*, EmulatedChange> changes;
  unsigned long numFindings = 0;
  std::vector<std::string> findings;  ///< the first few
};

class EmulatedBlock {
  struct Access {
    enum : unsigned int { Read, Write, Add };
    static constexpr const char* names[] = {"read", "write", "addition"};
  };

 public:
  EmulatedBlock(EmulatedLaunch& launch, unsigned int x, unsigned int y)
      : launch_(launch),
        x_(x),
        y_(y),
        backward_(launch.backward),
        shared_(launch.sharedBytes, garbage),
        uses_(ZQCUDivideUp(launch.sharedBytes, sizeof(std::uint32_t))) {}

  template <class T>
  class Global {
   public:
    Global(EmulatedBlock& block, ZQCUAddress address)
        : block_(&block),
          bytes_(block.launch_.getMemory(address)),
          isAligned_(address % alignof(T) == 0) {}
    T Get(unsigned long index) const {
      T value{};
      if (IsAllowed(index, Access::Read)) std::memcpy(&value, Find(index), sizeof(T));
      return value;
    }
    void Set(unsigned long index, T value) const {
      if (IsAllowed(index, Access::Write)) std::memcpy(Find(index), &value, sizeof(T));
    }
    T Add(unsigned long index, T value) const {
      T old{};
      if (!IsAllowed(index, Access::Add)) return old;
      std::memcpy(&old, Find(index), sizeof(T));
      value += old;
      std::memcpy(Find(index), &value, sizeof(T));
      return old;
    }

   private:
    std::byte* Find(unsigned long index) const { return &bytes_[index * sizeof(T)]; }
    bool IsAllowed(unsigned long index, unsigned int access) const {
      if (!block_->IsInPhase(Access::names[access])) return false;
      const char* const fault = index >= bytes_.size() / sizeof(T)       ? "outside of its buffer"
                                : !isAligned_                            ? "not aligned"
                                : block_->UseGlobal(Find(index), access) ? nullptr
                                                                         : "a race";
      if (fault) block_->AddFinding("global memory", Access::names[access], index, fault);
      return !fault;
    }

    EmulatedBlock* block_;
    std::span<std::byte> bytes_;
    bool isAligned_;
  };

  template <class T>
  class Shared {
   public:
    Shared(EmulatedBlock& block, std::size_t offset, std::size_t count)
        : block_(&block), offset_(offset), count_(count) {}
    T Get(unsigned long index) const {
      T value{};
      if (IsAllowed(index, Access::Read)) std::memcpy(&value, Find(index), sizeof(T));
      return value;
    }
    void Set(unsigned long index, T value) const {
      if (IsAllowed(index, Access::Write)) std::memcpy(Find(index), &value, sizeof(T));
    }
    T Add(unsigned long index, T value) const {
      T old{};
      if (!IsAllowed(index, Access::Add)) return old;
      std::memcpy(&old, Find(index), sizeof(T));
      value += old;
      std::memcpy(Find(index), &value, sizeof(T));
      return old;
    }

   private:
    std::byte* Find(unsigned long index) const {
      return &block_->shared_[offset_ + index * sizeof(T)];
    }
    bool IsAllowed(unsigned long index, unsigned int access) const {
      if (!block_->IsInPhase(Access::names[access])) return false;
      const char* const fault = index >= count_ ? "outside of its array"
                                : block_->Use(offset_ + index * sizeof(T), sizeof(T), access)
                                    ? nullptr
                                    : "a race";
      if (fault) block_->AddFinding("shared memory", Access::names[access], index, fault);
      return !fault;
    }

    EmulatedBlock* block_;
    std::size_t offset_;
    std::size_t count_;
  };

  template <class T>
  class PerThread {
   public:
    T& operator[](unsigned int t) { return values_[t]; }

   private:
    std::vector<T> values_ = std::vector<T>(zqBlockThreads);
  };

  unsigned int GetX() const { return x_; }
  unsigned int GetY() const { return y_; }

  template <class T>
  Global<T> GetGlobal(ZQCUAddress address) {
    return Global<T>(*this, address);
  }
  template <class T>
  Shared<T> CarveShared(std::size_t count) {
    static_assert(sizeof(T) % sizeof(std::uint32_t) == 0, "races are seen in units of 4 bytes");
    const std::size_t offset = std::exchange(carved_, carved_ + count * sizeof(T));
    if (offset % alignof(T) == 0 && carved_ <= shared_.size()) {
      return Shared<T>(*this, offset, count);
    }
    AddFinding("shared memory", "array", count, "more than the launch has, or not aligned");
    return Shared<T>(*this, 0, 0);
  }

  template <class Body>
  void ForThreads(const Body& body) {
    ++phase_;
    for (unsigned int i = 0; i < zqBlockThreads; ++i) {
      thread_ = static_cast<int>(backward_ ? zqBlockThreads - 1 - i : i);
      body(static_cast<unsigned int>(thread_));
    }
    thread_ = noThread;
    backward_ = !backward_;
  }

 private:
  static constexpr std::byte garbage{0xA5};
  static constexpr int noThread = -1;
  static constexpr int manyThreads = -2;
  /// Who used 4 bytes of shared memory in a phase, by the kind of access.
  struct Uses {
    unsigned long phase = 0;
    int threads[3] = {noThread, noThread, noThread};
  };

  bool IsInPhase(const char* access) {
    if (thread_ != noThread) return true;
    AddFinding("memory", access, 0, "between phases");
    return false;
  }

  /// Notes a change of global memory; false for a race.
  bool UseGlobal(const std::byte* element, unsigned int access) {
    const EmulatedChange change{x_ + (static_cast<unsigned long>(y_) << 32U), phase_, thread_,
                                access == Access::Add};
    const auto isFine = [&](const EmulatedChange& before) {
      return (before.block == change.block &&
              (before.phase != phase_ || before.thread == thread_)) ||
             (before.isAddition && change.isAddition);
    };
    if (access == Access::Read) {
      const auto found = launch_.changes.find(element);
      return found == launch_.changes.end() || isFine(found->second);
    }
    const auto [found, isFirst] = launch_.changes.try_emplace(element, change);
    return isFirst || isFine(std::exchange(found->second, change));
  }
  /// Notes an access to shared memory; false for a race.
  bool Use(std::size_t offset, std::size_t bytes, unsigned int access) {
    bool isRace = false;
    for (std::size_t unit = offset / sizeof(std::uint32_t);
         unit < (offset + bytes) / sizeof(std::uint32_t); ++unit) {
      Uses& uses = uses_[unit];
      if (uses.phase != phase_) uses = {phase_};
      const auto byOthers = [&](unsigned int kind) {
        return uses.threads[kind] != noThread && uses.threads[kind] != thread_;
      };
      isRace |= byOthers(Access::Write) || (access != Access::Read && byOthers(Access::Read)) ||
                (access != Access::Add && byOthers(Access::Add));
      uses.threads[access] = byOthers(access) ? manyThreads : thread_;
    }
    return !isRace;
  }

  void AddFinding(const char* memory, const char* access, unsigned long index, const char* fault) {
    constexpr std::size_t maxFindings = 8;
    ++launch_.numFindings;
    if (launch_.findings.size() >= maxFindings) return;
    launch_.findings.push_back(launch_.kernel + ", block " + std::to_string(x_) + " " +
                               std::to_string(y_) + ", thread " + std::to_string(thread_) + ", " +
                               memory + ", " + access + " " + std::to_string(index) + ": " + fault);
  }

  EmulatedLaunch& launch_;
  unsigned int x_;
  unsigned int y_;
  bool backward_;
  unsigned long phase_ = 0;
  int thread_ = noThread;
  std::size_t carved_ = 0;
  std::vector<std::byte> shared_;
  std::vector<Uses> uses_;
};

/// Runs a kernel, a function of the block, for all blocks of a grid.
template <class Kernel>
void RunBlocks(EmulatedLaunch& launch, unsigned int gridX, unsigned int gridY,
               const Kernel& kernel) {
  const unsigned long numBlocks = static_cast<unsigned long>(gridX) * gridY;
  for (unsigned long i = 0; i < numBlocks; ++i) {
    const unsigned long number = launch.backward ? numBlocks - 1 - i : i;
    EmulatedBlock block(launch, static_cast<unsigned int>(number % gridX),
                        static_cast<unsigned int>(number / gridX));
    kernel(block);
  }
}

}  // namespace Nubrel
