#include "korvex/fpfast.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <utility>

#include "contract/bostrel/strings.h"
#include "korvex/checked_local.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fpfast_local.h"
#include "korvex/fpkinds.h"

namespace ZQKorvex {

namespace {

bool IsStorable(unsigned int fptype) {
  const ZQFPKind* kind = ZQFindFPKind(fptype);
  return kind && kind->isStorable;
}

}  // namespace

// Conversions.

std::string ZQConvert(std::uint64_t value) {
  std::string bytes(8, '\0');
  for (char& byte : bytes) {
    byte = static_cast<char>(value & 0xFF);
    value >>= 8;
  }
  return bytes;
}

std::uint64_t ZQConvert(const std::string& bytes) {
  if (!ZQ_ASSERT(bytes.size() == 8)) return 0;
  return ZQConvert(reinterpret_cast<const unsigned char*>(bytes.data()));
}

std::uint64_t ZQConvert(const unsigned char* bytes) {
  std::uint64_t value = 0;
  for (unsigned int i = 0; i < 8; ++i) value |= std::uint64_t{bytes[i]} << (8 * i);
  return value;
}

std::size_t ZQConvertHeader(std::vector<std::uint64_t>& words, const std::string& header) {
  words.assign(zqHeaderWords, 0);
  for (std::size_t i = 0; i < std::min(header.size(), zqHeaderBytes); ++i) {
    words[i / 8] |= std::uint64_t{static_cast<unsigned char>(header[i])} << (8 * (i % 8));
  }
  return words.size();
}

std::size_t ZQConvertHeader(std::string& header, const std::vector<std::uint64_t>& words) {
  for (const std::uint64_t word : words) header += ZQConvert(word);
  return 8 * words.size();
}

bool ZQConvertFP(std::vector<std::uint64_t>& words, const ZQFingerPrint& fp) {
  words.assign(fp.Words(), fp.Words() + fp.NumWords());
  return ZQ_ASSERT(words.size() == (std::uint64_t{fp.GetSize()} + 63) / 64);
}

std::uint64_t ZQConvertFP(std::vector<std::uint64_t>& words, const ZQFingerPrint& fp,
                          ZQPopCountFunc popcount) {
  ZQConvertFP(words, fp);
  return popcount(words.data(), words.size());
}

bool ZQConvertFP(ZQFingerPrint& fp, const ZQFPTypeBase* type,
                 const std::vector<std::uint64_t>& words) {
  static constexpr std::uint64_t none = 0;  // data() of no words is null
  return ZQConvertFP(fp, type, words.empty() ? &none : words.data(), 8 * words.size());
}

bool ZQConvertFP(ZQFingerPrint& fp, const ZQFPTypeBase* type, const std::uint64_t* words,
                 std::size_t count) {
  return ZQConvertFP(fp, type, reinterpret_cast<const unsigned char*>(words), count);
}

bool ZQConvertFP(ZQFingerPrint& fp, const ZQFPTypeBase* type, const unsigned char* bytes,
                 std::size_t count) {
  if (!ZQ_ASSERT(type && bytes)) return false;
  ZQFingerPrint converted;
  converted.SetSize(static_cast<unsigned int>(
      std::min<std::size_t>(8 * count, std::numeric_limits<unsigned int>::max())));
  if (converted.GetSize() != 8 * count) return false;
  std::memcpy(converted.Words(), bytes, count);
  converted.SetFPTypeBase(type);
  fp = std::move(converted);
  return true;
}

// What may be stored, and the writers.

bool CheckFingerPrintType(const ZQFPTypeBase* type, const char* caller) {
  if (!type) {
    ZQThrow.Warning("%s invalid fingerprint pointer!", caller);
    return false;
  }
  const ZQFPTypeParams params(type->GetFPTypeString());
  if (!params.IsValid()) {
    ZQThrow.Warning("%s invalid fingerprint type!", caller);
    return false;
  }
  if (!IsStorable(params.GetFPType())) {
    ZQThrow.Warning("%s invalid fingerprint type (only path, circular or tree allowed)!", caller);
    return false;
  }
  const unsigned int unit = ZQGetPopCountFingerprintSizeUnit();
  if (params.GetNumBits() % unit != 0) {
    ZQThrow.Warning("%s invalid fingerprint size (has to be multiple of %d)!", caller,
                    static_cast<int>(unit));
    return false;
  }
  return true;
}

std::uint64_t ZQGetFPDatabaseFileSize(std::uint64_t count, const ZQFPTypeBase* type) {
  if (!ZQ_ASSERT(type)) return 0;
  const std::uint64_t bits = ZQGetFingerPrintSize(type);
  ZQ_ASSERT(bits % 64 == 0);
  const std::uint64_t bytes = ZQSaturatedProduct(count, (bits / 64 + zqRecordPrefixWords) * 8);
  return bytes + std::min<std::uint64_t>(zqHeaderBytes, ~bytes);
}

std::string ZQWriteFastFPDatabaseHeaderBlob(const ZQFastFPDatabaseParams& params) {
  const ZQFPTypeBase* type = params.GetFPTypeBase();
  if (!ZQ_ASSERT(type)) return {};
  std::string header = ZQIsUInit64LittleEndian() ? "LE\n" : "BE\n";
  for (const std::string& line : {params.GetMoleculeFile(), type->GetFPTypeString(),
                                  ZQNumberToString(params.NumFingerPrints())}) {
    header.append(line).push_back('\n');
  }
  header.resize(zqHeaderBytes);
  header.replace(8 * zqNumWordsPosition, 8, ZQConvert(ZQGetFingerPrintSize(type) / 64));
  header.replace(8 * zqNumRecordsPosition, 8, ZQConvert(params.NumFingerPrints()));
  return header;
}

bool ZQWriteFastFPDatabaseParams(MMapOutputFile& output, const ZQFastFPDatabaseParams& params) {
  if (!params.GetFPTypeBase() || !output.GetBase() || output.GetLength() < zqHeaderBytes) {
    return false;
  }
  const std::string header = ZQWriteFastFPDatabaseHeaderBlob(params);
  std::memcpy(output.GetBase(), header.data(), header.size());
  return true;
}

std::string ZQWriteFastFingerPrintBlob(std::uint64_t index, const ZQFingerPrint& fp) {
  if (!fp) {
    ZQThrow.Warning("%s : uninitialized fingerprint!", "ZQWriteFastFingerPrintBlob()");
    return {};
  }
  std::string record = ZQConvert(index) + ZQConvert(std::uint64_t{fp.CountBits()});
  for (unsigned int i = 0; i < fp.NumWords(); ++i) record += ZQConvert(fp.Words()[i]);
  return record;
}

// The reader.

ZQFastFPDatabaseParams::ZQFastFPDatabaseParams(const std::string& filename) {
  zqifstream in(filename);
  *this = ZQFastFPDatabaseParams(in, filename);
}

ZQFastFPDatabaseParams::ZQFastFPDatabaseParams(zqifstream& in, const std::string& filename) {
  const char* caller = "ZQFastFPDatabaseParams()";
  const char* name = filename.c_str();
  if (in.GetDescriptor() < 0) {
    ZQThrow.Warning("%s cannot open fingerprint database file %s", caller, name);
    return;
  }
  const std::int64_t size = in.Size();
  if (!ZQ_ASSERT(size >= 0)) return;
  fileSize_ = static_cast<std::uint64_t>(size);
  if (size <= 100) {
    ZQThrow.Warning("%s invalid fingerprint database file %s", caller, name);
    return;
  }

  std::string line;
  in.ReadToken(line, zqHeaderBytes);
  littleEndian_ = line.starts_with("LE");
  if (!in.ReadLine(line, zqHeaderBytes) || !in.ReadLine(moleculeFile_, zqHeaderBytes)) {
    ZQThrow.Warning("%s cannot read molecule filename from %s header", caller, name);
    return;
  }
  if (!in.ReadLine(line, zqHeaderBytes)) {
    ZQThrow.Warning("%s cannot read fingerprint type from %s header", caller, name);
    return;
  }
  type_ = ZQReadFPType(line);
  if (!type_) {
    ZQThrow.Warning("%s invalid fingerprint type in %s header", caller, name);
    return;
  }
  if (!in.ReadLine(line, zqHeaderBytes)) {
    ZQThrow.Warning("%s cannot read number of fingerprints from %s header", caller, name);
    return;
  }
  std::uint64_t count = 0;
  if (!ZQStringToNumber(line, count)) {
    ZQThrow.Warning("%s invalid number of fingerprints in %s header", caller, name);
    return;
  }

  // A file shorter than a header reads as if zero bytes followed.
  std::array<unsigned char, 16> tail{};
  in.seekg(8 * zqNumWordsPosition);
  in.read(reinterpret_cast<char*>(tail.data()), tail.size());
  if (in.bad()) {
    ZQThrow.Warning("%s cannot open %s fingerprint database", caller, name);
    return;
  }
  numFingerPrints_ = ZQConvert(&tail[8]);
  if (numFingerPrints_ != count) {
    ZQThrow.Warning("%s inconsistent number of fingerprints in %s header", caller, name);
    return;
  }
  numWords_ = ZQConvert(tail.data());
  const unsigned int bits = ZQGetFingerPrintSize(type_);
  fitsType_ = bits > 0 && bits % ZQGetPopCountFingerprintSizeUnit() == 0 && bits / 64 == numWords_;
  valid_ = true;
}

bool ZQFastFPDatabaseParams::IsConsistent() const {
  return valid_ && IsStorable(type_->GetFPType()) && FitsType() &&
         ZQGetFPDatabaseFileSize(numFingerPrints_, type_) == fileSize_;
}

}  // namespace ZQKorvex
