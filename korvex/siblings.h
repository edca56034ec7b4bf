#pragma once

/// Imports the names of the sibling libraries into korvex's namespace, but for those of the GPU
/// layer, some of which are names of CUDA too.

#include "contract/bostrel/throw.h"
#include "contract/lodrine/buffer.h"
#include "contract/quarnel/mol.h"
#include "contract/vantrel/platform.h"

namespace ZQKorvex {
using namespace Bostrel;
using namespace Lodrine;
using namespace Quarnel;
using namespace Vantrel;
}  // namespace ZQKorvex
