#include "apps/molecules.h"

#include <filesystem>
#include <utility>

#include "apps/options.h"
#include "apps/threads.h"
#include "contract/quarnel/perception.h"
#include "contract/quarnel/readers.h"

namespace KorvexProgram {

namespace fs = std::filesystem;

void AddMoleculeFile(ZQInterface& interface) {
  const std::string brief = "Molecules (" + ZQGetMolFileExtensions() + ", or .gz)";
  AddArgument(interface, "MOLFILE", brief.c_str());
}

bool OpenMolecules(ZQMolDatabase& molecules, const std::string& filename) {
  if (!molecules.Open(filename)) return false;
  if (molecules.GetMaxMolIdx() == 0) ZQThrow.Error("%s holds no molecules", filename.c_str());
  return molecules.GetMaxMolIdx() != 0;
}

bool MoleculeArgument::Open(const std::string& argument) {
  std::error_code error;
  const bool exists = fs::exists(argument, error);
  if (exists && ZQMolDatabase::IsReadable(argument)) {
    isFile_ = true;
    return OpenMolecules(file_, argument);
  }
  // The reader's own message becomes part of one that reports both ways of reading.
  std::string cause;
  ZQErrorSink sink = ZQThrow.SetSink([&cause](ZQErrorLevel, const std::string& message) {
    cause = message;
    return true;
  });
  bool read = ZQSmilesToMol(smiles_, argument);
  ZQThrow.SetSink(std::move(sink));
  if (read && !smiles_) {
    read = false;
    cause = "no atoms";
  }
  if (!read) {
    const std::string file =
        exists ? "it isn't called " + ZQGetMolFileExtensions() + " or the same with .gz"
               : "there is none of this name";
    ZQThrow.Error("'%s' is neither a molecule file (%s) nor a SMILES (%s)", argument.c_str(),
                  file.c_str(), cause.c_str());
  }
  return read;
}

bool MoleculeArgument::GetMolecule(ZQMol& mol, unsigned int idx) const {
  if (isFile_) return file_.GetMolecule(mol, idx);
  mol = smiles_;
  return true;
}

bool CheckAtoms(const ZQMolBase& mol, const std::string& where) {
  if (!mol) ZQThrow.Error("%s: a molecule without atoms has no fingerprint", where.c_str());
  return static_cast<bool>(mol);
}

bool MakeFingerPrint(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type,
                     const std::string& where) {
  if (!CheckAtoms(mol, where)) return false;
  if (ZQMakeFP(fp, mol, type)) return true;
  ZQThrow.Error("%s: no fingerprint", where.c_str());
  return false;
}

void MakeFingerPrints(std::vector<ZQFingerPrint>& fps, const ZQMolDatabase& molecules,
                      const std::string& filename, std::size_t first, const ZQFPTypeBase* type,
                      unsigned int numThreads) {
  OnThreads(numThreads, [&](auto next) {
    ZQMol mol;
    for (std::size_t i = next(); i < fps.size(); i = next()) {
      const auto record = static_cast<unsigned int>(first + i);
      if (!molecules.GetMolecule(mol, record)) continue;
      MakeFingerPrint(fps[i], mol, type,
                      "record " + std::to_string(record + 1) + " of " + filename);
    }
  });
}

void PrepareForVsepr(ZQMol& mol) {
  ZQSuppressHydrogens(mol);
  ZQPrepareForVsepr(mol);
}

bool MakeFingerPrint(ZQVseprFingerprint& fp, ZQMol& mol, const ZQVseprOptions& options) {
  const unsigned int numErrors = NumErrors();
  PrepareForVsepr(mol);
  fp.Setup(mol, options);
  return NumErrors() == numErrors;
}

}  // namespace KorvexProgram
