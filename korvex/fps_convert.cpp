#include "korvex/fps_convert.h"

#include <cerrno>
#include <fstream>
#include <system_error>
#include <vector>

#include "korvex/fingerprint_params.h"
#include "korvex/fpfast_local.h"
#include "korvex/fpkinds.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

bool Fail(const std::string& fpsFile, const std::string& cause) {
  ZQThrow.Error("Can't convert %s: %s", fpsFile.c_str(), cause.c_str());
  return false;
}

/// Whether a `.fpbin` file accepts the type.
bool IsOfDatabases(const ZQFPTypeBase* type) {
  return ZQFindFPKind(type)->isStorable &&
         ZQGetFingerPrintSize(type) % ZQGetPopCountFingerprintSizeUnit() == 0;
}

/// Writes what `reader` has opened; `fpsFile` is its name.
bool Convert(const std::string& fpbinFile, ZQFPSReader& reader, const std::string& fpsFile,
             ZQFPSConversionCounts& counts) {
  const ZQFPSHeader& header = reader.GetHeader();
  std::string fault;
  const ZQFPTypeBase* type = ZQGetFPSType(header, &fault);
  if (type && !IsOfDatabases(type)) {
    fault = "a database takes path, circular and tree fingerprints of a multiple of 256 bits";
  }
  if (!fault.empty()) return Fail(fpsFile, fault + "; it can be searched as it is");

  ZQFastFPDatabaseParams params;
  params.SetFPTypeBase(type);
  counts.sources = header.sources.size();
  if (counts.sources != 0) params.SetMoleculeFile(header.sources.front());

  errno = 0;
  std::vector<char> buffer(std::size_t{1} << 18);
  std::ofstream out;
  out.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
  out.open(fpbinFile, std::ios::binary);
  const auto writeHeader = [&] {
    params.SetNumFingerPrints(counts.records);
    const std::string blob = ZQWriteFastFPDatabaseHeaderBlob(params);
    out.write(blob.data(), static_cast<std::streamsize>(blob.size()));
  };
  writeHeader();  // takes the place until the number of records is known
  const std::size_t numWords = header.numBits / 64;
  const ZQPopCountFunc popcount = ZQGetPopCountFunc(ZQGetPopCountMethod());
  for (ZQFPSRecord record; out && reader.Read(record);) {
    const std::uint64_t prefix[] = {counts.records++, popcount(record.words, numWords)};
    static_assert(sizeof prefix == 8 * zqRecordPrefixWords);
    ZQ_io_write_binary(out, prefix, 8, zqRecordPrefixWords);
    ZQ_io_write_binary(out, record.words, 8, numWords);
  }
  counts.skipped = reader.NumSkipped();
  out.seekp(0);
  writeHeader();
  out.close();
  if (!out) {
    return Fail(fpsFile, "cannot write " + fpbinFile + ": " +
                             std::generic_category().message(errno ? errno : EIO));
  }
  return reader.IsGood();
}

}  // namespace

const ZQFPTypeBase* ZQGetFPSType(const ZQFPSHeader& header, std::string* fault) {
  const ZQFPTypeBase* type = nullptr;
  std::string why;
  if (header.type.empty()) {
    why = "it has no #type";
  } else if (GetFPTypeFromTypeStringPrefix(header.type) == 0) {
    why = "its #type '" + header.type + "' is none of korvex";
  } else {
    type = ZQReadFPType(header.type, &why);
    if (!type) {
      why = "its #type '" + header.type + "' can't be used" + (why.empty() ? "" : ": ") + why;
    } else if (ZQFindFPKind(type)->IsText()) {
      why = "its #type '" + header.type + "' isn't of bits";
    } else if (ZQGetFingerPrintSize(type) != header.numBits) {
      why = "its #type has " + std::to_string(ZQGetFingerPrintSize(type)) +
            " bits, but its fingerprints have " + std::to_string(header.numBits);
    }
  }
  if (fault) *fault = why;
  return why.empty() ? type : nullptr;
}

bool ZQConvertFPSToFastFPDatabase(const std::string& fpbinFile, const std::string& fpsFile,
                                  ZQFPSConversionCounts* counts) {
  return ZQGuardMemory("ZQConvertFPSToFastFPDatabase()", [&] {
    ZQFPSConversionCounts own;
    ZQFPSReader reader;
    return reader.Open(fpsFile) && Convert(fpbinFile, reader, fpsFile, counts ? *counts = {} : own);
  });
}

bool ZQConvertFPSToFastFPDatabase(const std::string& fpbinFile, zqistream& in,
                                  const std::string& name, ZQFPSConversionCounts* counts) {
  return ZQGuardMemory("ZQConvertFPSToFastFPDatabase()", [&] {
    ZQFPSConversionCounts own;
    ZQFPSReader reader;
    return reader.Open(in, name) && Convert(fpbinFile, reader, name, counts ? *counts = {} : own);
  });
}

}  // namespace ZQKorvex
