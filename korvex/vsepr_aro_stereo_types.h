#pragma once

/// VSEPR atom types with the configuration of tetrahedral centres: the types of vsepr_aro_types.h
/// under the same numbers, and types 165 to 200 in pairs, R and S of 18 of them. The functions and
/// their reports are those of `VSEPRAroType`, with this namespace's name.

#include <string>

#include "korvex/vsepr_aro_types.h"

namespace ZQKorvex::VSEPRAroStereoType {

inline constexpr unsigned int Unknown = 201;

ZQ_EXPORT unsigned int GetAtomicNumber(unsigned int type);
ZQ_EXPORT int GetCharge(unsigned int type);
ZQ_EXPORT unsigned int GetHeavyDegree(unsigned int type);
ZQ_EXPORT unsigned int GetHeavyValence(unsigned int type);
ZQ_EXPORT unsigned int GetHydrogenCount(unsigned int type);
ZQ_EXPORT unsigned int GetLPCount(unsigned int type);
ZQ_EXPORT bool GetAromatic(unsigned int type);
/// 2 for a type R, 3 for a type S, otherwise 0.
ZQ_EXPORT unsigned int GetStereo(unsigned int type);
ZQ_EXPORT unsigned int GetDegree(unsigned int type);
ZQ_EXPORT unsigned int GetValence(unsigned int type);
ZQ_EXPORT std::string GetName(unsigned int type);

ZQ_EXPORT unsigned int GetType(const std::string& name);
/// The row with the atom's values and configuration, else `Unknown`. R and S are relative to the
/// `VSEPRAroType` of the neighbours, in ascending order, not to the priorities of the CIP rules;
/// neighbours of equal type follow in the order of `GetAtoms()`, so that another order of the atoms
/// may exchange R and S. A configured atom whose row has no R and S, such as a sulfoxide's sulfur,
/// is `Unknown`.
ZQ_EXPORT unsigned int GetType(const ZQAtomBase& atom);

ZQ_EXPORT ZQUnaryPredicate<ZQAtomBase>* CreatePredicate(unsigned int type);

/// Whether an atom has the values of a type. The configuration isn't compared: the predicates of
/// types 12, 165 and 166 accept the same atoms.
using ZQIsType = ZQIsVseprType<CreatePredicate>;

}  // namespace ZQKorvex::VSEPRAroStereoType
