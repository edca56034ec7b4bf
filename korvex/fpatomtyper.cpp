#include "korvex/fpatomtyper.h"

#include <algorithm>
#include <array>
#include <span>

#include "contract/bostrel/characters_local.h"
#include "contract/quarnel/perception.h"
#include "korvex/fpatomtypes_local.h"
#include "korvex/fpkinds.h"
#include "korvex/korvex_namespace.h"

namespace ZQKorvex {

namespace {

// Names of sets of flags that are accepted and never written.
struct Composite {
  const char* name;
  unsigned int value;
};
constexpr Composite atomComposites[] = {{"None", ZQFPAtomType::None},
                                        {"DefaultAtom", ZQFPAtomType::DefaultAtom},
                                        {"DefaultPathAtom", ZQFPAtomType::DefaultPathAtom},
                                        {"DefaultCircularAtom", ZQFPAtomType::DefaultCircularAtom},
                                        {"DefaultTreeAtom", ZQFPAtomType::DefaultTreeAtom}};
constexpr Composite bondComposites[] = {{"None", ZQFPBondType::None},
                                        {"DefaultBond", ZQFPBondType::DefaultBond},
                                        {"DefaultPathBond", ZQFPBondType::DefaultPathBond},
                                        {"DefaultCircularBond", ZQFPBondType::DefaultCircularBond},
                                        {"DefaultTreeBond", ZQFPBondType::DefaultTreeBond}};

// A set of flags in text form: the composites and the table of single flags.
struct FlagNames {
  std::span<const Composite> composites;
  const ZQNamespaceInterface* flags;

  const Composite* FindComposite(const std::string& name) const {
    const auto found = std::find_if(composites.begin(), composites.end(),
                                    [&name](const Composite& c) { return name == c.name; });
    return found == composites.end() ? nullptr : &*found;
  }
  bool IsValid(const std::string& name) const {
    return FindComposite(name) != nullptr || flags->IsValid(name);
  }
  unsigned int GetValue(const std::string& name) const {
    const Composite* composite = FindComposite(name);
    return composite ? composite->value : flags->GetValue(name, 0);
  }
  std::string GetName(unsigned int value) const {
    return value == 0 ? "None" : flags->GetName(value, "invalid");
  }
};

FlagNames AtomFlagNames() { return {atomComposites, ZQGetFPAtomTypeNamespaceInterface()}; }
FlagNames BondFlagNames() { return {bondComposites, ZQGetFPBondTypeNamespaceInterface()}; }

// Whether an atom has non-single or aromatic bonds.
struct Unsaturation {
  bool any = false;
  bool aromatic = false;

  explicit Unsaturation(const ZQAtomBase& atom) {
    for (const ZQBondBase* bond = atom.NextBond(nullptr); bond; bond = atom.NextBond(bond)) {
      if (bond->GetOrder() == 1 && !bond->IsAromatic()) continue;
      any = true;
      aromatic |= bond->IsAromatic();
    }
  }
};

// Precondition of both hydrogen bond tests: N, O or S.
bool CanHydrogenBond(const ZQAtomBase& atom) {
  const unsigned int z = atom.GetAtomicNum();
  return z == 7 || z == 8 || z == 16;
}

// The results of the two tests, each false if its flag isn't set.
struct HydrogenBondClass {
  bool acceptor;
  bool donor;

