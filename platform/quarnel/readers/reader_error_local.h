#pragma once

/// What a reader of text found wrong, and where. Kept apart from the report, so that the text of
/// a report is only put together when there is one to make.

#include <cstddef>
#include <string>
#include <string_view>

#include "contract/quarnel/mol.h"

namespace Quarnel {

struct ReaderError {
  std::size_t place = 0;  ///< column of a SMILES or line of a molfile, from 1
  std::string found;
  std::string expected;
};

/// The start of `text` in quotes, at most 16 bytes of it, unprintable bytes as "\x1b"; "the end"
/// for an empty text.
std::string QuoteStart(std::string_view text);

/// Empties the molecule, marks it as not valid and reports one warning, such as "record 3 of
/// a.smi: SMILES column 7: found the end, expected an atom".
void ReportUnreadable(ZQMolBase& mol, const std::string& where, const char* what,
                      const ReaderError& error);

}  // namespace Quarnel
