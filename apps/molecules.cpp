#include "apps/molecules.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "apps/options.h"
#include "contract/quarnel/perception.h"
#include "contract/quarnel/readers.h"
#include "korvex/fps.h"
#include "korvex/threads.h"

namespace KorvexProgram {

namespace fs = std::filesystem;

namespace {

constexpr const char* inputFormat = "-input-format";
constexpr const char* fpsFormat = "fps";
constexpr const char* columnOptions[] = {"-smiles-column", "-title-column"};
// With a database, whose own molecule file may be a table.
constexpr const char* databaseMolecules = "-molecules";

const ZQNamespaceInterface& InputFormats(bool withFPS) {
  std::vector<ZQNamespacePrim> entries = {{"smi", 0, "SMILES and titles"},
                                          {"sdf", 1, "molfiles, each ended by $$$$"},
                                          {"mol", 2, "one molfile"},
                                          {"csv", 3, "a table of fields between commas"},
                                          {"tsv", 4, "a table of fields between tabs"}};
  static const ZQNamespaceInterface ofMolecules("Format", ZQNamespaceMode::Single, entries);
  entries.push_back({fpsFormat, 5, "fingerprints"});
  static const ZQNamespaceInterface all("Format", ZQNamespaceMode::Single, entries);
  return withFPS ? all : ofMolecules;
}

// The values of parameters that may name molecules.
std::vector<std::string> InputNames(const ZQInterface& interface) {
  std::vector<std::string> names;
  for (const auto& parameter : interface.GetParameters()) {
    const std::string& name = parameter->GetName();
    const bool isInput = (parameter->IsPositional() && name != outputArgument) ||
                         name == "-query" || name == databaseMolecules;
    if (isInput && parameter->IsSet()) names.push_back(interface.Get<std::string>(name));
  }
  return names;
}

ZQMolFileOptions GetColumns(const ZQInterface& interface) {
  const auto get = [&](const char* name) {
    return interface.IsSet(name) ? interface.Get<std::string>(name) : std::string();
  };
  return {"", get(columnOptions[0]), get(columnOptions[1])};
}

// False after an error.
bool ReadStandardInput(std::string& content) {
  constexpr std::size_t chunk = std::size_t{1} << 16;
  for (;;) {
    const std::size_t size = content.size();
    content.resize(size + chunk);
    const ssize_t count = read(STDIN_FILENO, content.data() + size, chunk);
    content.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) return true;
    if (count > 0 || errno == EINTR) continue;
    ZQThrow.Error("cannot read %s: %s", inputName, std::strerror(errno));
    return false;
  }
}

bool OpenStandardInput(ZQMolDatabase& molecules, const ZQInterface& interface) {
  std::string content;
  if (!ReadStandardInput(content)) return false;
  ZQMolFileOptions options = GetColumns(interface);
  options.format = interface.Get<std::string>(inputFormat);
  return molecules.OpenContent(std::move(content), inputName, options);
}

}  // namespace

bool IsMoleculeFile(const std::string& filename) {
  return filename == standardInput || ZQMolDatabase::IsReadable(filename);
}

void AddMoleculeFile(ZQInterface& interface) {
  const std::string brief =
      "Molecules (" + ZQGetMolFileExtensions() + ", or .gz; - is standard input)";
  AddArgument(interface, "MOLFILE", brief.c_str());
}

void AddMoleculeFileOptions(ZQInterface& interface, bool withFPS) {
  ZQInterface* group = interface.AddInterface("molecule file options");
  AddChoice(*group, inputFormat, "", "The format of standard input (-)", InputFormats(withFPS),
            "smi");
  group->AddParameter(ZQParameter(columnOptions[0], "", ZQParamType::String,
                                  "The column of SMILES in a .csv or .tsv file")
                          .SetDefaultText("SMILES or canonical_smiles"));
  group->AddParameter(ZQParameter(columnOptions[1], "", ZQParamType::String,
                                  "The column of titles in a .csv or .tsv file")
                          .SetDefaultText("name, title or id, if there is one"));
}

bool IsFPS(const std::string& argument, const ZQInterface& interface) {
  if (argument != standardInput) return ZQIsFPSName(argument);
  return interface.Get<std::string>(inputFormat) == fpsFormat;
}

bool CheckMoleculeFileOptions(const ZQInterface& interface) {
  if (!interface.FindParameter(inputFormat)) return true;
  const std::vector<std::string> names = InputNames(interface);
  const auto numInputs = std::ranges::count(names, standardInput);
  if (numInputs > 1) {
    ZQThrow.Error("standard input (-) can be read only once");
    return false;
  }
  constexpr const char* formats[] = {inputFormat};
  if (numInputs == 0 && IsAnySet(interface, formats, "without standard input (-)")) return false;
  const auto format = interface.Get<std::string>(inputFormat);
  const bool isAnyTable = (numInputs != 0 && ZQMolDatabase::IsTable("." + format)) ||
                          std::ranges::any_of(names, ZQMolDatabase::IsTable) ||
                          interface.FindParameter(databaseMolecules);
  return isAnyTable || !IsAnySet(interface, columnOptions, "without a .csv or .tsv file");
}

bool OpenMolecules(ZQMolDatabase& molecules, const std::string& filename,
                   const ZQInterface& interface) {
  const bool isOpen = filename == standardInput ? OpenStandardInput(molecules, interface)
                                                : molecules.Open(filename, GetColumns(interface));
  if (!isOpen) return false;
  if (molecules.GetMaxMolIdx() == 0) {
    ZQThrow.Error("%s holds no molecules", molecules.GetName().c_str());
  }
  return molecules.GetMaxMolIdx() != 0;
}

bool OpenMoleculesOrSmiles(ZQMolDatabase& molecules, const std::string& argument,
                           const ZQInterface& interface) {
  std::error_code error;
  const bool exists = fs::exists(argument, error);
  if (argument == standardInput || (exists && ZQMolDatabase::IsReadable(argument))) {
    return OpenMolecules(molecules, argument, interface);
  }
  // The reader's own message becomes part of one that reports both ways of reading.
  std::string cause;
  ZQErrorSink sink = ZQThrow.SetSink([&cause](ZQErrorLevel, const std::string& message) {
    cause = message;
    return true;
  });
  ZQMol mol;
  bool read = ZQSmilesToMol(mol, argument);
  ZQThrow.SetSink(std::move(sink));
  if (read && !mol) {
    read = false;
    cause = "no atoms";
  }
  if (!read) {
    const std::string file =
        exists ? "it isn't called " + ZQGetMolFileExtensions() + " or the same with .gz"
               : "there is none of this name";
    ZQThrow.Error("'%s' is neither a molecule file (%s) nor a SMILES (%s)", argument.c_str(),
                  file.c_str(), cause.c_str());
    return false;
  }
  ZQMolFileOptions options;
  options.format = "smi";
  return molecules.OpenContent(argument.substr(0, argument.find('\n')), argument, options);
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
                      std::size_t first, const ZQFPTypeBase* type, unsigned int numThreads) {
  std::atomic<std::size_t> next = 0;
  ZQRunOnThreads(numThreads, [&] {
    ZQMol mol;
    for (std::size_t i = next++; i < fps.size(); i = next++) {
      const auto record = static_cast<unsigned int>(first + i);
      if (!molecules.GetMolecule(mol, record)) continue;
      MakeFingerPrint(fps[i], mol, type, molecules.GetWhere(record));
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
