#pragma once

/// An error found by a text reader, and its place. Separate from the report, so that a report's
/// text is only composed when one is made.

#include <cstddef>
#include <string>
#include <string_view>

#include "contract/quarnel/mol.h"

namespace Quarnel {

struct ReaderError {
  std::size_t place = 0;  ///< column of a SMILES or line of a molfile, from 1
  std::string found;
  std::string expected;
  const char* unit = nullptr;  ///< of the place, if not that of the format
};

/// Returns up to `limit` bytes of the start of `text` in quotes, unprintable bytes as "\x1b"; "the
/// end" for an empty text.
std::string QuoteStart(std::string_view text, std::size_t limit = 16);

/// Empties the molecule, marks it as not valid and reports one warning, such as "record 3 of
/// a.smi: SMILES column 7: found the end, expected an atom".
void ReportUnreadable(ZQMolBase& mol, const std::string& where, const char* what,
                      const ReaderError& error);

}  // namespace Quarnel