  HydrogenBondClass(const ZQAtomBase& atom, unsigned int atype)
      : acceptor((atype & ZQFPAtomType::EqHBAcc) && IsHydrogenBondAcceptor(atom)),
        donor((atype & ZQFPAtomType::EqHBDon) && IsHydrogenBondDonor(atom)) {}
};

constexpr unsigned int hydrogenBondFlags = ZQFPAtomType::EqHBAcc | ZQFPAtomType::EqHBDon;

unsigned int ElementInvariant(const ZQAtomBase& atom, unsigned int atype) {
  unsigned int z = atom.GetAtomicNum();
  if ((atype & ZQFPAtomType::EqHalo) && (z == 17 || z == 35 || z == 53)) z = 9;
  if ((atype & ZQFPAtomType::EqArom) && atom.IsAromatic()) return zqCarbonPrime;
  if ((atype & hydrogenBondFlags) && z != 6) {
    const HydrogenBondClass hydrogenBond(atom, atype);
    if (hydrogenBond.donor && hydrogenBond.acceptor) return zqDonorAndAcceptor;
    if (hydrogenBond.donor) return zqDonorOnly;
    if (hydrogenBond.acceptor) return zqAcceptorOnly;
  }
  return ZQElementPrime(z);
}

unsigned int ChargeFactor(int charge) {
  constexpr std::array<unsigned int, 9> factors{128, 32, 8, 2, 1, 4, 16, 64, 256};
  constexpr unsigned int beyond = 512;
  return charge < -4 || charge > 4 ? beyond : factors[static_cast<unsigned int>(charge + 4)];
}

// base to the power of the exponent, which is capped at `limit`.
unsigned int Power(unsigned int base, unsigned int exponent, unsigned int limit) {
  unsigned int power = 1;
  for (unsigned int i = std::min(exponent, limit); i != 0; --i) power *= base;
  return power;
}

void SetAtomInvariant(unsigned int& value, const ZQAtomBase& atom, unsigned int atype) {
  value = (atype & ZQFPAtomType::AtmNum) ? ElementInvariant(atom, atype) : 1;
  if (atype & ZQFPAtomType::FCharge) value *= ChargeFactor(atom.GetFormalCharge());
  if (atype & ZQFPAtomType::HvyDeg) value *= Power(3, atom.GetHvyDegree(), 6);
  if (atype & ZQFPAtomType::Hyb) value *= Power(5, atom.GetHyb(), 6);
  if ((atype & ZQFPAtomType::InRing) && atom.IsInRing()) value *= 7;
  if ((atype & ZQFPAtomType::Arom) && atom.IsAromatic()) value *= 11;
  if ((atype & ZQFPAtomType::Chiral) && atom.IsChiral()) value *= 13;
  if (atype & ZQFPAtomType::HCount) value *= Power(17, atom.GetTotalHCount(), 4);
}

void SetAtomInvariant(std::string& value, const ZQAtomBase& atom, unsigned int atype) {
  value.clear();
  AddSmilesAtomSymbol(value, atom, atype);
}

void SetBondInvariant(unsigned int& value, const ZQBondBase& bond, unsigned int btype) {
  value = 1;
  if (btype & ZQFPBondType::Order) {
    // Orders beyond the table map to its last entry.
    value = bond.IsAromatic()
                ? zqAromaticBondPrime
                : ORDER2PRIMES[std::min<std::size_t>(bond.GetOrder(), ORDER2PRIMES.size() - 1)];
  }
  if ((btype & ZQFPBondType::InRing) && bond.IsInRing()) value *= 73;
  if ((btype & ZQFPBondType::Chiral) && bond.IsChiral()) value *= 79;
}

void SetBondInvariant(std::string& value, const ZQBondBase& bond, unsigned int btype) {
  constexpr std::array<const char*, 5> orders{"", "-", "=", "#", "$"};
  value.clear();
  if (!(btype & ZQFPBondType::Order)) {
    value += '~';
  } else if (bond.IsAromatic()) {
    value += ':';
  } else if (bond.GetOrder() < orders.size()) {
    value += orders[bond.GetOrder()];
  }
  if (btype & ZQFPBondType::InRing) value += bond.IsInRing() ? "@" : "!@";
}

template <class T>
void FillInvariants(std::vector<T>& atomInvariants, std::vector<T>& bondInvariants, ZQMolBase& mol,
                    unsigned int atype, unsigned int btype) {
  atomInvariants.resize(mol.GetMaxAtomIdx());
  bondInvariants.resize(mol.GetMaxBondIdx());
  if (atype & ZQFPAtomType::Hyb) ZQAssignHybridization(mol);
  if ((atype & ZQFPAtomType::Chiral) || (btype & ZQFPBondType::Chiral)) {
    ZQPerceiveChiral(mol, false);
  }
  for (unsigned int i = 0; i < atomInvariants.size(); ++i) {
    if (const ZQAtomBase* atom = mol.GetAtomAt(i))
      SetAtomInvariant(atomInvariants[i], *atom, atype);
  }
  for (unsigned int i = 0; i < bondInvariants.size(); ++i) {
    if (const ZQBondBase* bond = mol.GetBondAt(i))
      SetBondInvariant(bondInvariants[i], *bond, btype);
  }
}

}  // namespace

bool IsHydrogenBondDonor(const ZQAtomBase& atom) {
  if (!CanHydrogenBond(atom)) return false;
  return atom.GetTotalHCount() != 0;
}

bool IsHydrogenBondAcceptor(const ZQAtomBase& atom) {
  if (!CanHydrogenBond(atom)) return false;
  const Unsaturation unsaturation(atom);
  const int charge = atom.GetFormalCharge();
  if (atom.IsSulfur()) {
    return unsaturation.any && !unsaturation.aromatic && atom.GetDegree() == 1;
  }
  if (atom.IsNitrogen()) {
    if (atom.IsAromatic()) return atom.GetDegree() == 2 && charge < 1;
    if (atom.GetValence() > 3) return false;
    return charge < 0 || !ZQHasAlphaBetaUnsat(true)(atom);
  }
  if (charge < 0) return true;
  return !unsaturation.aromatic && charge == 0 && !ZQHasAlphaBetaUnsat(true)(atom);
}

void AddSmilesAtomSymbol(std::string& text, const ZQAtomBase& atom, unsigned int atype) {
  const bool aromatic = atom.IsAromatic();
  const unsigned int z = atom.GetAtomicNum();
  std::string symbol;
  std::string trailer;
  bool noHCount = false;  // the symbol already covers the hydrogens

  const auto addElement = [&] {
    if (!(atype & ZQFPAtomType::Arom)) {
      symbol.append("#").append(std::to_string(z));
      return;
    }
    symbol += ZQGetAtomicSymbol(z);
    if (aromatic) symbol[0] = ToLower(symbol[0]);
  };
  // Donors and acceptors become one class of elements; false for an atom that is neither.
  const auto addHydrogenBondClass = [&] {
    const HydrogenBondClass hydrogenBond(atom, atype);
    if (!hydrogenBond.donor && !hydrogenBond.acceptor) return false;
    symbol += "#7,#8,#16";
    trailer += hydrogenBond.donor ? ";!h0" : ";";
    if (hydrogenBond.acceptor) {
      trailer += hydrogenBond.donor ? "," : "";
      trailer += "!$([o,s,nX3,#7v5,#16v4,*+1])";
    }
    noHCount = hydrogenBond.donor;
    return true;
  };
  const auto addEquivalenceOrElement = [&] {
    const bool halogen = (atype & ZQFPAtomType::EqHalo) && atom.IsHalogen() &&
                         (z == 9 || z == 17 || z == 35 || z == 53);
    if (halogen) symbol += "F,Cl,Br,I";
    if ((atype & ZQFPAtomType::EqArom) && aromatic &&
        (atom.IsCarbon() || atom.IsNitrogen() || atom.IsSulfur())) {
      symbol += "c,n,s";
      return;
    }
    if (halogen) return;
    if ((atype & hydrogenBondFlags) && !atom.IsCarbon() && addHydrogenBondClass()) return;
    addElement();
  };

  if (atype & ZQFPAtomType::AtmNum) {
    addEquivalenceOrElement();
  } else if (atype & ZQFPAtomType::Arom) {
    symbol += aromatic ? 'a' : 'A';
  } else {
    symbol += '*';
  }

  const int charge = atom.GetFormalCharge();
  if ((atype & ZQFPAtomType::FCharge) && charge != 0) {
    const unsigned int magnitude =
        charge < 0 ? 0U - static_cast<unsigned int>(charge) : static_cast<unsigned int>(charge);
    trailer += charge < 0 ? "-" : "+";
    if (magnitude != 1) trailer += std::to_string(magnitude);
  }
  if (atype & ZQFPAtomType::InRing) trailer += atom.IsInRing() ? ";R" : ";R0";
  if (atype & ZQFPAtomType::HvyDeg) {
    trailer.append(";D").append(std::to_string(atom.GetHvyDegree()));
  }
  const unsigned int hyb = atom.GetHyb();
  if ((atype & ZQFPAtomType::Hyb) && hyb >= 1 && hyb <= 5) {
    trailer.append(";^").append(std::to_string(hyb));
  }
  const unsigned int hydrogens = atom.GetTotalHCount();
  if ((atype & ZQFPAtomType::HCount) && !noHCount && hydrogens <= 4) {
    trailer.append(";h").append(std::to_string(hydrogens));
  }

  if (symbol.size() < 2 && trailer.empty()) {
    text += symbol;
  } else {
    text.append("[").append(symbol).append(trailer).append("]");
  }
}

bool ZQIsValidFPAtomType(const std::string& name) { return AtomFlagNames().IsValid(name); }
bool ZQIsValidFPBondType(const std::string& name) { return BondFlagNames().IsValid(name); }
unsigned int ZQGetFPAtomType(const std::string& name) { return AtomFlagNames().GetValue(name); }
unsigned int ZQGetFPBondType(const std::string& name) { return BondFlagNames().GetValue(name); }
std::string ZQGetFPAtomType(unsigned int atype) { return AtomFlagNames().GetName(atype); }
std::string ZQGetFPBondType(unsigned int btype) { return BondFlagNames().GetName(btype); }

bool ZQIsPreparedForFingerprinting(const ZQMolBase& mol, unsigned int fptype) {
  const ZQFPKind* kind = ZQFindFPKind(fptype);
  int model = 0;
  return mol.IsPerceived(ZQPerceived::Rings) && mol.IsPerceived(ZQPerceived::Aromaticity) &&
         mol.GetData(ZQAromaticityModelTag, model) && model == 2 && !ZQHasExplicitHydrogens(mol) &&
         kind && kind->readsPreparedMolecules;
}

void ZQPrepareForFingerprinting(ZQMolBase& mol, unsigned int /*fptype*/) {
  mol.BeginEdit();
  ZQSuppressHydrogens(mol, false, false, false);
  // Removes all other hydrogens too: isotopes, bridges and ions become counts or disappear.
  for (const unsigned int atomicNum : {1U, 0U}) {
    for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
      ZQAtomBase* atom = mol.GetAtomAt(i);
      if (atom && atom->GetAtomicNum() == atomicNum) ZQRemoveAtom(mol, atom, atomicNum == 1);
    }
  }
  ZQFindRingAtomsAndBonds(mol);
  ZQAssignAromaticFlags(mol, 2, true, 0, false);
  mol.EndEdit();
}

void ZQGetFingerprintAtomTypes(std::vector<unsigned int>& atomInvariants,
                               std::vector<unsigned int>& bondInvariants, ZQMolBase& mol,
                               unsigned int atype, unsigned int btype) {
  FillInvariants(atomInvariants, bondInvariants, mol, atype, btype);
}

void ZQGetFingerprintAtomTypes(std::vector<std::string>& atomInvariants,
                               std::vector<std::string>& bondInvariants, ZQMolBase& mol,
                               unsigned int atype, unsigned int btype) {
  FillInvariants(atomInvariants, bondInvariants, mol, atype, btype);
}

}  // namespace ZQKorvex
