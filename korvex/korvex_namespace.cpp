#include "korvex/korvex_namespace.h"

#include "korvex/fpatomtyper.h"
#include "korvex/fpfast_database.h"
#include "korvex/fpkinds.h"
#include "korvex/korvex_namespace_local.h"
#include "korvex/measures_local.h"

namespace ZQKorvex {

namespace {

std::vector<ZQNamespacePrim> HashedKinds() {
  std::vector<ZQNamespacePrim> prims;
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    if (kind.IsHashed()) prims.push_back({kind.name, kind.number, ""});
  }
  return prims;
}

}  // namespace

ZQFPTypeInterface::ZQFPTypeInterface()
    : ZQNamespaceInterface("ZQFPType", ZQNamespaceMode::Single, HashedKinds()) {}

ZQFPAtomTypeInterface::ZQFPAtomTypeInterface()
    : ZQNamespaceInterface(
          "ZQFPAtomType", ZQNamespaceMode::Combining,
          {{"AtmNum", ZQFPAtomType::AtmNum, ""},
           {"Arom", ZQFPAtomType::Arom, ""},
           {"Chiral", ZQFPAtomType::Chiral, ""},
           {"FCharge", ZQFPAtomType::FCharge, ""},
           {"HvyDeg", ZQFPAtomType::HvyDeg, ""},
           {"Hyb", ZQFPAtomType::Hyb, ""},
           {"InRing", ZQFPAtomType::InRing, ""},
           {"HCount", ZQFPAtomType::HCount, ""},
           {"EqArom", ZQFPAtomType::EqArom, "aromatic atoms are equal"},
           {"EqHalo", ZQFPAtomType::EqHalo, "halogen atoms are equal"},
           {"EqHBAcc", ZQFPAtomType::EqHBAcc, "hydrogen bond acceptor atoms are equal"},
           {"EqHBDon", ZQFPAtomType::EqHBDon, "hydrogen bond donor atoms are equal"}}) {}

ZQFPBondTypeInterface::ZQFPBondTypeInterface()
    : ZQNamespaceInterface("ZQFPBondType", ZQNamespaceMode::Combining,
                           {{"Order", ZQFPBondType::Order, ""},
                            {"Chiral", ZQFPBondType::Chiral, ""},
                            {"InRing", ZQFPBondType::InRing, ""}}) {}

namespace {

std::vector<ZQNamespacePrim> NamesOfMeasures() {
  std::vector<ZQNamespacePrim> names;
  names.reserve(zqMeasures.size());
  for (const ZQMeasure& measure : zqMeasures) names.push_back({measure.name, measure.number, ""});
  return names;
}

}  // namespace

ZQSimMeasureInterface::ZQSimMeasureInterface()
    : ZQNamespaceInterface("ZQSimMeasure", ZQNamespaceMode::Single, NamesOfMeasures()) {}

ZQMemoryTypeInterface::ZQMemoryTypeInterface()
    : ZQNamespaceInterface("ZQSimMeasure", ZQNamespaceMode::Single,
                           {{"memory-mapped", ZQFastFPDatabaseMemoryType::MemoryMapped, ""},
                            {"in-memory", ZQFastFPDatabaseMemoryType::InMemory, ""},
                            {"CUDA", ZQFastFPDatabaseMemoryType::CUDA, ""}}) {}

const ZQNamespaceInterface* ZQGetFPTypeNamespaceInterface() {
  static const ZQFPTypeInterface table;
  return &table;
}

const ZQNamespaceInterface* ZQGetFPAtomTypeNamespaceInterface() {
  static const ZQFPAtomTypeInterface table;
  return &table;
}

const ZQNamespaceInterface* ZQGetFPBondTypeNamespaceInterface() {
  static const ZQFPBondTypeInterface table;
  return &table;
}

const ZQNamespaceInterface* ZQGetSimMeasureNamespaceInterface() {
  static const ZQSimMeasureInterface table;
  return &table;
}

const ZQNamespaceInterface* ZQGetMemoryTypeNamespaceInterface() {
  static const ZQMemoryTypeInterface table;
  return &table;
}

}  // namespace ZQKorvex
