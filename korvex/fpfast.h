#pragma once

/// The `.fpbin` file: an 800-byte header and one record of fixed size for each molecule index.
///
///   offset 0     "LE" or "BE", line feed
///                molecule file name, line feed
///                fingerprint type string, line feed
///                N, the number of records, in decimal, line feed; zero bytes up to 784
///   offset 784   W, the 64-bit words of a fingerprint, little-endian
///   offset 792   N, little-endian
///   offset 800   N records of W + 2 little-endian words: molecule index, population count, and
///                the fingerprint, bit b of which is bit b % 64 of word b / 64
///
/// A molecule without a fingerprint has a record with population count 0 and all bits off.

#include <cstdint>
#include <string>
#include <utility>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// The parsed header of a `.fpbin` file, and the input for writing one. A plain value: filled by
/// one thread, then read by any.
class ZQ_EXPORT ZQFastFPDatabaseParams {
 public:
  /// For writing: fill in the molecule file name, the type and the count.
  ZQFastFPDatabaseParams() = default;
  /// Reads the header of a file. Each failure warns and leaves an invalid object; the checks run in
  /// this order: "... cannot open fingerprint database file %s", "... invalid fingerprint database
  /// file %s" (100 bytes or less), "... cannot read molecule filename from %s header", "... cannot
  /// read fingerprint type from %s header", "... invalid fingerprint type in %s header", "...
  /// cannot read number of fingerprints from %s header", "... invalid number of fingerprints in %s
  /// header", "... inconsistent number of fingerprints in %s header". Doesn't compare the size of
  /// the file with the header; `IsConsistent` does.
  explicit ZQFastFPDatabaseParams(const std::string& filename);
  /// The same for a stream on the file, which may have failed to open. The name is for messages.
  ZQFastFPDatabaseParams(zqifstream& in, const std::string& filename);

  bool IsValid() const { return valid_; }
  bool IsLittleEndian() const { return littleEndian_; }
  const std::string& GetMoleculeFile() const { return moleculeFile_; }
  const ZQFPTypeBase* GetFPTypeBase() const { return type_; }
  std::uint64_t NumFingerPrints() const { return numFingerPrints_; }
  /// Size in bytes reported by the file system.
  std::uint64_t GetFileSize() const { return fileSize_; }
  /// 64-bit words per fingerprint.
  std::uint64_t NumWords() const { return numWords_; }
  /// Whether a fingerprint of the type has exactly the header's number of words, and a multiple of
  /// `ZQGetPopCountFingerprintSizeUnit` bits. Otherwise the records can't be scanned.
  bool FitsType() const { return fitsType_; }
  /// Whether the header is valid and fits its type, the type may be stored, and the size of the
  /// file is exactly that computed from the header. Never warns.
  bool IsConsistent() const;

  void SetMoleculeFile(std::string name) { moleculeFile_ = std::move(name); }
  void SetFPTypeBase(const ZQFPTypeBase* type) { type_ = type; }
  void SetNumFingerPrints(std::uint64_t count) { numFingerPrints_ = count; }

 private:
  bool valid_ = false;
  bool fitsType_ = false;
  bool littleEndian_ = false;
  std::string moleculeFile_;
  const ZQFPTypeBase* type_ = nullptr;
  std::uint64_t numFingerPrints_ = 0;
  std::uint64_t fileSize_ = 0;
  std::uint64_t numWords_ = 0;
};

/// Whether fingerprints of the type may be stored in a `.fpbin` file: path, circular or tree, of a
/// multiple of 256 bits. Otherwise warns, prefixed by the caller's name: "... invalid fingerprint
/// pointer!", "... invalid fingerprint type!", "... invalid fingerprint type (only path, circular
/// or tree allowed)!" or "... invalid fingerprint size (has to be multiple of %d)!".
ZQ_EXPORT bool CheckFingerPrintType(const ZQFPTypeBase* type, const char* caller);

/// Size of a file of `count` records: 800 + count * (bits / 64 + 2) * 8 bytes, but at most 2^64 -
/// 1. A null type, or one whose size isn't a multiple of 64 bits, is an assertion failure.
ZQ_EXPORT std::uint64_t ZQGetFPDatabaseFileSize(std::uint64_t count, const ZQFPTypeBase* type);

}  // namespace ZQKorvex
