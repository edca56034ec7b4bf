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

/// How a molecule file is read, where neither its name nor its content says it.
struct ZQMolFileOptions {
  std::string format;        ///< an extension without its point, such as "csv"; empty: the name's
  std::string smilesColumn;  ///< of a table; empty: SMILES, else canonical_smiles
  std::string titleColumn;   ///< of a table; empty: name, else title, else id, else none
};

class ZQ_EXPORT ZQMolDatabase {
 public:
  ZQMolDatabase();
  ~ZQMolDatabase();
  ZQMolDatabase(const ZQMolDatabase&) = delete;
  ZQMolDatabase& operator=(const ZQMolDatabase&) = delete;

  /// Opens a file of SMILES (a SMILES, white space and a title on each line; blank lines aren't
  /// records), of molfiles (one, or several ended by "$$$$"), or a table. The format follows from
  /// the extension, in upper or lower case: one of `ZQGetMolFileExtensions`, optionally followed by
  /// `.gz`. A byte order mark is skipped. Returns false after a warning that names the file and the
  /// cause.
  ///
  /// Behind a SMILES and white space, a block in bars such as "|c:1|" isn't part of the title, and
  /// is ignored.
  ///
  /// A table is a header line with the names of columns, and lines of fields: separated by commas
  /// in a `.csv` file (RFC 4180), by tabs in a `.tsv` file. A field in double quotes may hold
  /// separators, line feeds, and quotes written twice. The options name columns, exactly or, if
  /// there is none, in any case; a name that no column has is an error that lists the columns.
  /// Missing fields at the end of a line are empty.
  bool Open(const std::string& filename);
  bool Open(const std::string& filename, const ZQMolFileOptions& options);
  /// The same with the content of a file, which is unpacked if it begins as a gzip file does.
  /// `name` is for messages, and for the format if the options have none.
  bool OpenContent(std::string content, const std::string& name, const ZQMolFileOptions& options);
  /// Whether the name's extension is one that `Open` reads.
  static bool IsReadable(const std::string& filename);
  /// Whether it is that of a table.
  static bool IsTable(const std::string& filename);

  /// The name of the file or the content; empty if none is open.
  std::string GetName() const;
  /// "record 3 of a.smi" for index 2, for messages; with the line in a table, as "record 3 of
  /// a.csv, line 4".
  std::string GetWhere(unsigned int idx) const;
  /// Number of records: indices run from 0 to one less.
  unsigned int GetMaxMolIdx() const;
  /// Parses a record. If it can't be read, returns false after one warning with the record's
  /// number; the molecule is then not valid.
  bool GetMolecule(ZQMolBase& mol, unsigned int idx) const;
  /// The title of a record, also of one that can't be read as a molecule; empty past the end.
  std::string GetTitle(unsigned int idx) const;
  /// The SMILES of a record: its own text in a SMILES file or a table, otherwise written from the
  /// molecule. Empty if the record can't be read.
  std::string GetSmiles(unsigned int idx) const;

 private:
  class ZQ_LOCAL Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace Quarnel
