#pragma once

/// The classes of the namespace interfaces.

#include "contract/bostrel/nspace.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

class ZQFPTypeInterface final : public ZQNamespaceInterface {
 public:
  ZQFPTypeInterface();
};

class ZQFPAtomTypeInterface final : public ZQNamespaceInterface {
 public:
  ZQFPAtomTypeInterface();
};

class ZQFPBondTypeInterface final : public ZQNamespaceInterface {
 public:
  ZQFPBondTypeInterface();
};

class ZQSimMeasureInterface final : public ZQNamespaceInterface {
 public:
  ZQSimMeasureInterface();
};

class ZQMemoryTypeInterface final : public ZQNamespaceInterface {
 public:
  ZQMemoryTypeInterface();
};

}  // namespace ZQKorvex
