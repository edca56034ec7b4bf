#pragma once

#include <cstdint>
#include <vector>

#include "platform/quarnel/canonical/partition_local.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"

namespace Quarnel {

/// Which atoms and bonds of the view could carry stereo.
struct Chirality {
  void Find(const MolView& view, const Partition& partition);

  std::vector<char> atoms;
  std::vector<char> bonds;
};

}  // namespace Quarnel
