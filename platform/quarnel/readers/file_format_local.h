#pragma once

/// The formats of molecule files. Each difference between them is a member of `FileFormat`. A new
/// format needs its name in the lines at the end, and a file that reads it and defines its object.

#include <cstddef>
#include <string>
#include <string_view>

#include "contract/quarnel/mol.h"
#include "contract/quarnel/moldatabase.h"
#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

/// What the header line of a table says: the number of its columns, and which of them are read.
struct TableColumns {
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  std::size_t count = 0;
  std::size_t smiles = 0;
  std::size_t title = none;
};

struct FileFormat {
  std::string_view extensions;  ///< in lower case, such as ".sdf .sd .mol"
  const char* place;            ///< unit of an error's place, such as "molfile line"
  /// Reads the header line of a table and moves `from` past it; false with a cause. Null for a
  /// format without one; its other functions get no columns then.
  bool (*readHeader)(std::string_view text, std::size_t& from, const ZQMolFileOptions& options,
                     TableColumns& columns, std::string& cause);
  /// Returns the start of the first record at or after `from`, and moves `from` past the record;
  /// npos if there is none. A record's text extends to the start of the next one.
  std::size_t (*findRecord)(std::string_view text, std::size_t& from);
  /// Reads a record, its title included. On failure, fills the error and leaves the molecule in an
  /// unspecified state.
  bool (*read)(ZQMolBase& mol, std::string_view record, const TableColumns& columns,
               ReaderError& error);
  std::string (*getTitle)(std::string_view record, const TableColumns& columns);
  /// The record's own SMILES; null for a format that has none.
  std::string (*getSmiles)(std::string_view record, const TableColumns& columns);
};

extern const FileFormat smilesFiles;
extern const FileFormat mdlFiles;
extern const FileFormat commaFiles;
extern const FileFormat tabFiles;
inline constexpr const FileFormat* fileFormats[] = {&smilesFiles, &mdlFiles, &commaFiles,
                                                    &tabFiles};

}  // namespace Quarnel
