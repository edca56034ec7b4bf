#pragma once

/// Internals of the `.fpbin` format: conversions between bytes, words and fingerprints, and the
/// writers of headers and records. The conversions work byte by byte, with the same results on any
/// host.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "korvex/fpfast.h"
#include "korvex/measuresim.h"
#include "korvex/mmapfile.h"

namespace ZQKorvex {

inline constexpr std::size_t zqHeaderBytes = 800;
inline constexpr std::size_t zqHeaderWords = zqHeaderBytes / 8;
/// Offsets of W and N in the header's binary tail, in words.
inline constexpr std::size_t zqNumWordsPosition = 98;
inline constexpr std::size_t zqNumRecordsPosition = 99;
static_assert(zqNumRecordsPosition + 1 == zqHeaderWords);
/// Words of a record before the fingerprint: molecule index and population count.
inline constexpr std::size_t zqRecordPrefixWords = 2;

inline constexpr bool ZQIsUInit64LittleEndian() {
  return std::endian::native == std::endian::little;
}

/// Least significant byte first.
std::string ZQConvert(std::uint64_t value);
/// A string whose length isn't 8 bytes is an assertion failure and returns 0.
std::uint64_t ZQConvert(const std::string& bytes);
std::uint64_t ZQConvert(const unsigned char* bytes);

/// Packs a header into exactly 100 words, truncated or padded with zeros, and returns 100.
std::size_t ZQConvertHeader(std::vector<std::uint64_t>& words, const std::string& header);
/// Appends the bytes of the words; returns their number.
std::size_t ZQConvertHeader(std::string& header, const std::vector<std::uint64_t>& words);

/// The words of a fingerprint.
bool ZQConvertFP(std::vector<std::uint64_t>& words, const ZQFingerPrint& fp);
/// The same; returns the population count of the words, computed by `popcount`.
std::uint64_t ZQConvertFP(std::vector<std::uint64_t>& words, const ZQFingerPrint& fp,
                          ZQPopCountFunc popcount);
/// A fingerprint with 64 bits for each word; empty if there are no words.
bool ZQConvertFP(ZQFingerPrint& fp, const ZQFPTypeBase* type,
                 const std::vector<std::uint64_t>& words);
/// A fingerprint from `count` bytes. A null type or pointer is an assertion failure.
bool ZQConvertFP(ZQFingerPrint& fp, const ZQFPTypeBase* type, const std::uint64_t* words,
                 std::size_t count);
bool ZQConvertFP(ZQFingerPrint& fp, const ZQFPTypeBase* type, const unsigned char* bytes,
                 std::size_t count);

/// The 800 bytes of a header, from molecule file name, type and count. A null type is an assertion
/// failure and returns an empty string. Too long a name gives an unreadable header.
std::string ZQWriteFastFPDatabaseHeaderBlob(const ZQFastFPDatabaseParams& params);
/// Writes that header to the start of the mapping; false for a null type or an output that isn't
/// mapped.
bool ZQWriteFastFPDatabaseParams(MMapOutputFile& output, const ZQFastFPDatabaseParams& params);
/// The bytes of one record. Empty, after the warning "%s : uninitialized fingerprint!", for a
/// fingerprint without a type.
std::string ZQWriteFastFingerPrintBlob(std::uint64_t index, const ZQFingerPrint& fp);

}  // namespace ZQKorvex
