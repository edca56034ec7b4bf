// All records have the same size, and the number of molecules is known from the start. So the file
// gets its full length first, and a molecule's index determines the offset of its record. Threads
// take molecules in small chunks, make the fingerprints, and write each record through one mapping
// of the file. Nothing is queued, sorted or copied twice, and the file doesn't depend on which
// thread makes which record.

#include "korvex/fpfast_create.h"

#include <algorithm>
#include <limits>

#include "contract/bostrel/strings.h"
#include "contract/quarnel/graphmol.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fpfast_create_private.h"
#include "korvex/fpfast_database.h"
#include "korvex/fpfast_database_implbase_local.h"
#include "korvex/fpfast_local.h"
#include "korvex/threads_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* createName = "ZQCreateFastFPDatabaseFile()";
constexpr const char* compareName = "ZQAreCompatibleDatabases()";

// Whether there are kernels, and the name is that of a database; warns if not.
bool CanCreate(const std::string& fpbinFile) {
  if (!ZQIsFastFPDatabaseReady()) {
    ZQThrow.Warning("%s fast fingerprint methods are not supported!", createName);
    return false;
  }
  const bool isDatabase = ZQFileExtension(fpbinFile) == "fpbin";
  if (!isDatabase) {
    ZQThrow.Warning("%s fingerprint database file should have '.fpbin' file extension!",
                    createName);
  }
  return isDatabase;
}

bool AreZero(const std::vector<std::uint64_t>& words) {
  return std::all_of(words.begin(), words.end(), [](std::uint64_t word) { return word == 0; });
}

}  // namespace

unsigned int ZQCreateFastFPDatabaseOptions::GetNumProcessors() const {
  const unsigned int machine = ZQGetNumProcessors();
  return numProcessors_ == 0 ? machine : std::min(numProcessors_, 2 * machine);
}

void ZQFPGenerator::Run() {
  ZQRunOnThreads(numThreads_, [this] { ThreadWork(); });
}

void ZQFPGenerator::ThreadWork() {
  const ZQFPTypeParams params(type_);
  const unsigned int numbits = params.GetNumBits();
  if (!ZQ_ASSERT(params.IsValid()) ||
      !ZQ_ASSERT(numbits % ZQGetPopCountFingerprintSizeUnit() == 0)) {
    return;
  }
  // Reused for all molecules, to keep allocation out of the loop.
  ZQMol mol;
  ZQFingerPrint fp;
  std::vector<std::uint64_t> words;
  std::uint64_t numFailed = 0;
  std::uint64_t numEmpty = 0;
  const std::uint64_t count = molecules_.GetMaxMolIdx();
  for (std::uint64_t start = next_.fetch_add(chunkSize); start < count;
       start = next_.fetch_add(chunkSize)) {
    const std::uint64_t end = std::min(start + chunkSize, count);
    for (std::uint64_t index = start; index < end; ++index) {
      numFailed += !MakeFingerPrint(fp, mol, static_cast<unsigned int>(index), numbits);
      const std::uint64_t bits = ZQConvertFP(words, fp, popcount_);
      numEmpty += bits == 0;
      if (ZQ_ASSERT(words.size() == numbits / 64)) WriteRecord(index, bits, words);
    }
  }
  numFailed_ += numFailed;
  numEmpty_ += numEmpty;
}

bool ZQFPGenerator::MakeFingerPrint(ZQFingerPrint& fp, ZQMCMolBase& mol, unsigned int index,
                                    unsigned int numbits) const {
  if (!molecules_.GetMolecule(mol, index)) {
    ZQThrow.Warning("%s cannot access molecule with index %d", createName, index);
  } else if (!ZQMakeFP(fp, mol, type_)) {
    ZQThrow.Warning("%s cannot generate fingerprint with index %d", createName, index);
  } else {
    return true;
  }
  fp.SetSize(numbits);
  fp.ClearBits();
  return false;
}

void ZQFPGenerator::WriteRecord(std::uint64_t index, std::uint64_t count,
                                const std::vector<std::uint64_t>& words) {
  std::uint64_t* record = output_ + zqHeaderWords + (words.size() + zqRecordPrefixWords) * index;
  const std::lock_guard<std::mutex> lock(outputMutex_);
  if (tracer_) {
    tracer_->Update(1);
    if (tracer_->IsStopped()) next_ = molecules_.GetMaxMolIdx();
  }
  record[0] = index;
  record[1] = count;
  std::copy(words.begin(), words.end(), record + zqRecordPrefixWords);
}

bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile, const std::string& moleculeFile,
                                const ZQCreateFastFPDatabaseOptions& options,
                                ZQFPCreationCounts* counts) {
  if (!CanCreate(fpbinFile)) return false;
  ZQMolDatabase molecules;
  if (!molecules.Open(moleculeFile)) {
    ZQThrow.Warning("%s cannot open molecule file %s!", createName, moleculeFile.c_str());
    return false;
  }
  return ZQCreateFastFPDatabaseFile(fpbinFile, molecules, moleculeFile, options, counts);
}

bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile, const ZQMolDatabase& molecules,
                                const std::string& moleculeFile,
                                const ZQCreateFastFPDatabaseOptions& options,
                                ZQFPCreationCounts* counts) {
  if (!CanCreate(fpbinFile)) return false;
  const ZQPopCountFunc popcount = ZQGetPopCountFunc(ZQGetPopCountMethod());
  if (!ZQ_ASSERT(popcount != nullptr)) return false;
  const unsigned int count = molecules.GetMaxMolIdx();
  if (count == 0) {
    ZQThrow.Warning("%s empty molecule database!", createName);
    return false;
  }
  const ZQFPTypeBase* type = options.GetFPTypeBase();
  if (!CheckFingerPrintType(type, createName)) return false;

  MMapOutputFile output;
  if (!output.Open(fpbinFile, ZQGetFPDatabaseFileSize(count, type))) {
    ZQThrow.Warning("%s : unable to open fingerprint database file: %s", createName,
                    fpbinFile.c_str());
    return false;
  }
  if (!output.GetBase()) {
    ZQThrow.Warning("%s : unable to access fingerprint database file pointer: %s", createName,
                    fpbinFile.c_str());
    return false;
  }
  ZQFastFPDatabaseParams params;
  params.SetMoleculeFile(moleculeFile);
  params.SetFPTypeBase(type);
  params.SetNumFingerPrints(count);
  if (!ZQWriteFastFPDatabaseParams(output, params)) {
    ZQThrow.Warning("%s : unable to write fingerprint database header: %s", createName,
                    fpbinFile.c_str());
    return false;
  }
  const unsigned int numThreads = options.GetNumProcessors();
  if (!ZQ_ASSERT(numThreads != 0)) return false;
  std::optional<ZQDots> tracer = options.GetTracer();
  if (tracer && tracer->GetTotal() == 0) tracer->SetTotal(count);
  ZQFPGenerator generator(molecules, type, popcount, static_cast<std::uint64_t*>(output.GetBase()),
                          numThreads, tracer ? &*tracer : nullptr);
  generator.Run();
  if (tracer && tracer->IsStopped()) {
    ZQThrow.Warning("%s : stopped!", createName);
    return false;
  }
  if (tracer) tracer->Total();
  output.Close();
  if (counts) *counts = {count, generator.NumFailed(), generator.NumEmpty()};
  return true;
}

bool ZQCreateFastFPDatabaseFile(const std::string& fpbinFile, const std::string& moleculeFile,
                                const ZQFPTypeBase* type) {
  return ZQCreateFastFPDatabaseFile(fpbinFile, moleculeFile, ZQCreateFastFPDatabaseOptions(type));
}

bool ZQAreCompatibleDatabases(const ZQMolDatabase& molecules,
                              const ZQFastFPDatabase& fingerprints) {
  if (molecules.GetMaxMolIdx() == 0) {
    ZQThrow.Warning("%s empty molecule database!", compareName);
    return false;
  }
  if (!fingerprints.IsValid()) {
    ZQThrow.Warning("%s invalid fingerprint database!", compareName);
    return false;
  }
  const unsigned int method = ZQGetPopCountMethod();
  if (!ZQ_ASSERT(method != 0)) {
    ZQThrow.Warning("%s no popcount support!", compareName);
    return false;
  }
  const ZQPopCountFunc popcount = ZQGetPopCountFunc(method);
  if (!ZQ_ASSERT(popcount != nullptr)) return false;
  const ZQFPTypeBase* type = fingerprints.GetFPTypeBase();
  if (!CheckFingerPrintType(type, compareName)) return false;
  if (molecules.GetMaxMolIdx() != fingerprints.NumFingerPrints()) {
    ZQThrow.Warning("%s different number of entries!", compareName);
    return false;
  }
  std::vector<std::uint64_t> words;
  std::uint64_t moleculeIndex = 0;
  std::uint64_t count = 0;
  if (!fingerprints.GetImpl().GetFingerPrint(words, moleculeIndex, count, 0)) {
    ZQThrow.Warning("%s cannot access fingerprint data!", compareName);
    return false;
  }
  ZQGraphMol mol;
  const bool isRead = moleculeIndex < molecules.GetMaxMolIdx() &&
                      molecules.GetMolecule(mol, static_cast<unsigned int>(moleculeIndex));
  if (!isRead) {
    if (count == 0 && AreZero(words)) return true;
    ZQThrow.Warning("%s cannot access molecule data!", compareName);
    return false;
  }
  ZQFingerPrint fp;
  if (!ZQCanMakeFP(type) || !ZQMakeFP(fp, mol, type)) {
    ZQThrow.Warning("%s cannot generate fingerprint!", compareName);
    return false;
  }
  std::vector<std::uint64_t> made;
  if (ZQConvertFP(made, fp, popcount) == count && made == words) return true;
  ZQThrow.Warning("%s fingerprint mismatch!", compareName);
  return false;
}

}  // namespace ZQKorvex
