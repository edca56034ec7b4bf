#pragma once

/// The formats of molecule files. Each difference between them is a member of `FileFormat`. A new
/// format needs its name in the two lines at the end, and a file that reads it and defines its
/// object.

#include <cstddef>
#include <string_view>

#include "contract/quarnel/mol.h"
#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

struct FileFormat {
  std::string_view extensions;  ///< in lower case, such as ".sdf .sd .mol"
  const char* place;            ///< unit of an error's place, such as "molfile line"
  /// Returns the start of the first record at or after `from`, and moves `from` past the record;
  /// npos if there is none. A record's text extends to the start of the next one.
  std::size_t (*findRecord)(std::string_view text, std::size_t& from);
  /// Reads a record, its title included. On failure, fills the error and leaves the molecule in an
  /// unspecified state.
  bool (*read)(ZQMolBase& mol, std::string_view record, ReaderError& error);
  std::string_view (*getTitle)(std::string_view record);
  /// The record's own SMILES; null for a format that has none.
  std::string_view (*getSmiles)(std::string_view record);
};

extern const FileFormat smilesFiles;
extern const FileFormat mdlFiles;
inline constexpr const FileFormat* fileFormats[] = {&smilesFiles, &mdlFiles};

}  // namespace Quarnel
