#pragma once

#include <string_view>

#include "contract/quarnel/mol.h"
#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

/// `ZQSmilesToMol` without the report: a failure fills `error` and leaves the molecule in any
/// state.
bool ReadSmiles(ZQMolBase& mol, std::string_view smiles, ReaderError& error);

}  // namespace Quarnel
