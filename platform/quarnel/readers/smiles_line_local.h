#pragma once

/// A line of a SMILES file: a SMILES, white space, an extension block in bars or none, and a title.

#include <string_view>

#include "contract/quarnel/mol.h"
#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

/// Unit of the place of an error in a SMILES.
inline constexpr const char* smilesPlace = "SMILES column";

std::string_view GetSmilesOfLine(std::string_view line);
/// The text behind the SMILES and its block, up to a further tab.
std::string_view GetTitleOfLine(std::string_view line);
/// Reads the SMILES, without the title. On failure, fills the error and leaves the molecule in an
/// unspecified state.
bool ReadSmiles(ZQMolBase& mol, std::string_view smiles, ReaderError& error);

}  // namespace Quarnel
