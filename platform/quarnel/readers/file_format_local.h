#pragma once

/// The formats of molecule files. All that differs between them is a column of `FileFormat`. A new
/// format has its name in the two lines at the end, and a file that reads it and defines its row.

#include <cstddef>
#include <string_view>

#include "contract/quarnel/mol.h"
#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

struct FileFormat {
  std::string_view extensions;  ///< in lower case, such as ".sdf .sd .mol"
  const char* place;            ///< what the place of an error counts, such as "molfile line"
  /// Returns where the first record at or behind `from` starts, and moves `from` behind the record;
  /// npos if there is none. A record's text goes on to the start of the next one.
  std::size_t (*findRecord)(std::string_view text, std::size_t& from);
  /// Reads a record, its title included. A failure fills the error and leaves the molecule in any
  /// state.
  bool (*read)(ZQMolBase& mol, std::string_view record, ReaderError& error);
  std::string_view (*getTitle)(std::string_view record);
  /// The record's own SMILES; null for a format that has none.
  std::string_view (*getSmiles)(std::string_view record);
};

extern const FileFormat smilesFiles;
extern const FileFormat mdlFiles;
inline constexpr const FileFormat* fileFormats[] = {&smilesFiles, &mdlFiles};

}  // namespace Quarnel
