#pragma once

/// What streams of molecules have in common: the functions that read and write the data of binary
/// records.

#include "contract/bostrel/zqb.h"

namespace Quarnel {

class ZQ_EXPORT zqmolstreambase {
 public:
  zqmolstreambase() = default;
  virtual ~zqmolstreambase() = default;
  zqmolstreambase(const zqmolstreambase&) = delete;
  zqmolstreambase& operator=(const zqmolstreambase&) = delete;

  /// The stream's own functions, at first those of all libraries.
  Bostrel::ZQBinaryIOHandlerBase& GetBinaryIOHandler() { return handler_; }

 private:
  Bostrel::ZQBinaryIOHandler handler_;
};

}  // namespace Quarnel
