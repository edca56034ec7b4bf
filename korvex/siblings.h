#pragma once

/// The names of the sibling libraries, visible as korvex's own.

#include "contract/bostrel/throw.h"
#include "contract/quarnel/mol.h"
#include "contract/vantrel/platform.h"

namespace ZQKorvex {
using namespace Bostrel;  // NOLINT(google-build-using-namespace): one namespace for callers
using namespace Quarnel;  // NOLINT(google-build-using-namespace)
using namespace Vantrel;  // NOLINT(google-build-using-namespace)
}  // namespace ZQKorvex
