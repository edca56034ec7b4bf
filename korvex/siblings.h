#pragma once

/// The names of the sibling libraries, visible as korvex's own.

#include "contract/bostrel/throw.h"
#include "contract/quarnel/mol.h"
#include "contract/vantrel/platform.h"

namespace ZQKorvex {
using namespace Bostrel;
using namespace Quarnel;
using namespace Vantrel;
}  // namespace ZQKorvex
