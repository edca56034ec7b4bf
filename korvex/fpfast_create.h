#pragma once

/// Making a `.fpbin` file (fpfast.h) from a file of molecules, and checking that the two belong
/// together.
///
/// All records have one size and the number of molecules is known from the start. So the file gets
/// its full length first, and the place of a record follows from its molecule's index. Threads take
/// molecules in small chunks, make the fingerprints, and write each record to its place through one
/// mapping of the file. Nothing is queued, sorted or copied twice, and the file doesn't depend on
/// which thread makes which record.

#include <cstdint>
#include <optional>
#include <string>

#include "contract/bostrel/dots.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

class ZQFastFPDatabase;

/// How to make a database. A plain value; the type must be one of path, circular or tree, with a
/// size that is a multiple of 256 bits.
class ZQ_EXPORT ZQCreateFastFPDatabaseOptions {
 public:
  explicit ZQCreateFastFPDatabaseOptions(const ZQFPTypeBase* type) : type_(type) {}

  const ZQFPTypeBase* GetFPTypeBase() const { return type_; }
  /// Threads; 0 (the default) means as many as the machine has processors.
  void SetNumProcessors(unsigned int numProcessors) { numProcessors_ = numProcessors; }
  /// The number set, at most twice the machine's processors.
  unsigned int GetNumProcessors() const;
  /// Reports progress through a copy of the tracer, made here; the caller's object stays as it is.
  /// A tracer of unknown total gets the number of records as its total.
  void SetTracer(const ZQDots& tracer) { tracer_ = tracer; }
  const std::optional<ZQDots>& GetTracer() const { return tracer_; }

 private:
  const ZQFPTypeBase* type_;
  unsigned int numProcessors_ = 0;
  std::optional<ZQDots> tracer_;
};

/// What was written into a database.
struct ZQFPCreationCounts {
  std::uint64_t records = 0;
  std::uint64_t failed = 0;  ///< of molecules that can't be read or have no fingerprint
  std::uint64_t empty = 0;   ///< without a bit, the failed ones included
};

/// Makes the database `fpbinFile` (extension "fpbin") of the molecules in `moleculeFile`: one
/// record for each molecule index, in that order, the same byte for byte for any number of
/// threads. A molecule that can't be read, or gets no fingerprint, warns with its index and leaves
/// a record of zeros; the run goes on and still returns true. False, after a warning that
/// begins "ZQCreateFastFPDatabaseFile()", for a wrong extension, a molecule file that can't be
/// opened or is empty, an illegal type, or an output that can't be written; no output file is
/// touched before the input has been judged. The disk space is reserved before the work begins. A
/// run that is cut short leaves a file with zeros in place of the missing records. Where fewer
/// threads can be started, those do the work. Lack of memory is thrown as the standard library's
/// exception once all threads have ended. `counts`, if not null, is filled where true is
/// returned.
ZQ_EXPORT bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile,
                                          const std::string& moleculeFile,
                                          const ZQCreateFastFPDatabaseOptions& options,
                                          ZQFPCreationCounts* counts = nullptr);
ZQ_EXPORT bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile,
                                          const std::string& moleculeFile,
                                          const ZQFPTypeBase* type);

/// Whether the database was made from these molecules, judged by their number and by the first
/// record. False after a warning that begins "ZQAreCompatibleDatabases()". A first molecule that
/// can't be read matches a record of zeros.
ZQ_EXPORT bool ZQAreCompatibleDatabases(const ZQMolDatabase& molecules,
                                        const ZQFastFPDatabase& fingerprints);

}  // namespace ZQKorvex
