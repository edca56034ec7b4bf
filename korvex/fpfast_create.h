#pragma once

/// Creates a `.fpbin` file (fpfast.h) from a molecule file, and checks whether the two match.

#include <cstdint>
#include <optional>
#include <string>

#include "contract/bostrel/dots.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

class ZQFastFPDatabase;

/// The options of database creation. A plain value; the type must be path, circular or tree, with a
/// size that is a multiple of 256 bits.
class ZQ_EXPORT ZQCreateFastFPDatabaseOptions {
 public:
  explicit ZQCreateFastFPDatabaseOptions(const ZQFPTypeBase* type) : type_(type) {}

  const ZQFPTypeBase* GetFPTypeBase() const { return type_; }
  /// The number of threads; 0 (the default) means one for each processor of the machine.
  void SetNumProcessors(unsigned int numProcessors) { numProcessors_ = numProcessors; }
  /// The number set, at most twice the machine's processors.
  unsigned int GetNumProcessors() const;
  /// Copies the tracer and reports progress through the copy; the caller's object doesn't change. A
  /// tracer of unknown total gets the number of records as its total. Threads update it one at a
  /// time.
  void SetTracer(const ZQDots& tracer) { tracer_ = tracer; }
  const std::optional<ZQDots>& GetTracer() const { return tracer_; }

 private:
  const ZQFPTypeBase* type_;
  unsigned int numProcessors_ = 0;
  std::optional<ZQDots> tracer_;
};

/// The numbers of records written to a database.
struct ZQFPCreationCounts {
  std::uint64_t records = 0;
  std::uint64_t failed = 0;  ///< of molecules that can't be read or have no fingerprint
  std::uint64_t empty = 0;   ///< with no bit set, the failed ones included
};

/// Creates the database `fpbinFile` (extension "fpbin") from the molecules in `moleculeFile`: one
/// record for each molecule index, in that order, byte-identical for any number of threads. A
/// molecule that can't be read, or has no fingerprint, warns with its index and gets a record of
/// zeros; the run continues and still returns true. Returns false, after a warning that begins
/// "ZQCreateFastFPDatabaseFile()", for a wrong extension, a molecule file that can't be opened or
/// is empty, an illegal type, an output that can't be written, or a run that the tracer ends. The
/// input is checked before any output file is touched, and the disk space is reserved before the
/// work begins. An interrupted run leaves a file with zeros in place of the missing records. If
/// fewer threads can be started, those do the work. If memory runs out, throws the standard
/// library's exception once all threads have ended. `counts`, if not null, is filled if the result
/// is true.
ZQ_EXPORT bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile,
                                          const std::string& moleculeFile,
                                          const ZQCreateFastFPDatabaseOptions& options,
                                          ZQFPCreationCounts* counts = nullptr);
ZQ_EXPORT bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile,
                                          const std::string& moleculeFile,
                                          const ZQFPTypeBase* type);
/// The same from molecules that are open, as those of standard input or of a table whose columns
/// were chosen. `moleculeFile` is the name that the header gets.
ZQ_EXPORT bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile,
                                          const ZQMolDatabase& molecules,
                                          const std::string& moleculeFile,
                                          const ZQCreateFastFPDatabaseOptions& options,
                                          ZQFPCreationCounts* counts = nullptr);

/// Whether the database was made from these molecules, judged by their number and by the first
/// record. Otherwise warns with a text that begins "ZQAreCompatibleDatabases()". A first molecule
/// that can't be read matches a record of zeros.
ZQ_EXPORT bool ZQAreCompatibleDatabases(const ZQMolDatabase& molecules,
                                        const ZQFastFPDatabase& fingerprints);

}  // namespace ZQKorvex
