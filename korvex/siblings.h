#pragma once

/// Imports the names of the sibling libraries into korvex's namespace.

#include "contract/bostrel/throw.h"
#include "contract/lodrine/buffer.h"
#include "contract/nubrel/gpu.h"
#include "contract/quarnel/mol.h"
#include "contract/vantrel/platform.h"

namespace ZQKorvex {
using namespace Bostrel;
using namespace Lodrine;
using namespace Nubrel;
using namespace Quarnel;
using namespace Vantrel;
}  // namespace ZQKorvex
