// The kernels for a GPU: the block of threads, and one entry point for each kernel. Clang compiles
// this file to PTX without any header but those of the project, and without a toolkit.

#pragma clang force_cuda_host_device begin
#include "platform/nubrel/kernels/pairs_local.h"
#include "platform/nubrel/kernels/scans_local.h"
#pragma clang force_cuda_host_device end

#define ZQ_DEVICE __attribute__((device, always_inline)) inline

namespace Nubrel {

/// The dynamic shared memory of the block.
extern "C" __attribute__((shared)) Word zqShared[];

ZQ_DEVICE unsigned int AtomicAdd(unsigned int* target, unsigned int value) {
  return __nvvm_atom_add_gen_i(reinterpret_cast<int*>(target), value);
}
ZQ_DEVICE Word AtomicAdd(Word* target, Word value) {
  return __nvvm_atom_add_gen_ll(reinterpret_cast<long long*>(target), value);
}

class DeviceBlock {
 public:
  /// An array in one of the two memories. Its address space is known, which makes its loads and
  /// stores those of this memory.
  template <class T, int space>
  class View {
   public:
    ZQ_DEVICE explicit View(__attribute__((address_space(space))) T* data) : data_(data) {}
    ZQ_DEVICE T Get(unsigned long index) const { return data_[index]; }
    ZQ_DEVICE void Set(unsigned long index, T value) const { data_[index] = value; }
    /// Atomic. Returns the value before.
    ZQ_DEVICE T Add(unsigned long index, T value) const {
      return AtomicAdd((T*)(data_ + index), value);
    }

   private:
    __attribute__((address_space(space))) T* data_;
  };
  template <class T>
  using Global = View<T, 1>;
  template <class T>
  using Shared = View<T, 3>;
  template <class T>
  class PerThread {
   public:
    ZQ_DEVICE T& operator[](unsigned int /*t*/) { return value_; }

   private:
    T value_ = {};
  };

  ZQ_DEVICE unsigned int GetX() const { return __nvvm_read_ptx_sreg_ctaid_x(); }
  ZQ_DEVICE unsigned int GetY() const { return __nvvm_read_ptx_sreg_ctaid_y(); }
  template <class T>
  ZQ_DEVICE Global<T> GetGlobal(ZQCUAddress address) const {
    return Global<T>((__attribute__((address_space(1))) T*)address);
  }
  template <class T>
  ZQ_DEVICE Shared<T> CarveShared(unsigned int count) {
    const Shared<T> view((__attribute__((address_space(3)))
                          T*)((__attribute__((address_space(3))) char*)zqShared + carved_));
    carved_ += count * sizeof(T);
    return view;
  }
  template <class Body>
  ZQ_DEVICE void ForThreads(const Body& body) const {
    body(__nvvm_read_ptx_sreg_tid_x());
    __syncthreads();
  }

 private:
  unsigned int carved_ = 0;
};

/// The entry points, under the kernels' names.
namespace Entries {
#define ZQ_ENTRY(name, Fields)                                                                    \
  extern "C" __attribute__((global, launch_bounds(zqBlockThreads, 2))) void name(Fields fields) { \
    DeviceBlock block;                                                                            \
    Nubrel::name(block, fields);                                                                  \
  }
ZQ_KERNELS(ZQ_ENTRY)
}  // namespace Entries

}  // namespace Nubrel
