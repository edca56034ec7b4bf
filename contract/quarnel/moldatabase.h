#pragma once

/// Random access to a file of molecules. Opening maps the file (or unpacks it, for `.gz`) and
/// indexes the starts of the records, in one pass and 8 bytes per record. Records are parsed on
/// demand. After `Open` all const operations are safe from many threads on one object.

#include <memory>
#include <string>
#include <string_view>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// The extensions of readable molecule files, such as ".smi .sdf": in lower case, with points,
/// separated by blanks.
ZQ_EXPORT std::string ZQGetMolFileExtensions();

class ZQ_EXPORT ZQMolDatabase {
 public:
  ZQMolDatabase();
  ~ZQMolDatabase();
  ZQMolDatabase(const ZQMolDatabase&) = delete;
  ZQMolDatabase& operator=(const ZQMolDatabase&) = delete;

  /// Opens a file of SMILES (a SMILES, white space and a title on each line; blank lines aren't
  /// records) or of molfiles (one, or several ended by "$$$$"). The format follows from the
  /// extension, in upper or lower case: one of `ZQGetMolFileExtensions`, optionally followed by
  /// `.gz`. Returns false after a warning that names the file and the cause.
  bool Open(const std::string& filename);
  /// Whether the name's extension is one that `Open` reads.
  static bool IsReadable(const std::string& filename);

  /// Number of records: indices run from 0 to one less.
  unsigned int GetMaxMolIdx() const;
  /// Parses a record. If it can't be read, returns false after one warning with the record's
  /// number; the molecule is then not valid.
  bool GetMolecule(ZQMolBase& mol, unsigned int idx) const;
  /// The title of a record, also of one that can't be read as a molecule; empty past the end.
  std::string GetTitle(unsigned int idx) const;
  /// The SMILES of a record: its own text in a SMILES file, otherwise written from the molecule.
  /// Empty if the record can't be read.
  std::string GetSmiles(unsigned int idx) const;

 private:
  class ZQ_LOCAL Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace Quarnel
