// The public names, as used by a caller of the shared library: one header, each function by its
// exact signature, each constant by its value. A missing, changed or hidden name doesn't compile or
// link.

#include <gtest/gtest.h>
#include <korvex/korvex.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace ZQKorvex {
namespace {

using U = unsigned int;
using V = unsigned short;
using U64 = std::uint64_t;
using Text = std::string;
using In = const std::string&;
using Fp = const ZQFingerPrint&;
using Mol = const ZQMolBase&;
using Type = const ZQFPTypeBase*;
using Options = const ZQFPDatabaseOptions&;
using Numbers = std::vector<unsigned int>;
using Texts = std::vector<std::string>;

// Functions of one signature, which selects one of several overloads.
template <class Signature>
bool Has(std::initializer_list<Signature*> functions) {
  return std::find(functions.begin(), functions.end(), nullptr) == functions.end();
}
// The same for member functions of a class.
template <class C, class Signature>
bool Has(std::initializer_list<Signature C::*> members) {
  return std::find(members.begin(), members.end(), nullptr) == members.end();
}

template <class Base, class... Derived>
constexpr bool areDerived = (std::is_base_of_v<Base, Derived> && ...);

// Molecules.
const bool molecule[] = {
    Has<Text(Mol)>({&ZQMolToSmiles, &ZQMolToOrderedSmiles, &ZQMolToCanonicalSmiles}),
    Has<const char*(U)>({&ZQGetAtomicSymbol}),
    Has<void(ZQMolBase&)>({&ZQFindRingAtomsAndBonds, &ZQAssignHybridization}),
    Has<bool(ZQMolBase&, U, bool, U, bool)>({&ZQAssignAromaticFlags}),
    Has<void(ZQMolBase&, bool)>({&ZQPerceiveChiral}),
    Has<void(ZQMolBase&, bool, bool)>({&ZQPerceiveSymmetry}),
    Has<U(Mol, Numbers&)>({&ZQDetermineComponents, &ZQDetermineAromaticRingSystems}),
    Has<bool(Mol)>({&ZQHasExplicitHydrogens}),
    Has<void(ZQMolBase&, bool, bool, bool)>({&ZQSuppressHydrogens}),
    Has<ZQMolDatabase, bool(In)>({&ZQMolDatabase::Open}),
    Has<ZQMolDatabase, U() const>({&ZQMolDatabase::GetMaxMolIdx}),
    Has<ZQMolDatabase, bool(ZQMolBase&, U) const>({&ZQMolDatabase::GetMolecule}),
    Has<ZQMolDatabase, Text(U) const>({&ZQMolDatabase::GetTitle}),
    Has<ZQSubSearch, bool(Mol) const>({&ZQSubSearch::SingleMatch}),
    Has<ZQSubSearch, ZQIter<ZQMatchBase>(Mol, bool) const>({&ZQSubSearch::Match}),
};
static_assert(
    areDerived<ZQBase, ZQAtomBase, ZQBondBase, ZQMolBase, ZQMCMolBase, ZQMol, ZQGraphMol>);
static_assert(areDerived<ZQUnaryPredicate<ZQAtomBase>, ZQHasAlphaBetaUnsat, ZQIsHeavy, ZQIsHydrogen,
                         ZQHasAtomicNum, ZQHasIdx<ZQAtomBase>>);
static_assert(areDerived<ZQMatchBase, ZQMatch> && areDerived<ZQAtomBondSet, ZQFPAtomBondSet<Text>>);

// System and platform.
const bool system[] = {
    Has<U(In)>({&ZQGetTag}),
    Has<Texts(std::string_view, char)>({&ZQStringTokenize}),
    Has<bool(std::string_view, U&)>({&ZQStringToNumber}),
    Has<Text(U64)>({&ZQNumberToString}),
    Has<Text(In, In)>({&ZQFileExtension}),
    Has<void(const ZQBitVector&, const ZQBitVector&, U*, U*, U*)>({&Bostrel::ZQGetBitCounts}),
    Has<U()>({&ZQGetNumProcessors}),
    Has<double()>({&ZQGetTimeOfDay}),
    Has<std::size_t()>({&ZQGetAllocaThreshold}),
    Has<bool(double)>({&ZQIsNaN}),
    Has<bool(zqistream&, void*, std::size_t)>({&ZQ_io_read_binary}),
    Has<bool(zqostream&, const void*, std::size_t)>({&ZQ_io_write_binary}),
    Has<ZQErrorHandler, ZQErrorSink(ZQErrorSink)>({&ZQErrorHandler::SetSink}),
    Has<ZQBitVector, bool(In)>({&ZQBitVector::FromHexString}),
    Has<ZQBitVector, void(Text&) const>({&ZQBitVector::ToHexString}),
    Has<ZQDots, void(U)>({&ZQDots::Update}),
};
static_assert(std::is_base_of_v<zqistream, zqifstream> &&
              std::is_base_of_v<zqistream, zqisstream> &&
              std::is_base_of_v<zqostream, zqosstream> && sizeof(ZQHitList<ZQSimScore>) != 0 &&
              sizeof(ZQHitListIter<ZQSimScore>) != 0 && sizeof(ZQConcatIter<ZQSimScore>) != 0 &&
              std::has_virtual_destructor_v<ZQIterBase<ZQSimScore>>);

// Types of fingerprints.
static_assert(ZQFPType::MACCS166 == 101 && ZQFPType::Path == 102 && ZQFPType::Lingo == 103 &&
              ZQFPType::Circular == 104 && ZQFPType::Tree == 105 &&
              ZQFPType::UnhashedPath == 9000 && ZQFPType::UnhashedCircular == 9001 &&
              ZQFPType::UnhashedTree == 9002);
static_assert(ZQFPAtomType::None == 0 && ZQFPAtomType::AtmNum == 1 && ZQFPAtomType::Arom == 2 &&
              ZQFPAtomType::Chiral == 4 && ZQFPAtomType::FCharge == 8 &&
              ZQFPAtomType::HvyDeg == 16 && ZQFPAtomType::Hyb == 32 && ZQFPAtomType::InRing == 64 &&
              ZQFPAtomType::EqHalo == 128 && ZQFPAtomType::EqArom == 256 &&
              ZQFPAtomType::EqHBAcc == 512 && ZQFPAtomType::EqHBDon == 1024 &&
              ZQFPAtomType::HCount == 4096 && ZQFPAtomType::DefaultAtom == 191 &&
              ZQFPAtomType::DefaultPathAtom == 191 && ZQFPAtomType::DefaultCircularAtom == 4239 &&
              ZQFPAtomType::DefaultTreeAtom == 63);
static_assert(ZQFPBondType::None == 0 && ZQFPBondType::Order == 1 && ZQFPBondType::Chiral == 2 &&
              ZQFPBondType::InRing == 4 && ZQFPBondType::DefaultBond == 3 &&
              ZQFPBondType::DefaultPathBond == 3 && ZQFPBondType::DefaultCircularBond == 1 &&
              ZQFPBondType::DefaultTreeBond == 1);
static_assert(ZQFPPathType::number == 102 && ZQFPCircularType::number == 104 &&
              ZQFPTreeType::number == 105 && ZQFPLingoType::number == 103 &&
              ZQFPMACCS166Type::number == 101 && ZQFPUnhashedPathType::number == 9000 &&
              ZQFPUnhashedCircularType::number == 9001 && ZQFPUnhashedTreeType::number == 9002 &&
              std::is_base_of_v<ZQFPTypeBase, ZQFPPathType> &&
              std::is_base_of_v<ZQBitVector, ZQFingerPrint>);
using Params5 = Type(U, U, U, U, U);
using Params6 = Type(V, U, U, U, U, U);
using UnhashedParams = Type(V, U, U, U, U);
using ReadParams = bool(In, V&, U&, U&, U&, U&, U&);
using ReadUnhashedParams = bool(In, V&, U&, U&, U&, U&);
const bool types[] = {
    Has<Text()>({&ZQGetMACCS166FPStringPrefix, &ZQGetPathFPStringPrefix, &ZQGetLingoFPStringPrefix,
                 &ZQGetCircularFPStringPrefix, &ZQGetTreeFPStringPrefix,
                 &ZQGetUnhashedPathFPStringPrefix, &ZQGetUnhashedCircularFPStringPrefix,
                 &ZQGetUnhashedTreeFPStringPrefix}),
    Has<Type(U, bool)>({&ZQGetFPType}),
    Has<Type(In)>({&ZQGetFPType}),
    Has<Params5>({&ZQGetPathFPType, &ZQGetCircularFPType, &ZQGetTreeFPType}),
    Has<Params6>({&ZQGetPathFPType, &ZQGetCircularFPType, &ZQGetTreeFPType}),
    Has<UnhashedParams>(
        {&ZQGetUnhashedPathFPType, &ZQGetUnhashedCircularFPType, &ZQGetUnhashedTreeFPType}),
    Has<Type(V)>({&ZQGetLingoFPType, &ZQGetMACCS166FPType}),
    Has<bool(Fp, U)>({&ZQIsFPType}),
    Has<bool(Fp, Fp)>({&ZQIsSameFPType}),
    Has<bool(In)>({&ZQIsValidFPTypeString, &ZQIsValidFingerPrintVersion, &ZQIsValidFPAtomType,
                   &ZQIsValidFPBondType}),
    Has<V(In)>({&ZQGetFPTypeVersion, &ZQGetFingerPrintVersion}),
    Has<U(In)>({&GetFPTypeFromTypeStringPrefix, &ZQGetFPAtomType, &ZQGetFPBondType}),
    Has<void(Text&, V, U64)>({&ZQGetFPTypeStringFromID<ZQFPPathType>}),
    Has<ReadParams>({&ZQGetFPTypeParamsFromString<ZQFPTreeType>, &ZQGetPathFPTypeParams,
                     &ZQGetCircularFPTypeParams, &ZQGetTreeFPTypeParams}),
    Has<bool(In, V&)>({&ZQGetFPTypeParamsFromString<ZQFPLingoType>, &ZQGetLingoFPTypeParams,
                       &ZQGetMACCS166FPTypeParams}),
    Has<ReadUnhashedParams>({&ZQGetUnhashedPathFPTypeParams, &ZQGetUnhashedCircularFPTypeParams,
                             &ZQGetUnhashedTreeFPTypeParams}),
    Has<U64(U, U, U, U, U)>({&ZQFPPathType::GetIDFromParams}),
    Has<U64(U, U, U, U)>({&ZQFPUnhashedTreeType::GetIDFromParams}),
    Has<void(U64, U&, U&, U&, U&, U&)>({&ZQFPCircularType::SetParamsFromID}),
    Has<void(U64, U&, U&, U&, U&)>({&ZQFPUnhashedPathType::SetParamsFromID}),
    Has<ZQFPTypeFactory<ZQFPPathType>, const ZQFPPathType*(V, U64)>(
        {&ZQFPTypeFactory<ZQFPPathType>::GetFPType}),
    Has<ZQFPTypeFactoryNoParams<ZQFPLingoType>, const ZQFPLingoType*(V)>(
        {&ZQFPTypeFactoryNoParams<ZQFPLingoType>::GetFPType}),
    Has<ZQFPTypeParams, U() const>({&ZQFPTypeParams::GetNumBits}),
    Has<Text(Type)>({&ZQGetFingerPrintName}),
    Has<U(Type)>({&ZQGetFingerPrintSize}),
    Has<Text(V)>({&ZQGetFingerPrintVersionString}),
    Has<V(U)>({&ZQGetFingerPrintVersion}),
    Has<Text(U)>({&ZQGetFPAtomType, &ZQGetFPBondType}),
};
// Generators.
using Make = bool(ZQFingerPrint&, Mol);
using MakeOfType = bool(ZQFingerPrint&, Mol, Type);
using MakeHashed = bool(ZQFingerPrint&, Mol, U, U, U, U, U);
using MakeUnhashed = bool(ZQFingerPrint&, Mol, U, U, U, U);
template <class T>
using Invariants = void(std::vector<T>&, std::vector<T>&, ZQMolBase&, U, U);
template <class T>
using PathIds = U(std::set<T>&, Mol, std::vector<T>&, std::vector<T>&, U, U);
template <class T>
using PathIdList = U(std::vector<T>&, Mol, std::vector<T>&, std::vector<T>&, U, U);
template <class T>
using Ids = U(std::vector<T>&, Mol, const std::vector<T>&, const std::vector<T>&, U, U, U, U);
const bool generators[] = {
    Has<MakeOfType>({&ZQMakeFP, &ZQMakePathFP, &ZQMakeCircularFP, &ZQMakeTreeFP,
                     &ZQMakeUnhashedPathFP, &ZQMakeUnhashedCircularFP, &ZQMakeUnhashedTreeFP}),
    Has<bool(ZQFingerPrint&, Mol, U, bool)>({&ZQMakeFP}),
    Has<Make>({&ZQMakePathFP, &ZQMakeCircularFP, &ZQMakeTreeFP, &ZQMakeLingoFP, &ZQMakeMACCS166FP}),
    Has<MakeHashed>({&ZQMakePathFP, &ZQMakeCircularFP, &ZQMakeTreeFP}),
    Has<MakeUnhashed>({&ZQMakeUnhashedPathFP, &ZQMakeUnhashedCircularFP, &ZQMakeUnhashedTreeFP}),
    Has<bool(Mol, U)>({&ZQIsPreparedForFingerprinting}),
    Has<void(ZQMolBase&, U)>({&ZQPrepareForFingerprinting}),
    Has<Invariants<U>>({&ZQGetFingerprintAtomTypes}),
    Has<Invariants<Text>>({&ZQGetFingerprintAtomTypes}),
    Has<PathIds<U>>({&ZQPathIdGenerator}),
    Has<PathIds<Text>>({&ZQPathIdGenerator}),
    Has<PathIdList<U>>({&ZQPathIdGeneratorStack}),
    Has<PathIdList<Text>>({&ZQPathIdGeneratorStack}),
    Has<Ids<U>>({&ZQCircularIdGenerator, &ZQTreeIdGenerator}),
    Has<Ids<Text>>({&ZQCircularIdGenerator, &ZQTreeIdGenerator}),
    Has<U(U)>({&ZQGetNearestSmallerPrimeNumber, &ZQGetNearestSmallerPrimeNumberBruteForce,
               &ZQGetHashSize}),
};

// Explanations.
static_assert(
    areDerived<ZQAtomBondSet, ZQFPPattern> &&
    std::is_constructible_v<ZQFPPattern, ZQIter<ZQAtomBase>, ZQIter<ZQBondBase>, Text, U, U>);
using Fragments = std::vector<ZQFPAtomBondSet<Text>>;
using Names = std::set<Text>;
const bool explanations[] = {
    Has<ZQIter<ZQFPPattern>(Mol, Type)>(
        {&ZQGetFPPatterns, &ZQGetPathFPPatterns, &ZQGetCircularFPPatterns, &ZQGetTreeFPPatterns}),
    Has<ZQIter<ZQAtomBondSet>(Mol, Type, bool)>({&ZQGetFPCoverage, &ZQGetPathFPCoverage,
                                                 &ZQGetCircularFPCoverage, &ZQGetTreeFPCoverage,
                                                 &ZQGetMACCSFPCoverage}),
    Has<ZQIter<ZQMatchBase>(Mol, Mol, Type)>({&ZQGetFPOverlap, &ZQGetPathFPOverlap,
                                              &ZQGetCircularFPOverlap, &ZQGetTreeFPOverlap,
                                              &ZQGetMACCSFPOverlap}),
    Has<bool(ZQSimilarityExplanation&, Mol, Mol, Type, U, float, float)>({&ZQExplainSimilarity}),
    Has<U(const ZQAtomBase*)>({&ZQGetAtomAddressHash}),
    Has<U(const ZQBondBase*)>({&ZQGetBondAddressHash}),
    Has<U(const ZQMatchBase*)>({&ZQGetMatchAddressHash}),
    Has<Text()>({&ZQOriginalPtrTagString}),
    Has<U()>({&ZQOriginalPtrTag}),
    Has<void(Mol)>({&ZQSetPointersAsGenericData, &ZQDetetePointersAsGenericData}),
    Has<GetOriginalPtr<ZQAtomBase>, ZQAtomBase*(const ZQAtomBase*) const>(
        {&GetOriginalPtr<ZQAtomBase>::operator()}),
    Has<ZQMatch*(const ZQMatchBase&, const ZQMatchBase&)>({&ZQCombineMatches}),
    Has<ZQMatch*(const ZQFPAtomBondSet<Text>&, const ZQFPAtomBondSet<Text>&)>(
        {&ZQCombineAtomBondSets}),
    Has<bool(ZQIter<ZQAtomBase>, ZQIter<ZQAtomBase>)>({&AreDifferent<ZQAtomBase>}),
    Has<ZQEqualAtomBondSet, bool(const ZQAtomBondSet&, const ZQAtomBondSet&) const>(
        {&ZQEqualAtomBondSet::operator()}),
    Has<ZQEqualMatch, bool(const ZQMatchBase*, const ZQMatchBase*) const>(
        {&ZQEqualMatch::operator()}),
    Has<void(Fragments&, const Names&, const Fragments&)>({&ZQGetUniquePatterns}),
    Has<void(std::vector<ZQMatchBase*>&, const Names&, const Fragments&, const Fragments&, bool)>(
        {&ZQGetCommonMatches}),
};

// Measures.
static_assert(areDerived<ZQSimFuncBase, ZQTanimotoSim, ZQCosineSim, ZQDiceSim, ZQEuclidSim,
                         ZQTverskySim, ZQManhattanSim, ZQLingoSimFunc, ZQUnhashedSimFunc>);
static_assert(areDerived<ZQLingoSimFunc, ZQTanimotoLingoSim, ZQCosineLingoSim, ZQDiceLingoSim,
                         ZQEuclidLingoSim, ZQTverskyLingoSim, ZQManhattanLingoSim>);
static_assert(areDerived<ZQUnhashedSimFunc, ZQTanimotoUnhashedSim>);
static_assert(std::is_same_v<decltype(ZQSimMeasure::Tanimoto), const unsigned int> &&
              ZQSimMeasure::Tanimoto == 1 && ZQSimMeasure::Cosine == 2 && ZQSimMeasure::Dice == 3 &&
              ZQSimMeasure::Euclid == 4 && ZQSimMeasure::Tversky == 5 &&
              ZQSimMeasure::Manhattan == 6);
using Measure = float(Fp, Fp);
using PopCount = unsigned long(const unsigned long*, unsigned long);
static_assert(std::is_same_v<ZQPopCountFunc, PopCount*>);
const bool measures[] = {
    Has<Text(U)>({&ZQGetSimilarityMeasureName}),
    Has<bool(Fp, Fp, U*, U*, U*, U*)>({&ZQGetBitCounts}),
    Has<Measure>({&ZQTanimoto, &ZQCosine, &ZQDice, &ZQEuclid, &ZQManhattan}),
    Has<float(Fp, Fp, float, float)>({&ZQTversky}),
    Has<bool(Fp, Fp, U*, U*, U*)>({&ZQGetLingoSimTerms}),
    Has<bool(const ZQLingoSim&, Fp, U*, U*, U*)>({&ZQGetLingoSimTerms}),
    Has<ZQLingoMap, void(Text&, Mol) const>({&ZQLingoMap::CreateString}),
    Has<U()>({&ZQGetPopCountMethod, &ZQGetPopCountFingerprintSizeUnit}),
    Has<ZQPopCountFunc(U)>({&ZQGetPopCountFunc}),
    Has<PopCount>({&ZQPopCountPOPCNT, &ZQPopCountBitCount, &ZQPopCountARM, &ZQPopCountMM}),
};

// Databases.
static_assert(ZQFastFPDatabaseMemoryType::MemoryMapped == 1 &&
              ZQFastFPDatabaseMemoryType::InMemory == 2 && ZQFastFPDatabaseMemoryType::CUDA == 3 &&
              ZQSimSearchStatus::Uninitialized == 0 && ZQSimSearchStatus::InProgress == 1 &&
              ZQSimSearchStatus::Finished == 2 && ZQFPDatabaseOptionsMask::Limit == 1 &&
              ZQFPDatabaseOptionsMask::SimFunc == 2 && ZQFPDatabaseOptionsMask::Cutoff == 4);
static_assert(std::is_constructible_v<ZQFastFPDatabase, In, U> &&
              std::is_constructible_v<ZQFPDatabase, U> &&
              std::is_constructible_v<ZQFPDatabase, Type> &&
              std::is_constructible_v<ZQFastFPDatabaseParams, In> &&
              std::is_constructible_v<ZQFPDatabaseOptions, U, U> &&
              std::is_constructible_v<ZQCreateFastFPDatabaseOptions, Type> &&
              std::is_constructible_v<ZQSimSearchResult, unsigned long, double, double> &&
              std::is_constructible_v<ZQFPHistogram, unsigned long, double, double> &&
              std::is_base_of_v<ZQFPHistogram, ZQFPVariogram>);
using Base = ZQFastFPDatabase;
using Hits = ZQIter<ZQSimScore>;
using Raw = ZQIter<double>;
using ReadType = bool(zqistream&, V, ZQFingerPrint&);
using WriteType = bool(zqostream&, Fp);
using Compare = bool(const ZQSimScore&, const ZQSimScore&);
using HitList = std::unique_ptr<ZQHitList<ZQSimScore>>;
const bool databases[] = {
    Has<Base, Hits(Fp, Options) const>({&Base::GetScores, &Base::GetSortedScores}),
    Has<Base, Hits(Mol, Options) const>({&Base::GetScores, &Base::GetSortedScores}),
    Has<Base, Hits(U64, Options) const>({&Base::GetScores, &Base::GetSortedScores}),
    Has<Base, Raw(Fp, Options) const>({&Base::GetRawScores}),
    Has<Base, Raw(Mol, Options) const>({&Base::GetRawScores}),
    Has<Base, Raw(U64, Options) const>({&Base::GetRawScores}),
    Has<Base, ZQIter<float>(Options) const>({&Base::GetAllScores}),
    Has<Base, ZQFPHistogram(Options, unsigned long) const>({&Base::GetHistogram}),
    Has<Base, ZQFPVariogram(const std::vector<float>&, Options, unsigned long) const>(
        {&Base::GetVariogram}),
    Has<Base, ZQIter<ZQSimScorePair>(Options) const>({&Base::GetSparseMatrix}),
    Has<Base, U(ZQSimSearchResult&, Mol, Options) const>({&Base::SortedSearch}),
    Has<ZQFPDatabase, U(Fp)>({&ZQFPDatabase::AddFP}),
    Has<ZQFPDatabase, U(Mol)>({&ZQFPDatabase::AddFP}),
    Has<ZQFPDatabase, void(U, bool)>({&ZQFPDatabase::SetSimFunc}),
    Has<ZQFPDatabase, void(const ZQSimFuncBase&, bool)>({&ZQFPDatabase::SetSimFunc}),
    Has<ZQFPDatabase, Hits(Fp, U, U) const>({&ZQFPDatabase::GetScores}),
    Has<ZQFPDatabase, Hits(Mol, U, U) const>({&ZQFPDatabase::GetScores}),
    Has<ZQFPDatabase, Hits(Fp, U, U, U) const>({&ZQFPDatabase::GetSortedScores}),
    Has<ZQFPDatabase, Hits(Mol, U, U, U) const>({&ZQFPDatabase::GetSortedScores}),
    Has<ZQFPDatabase, Hits(Fp, Options) const>(
        {&ZQFPDatabase::GetScores, &ZQFPDatabase::GetSortedScores}),
    Has<ZQFPDatabase, Hits(Mol, Options) const>(
        {&ZQFPDatabase::GetScores, &ZQFPDatabase::GetSortedScores}),
    Has<ZQSimSearchResult, Hits()>({&ZQSimSearchResult::GetSortedScores}),
    Has<ZQFPHistogram, unsigned long(float)>({&ZQFPHistogram::AddSample}),
    Has<ZQFPVariogram, unsigned long(float, float)>({&ZQFPVariogram::AddSample}),
    Has<ZQFPDatabaseOptions, void(float, float)>({&ZQFPDatabaseOptions::SetTverskyCoeffs}),
    Has<bool(In, In, const ZQCreateFastFPDatabaseOptions&, ZQFPCreationCounts*)>(
        {&ZQCreateFastFPDatabaseFile}),
    Has<bool(In, In, Type)>({&ZQCreateFastFPDatabaseFile}),
    Has<bool(const ZQMolDatabase&, const Base&)>({&ZQAreCompatibleDatabases}),
    Has<bool()>({&ZQIsFastFPDatabaseReady}),
    Has<bool(Type, const char*)>({&CheckFingerPrintType}),
    Has<U64(U64, Type)>({&ZQGetFPDatabaseFileSize}),
    Has<Text(U)>({&ZQSimSearchStatusToName}),
    Has<Compare>({&CompScoreBiggerIsBetter, &CompScoreSmallerIsBetter}),
    Has<HitList(U, bool, bool, float)>({&ZQInitFPDatabaseHitList}),
    Has<HitList(U, Options)>({&ZQInitFPDatabaseHitList}),
    Has<WriteType>({&ZQWritePathFingerPrintType, &ZQWriteCircularFingerPrintType,
                    &ZQWriteTreeFingerPrintType, &ZQWriteLingoFingerPrintType,
                    &ZQWriteMACCSFingerPrintType}),
    Has<ReadType>({&ZQReadPathFingerPrintType, &ZQReadCircularFingerPrintType,
                   &ZQReadTreeFingerPrintType, &ZQReadLingoFingerPrintType,
                   &ZQReadMACCSFingerPrintType}),
    Has<MMapInputFile, bool(In, U64)>({&MMapInputFile::Open}),
    Has<MMapOutputFile, bool(In, U64)>({&MMapOutputFile::Open}),
};

// Stored fingerprints.
const bool stored[] = {
    Has<bool(ZQBinaryIOHandlerBase&)>({&ZQInitFingerPrintHandlers}),
    Has<bool(zqmolstreambase&)>({&ZQInitFingerPrintHandlers}),
    Has<bool(bool (*)(ZQBinaryIOHandlerBase&))>({&ZQRegisterZQBInitializer}),
    Has<bool(zqostream&, In)>({&ZQBWriteTag}),
    Has<bool(zqistream&, Text&)>({&ZQBReadTag}),
    Has<bool(zqostream&, std::uint64_t)>({&ZQBWriteDataLength}),
    Has<bool(zqistream&, std::uint64_t&)>({&ZQBReadDataLength}),
    Has<bool(zqistream&, ZQFingerPrint&)>({&ZQReadBitVector}),
    Has<bool(zqistream&, void*, std::size_t, std::size_t)>({&ZQ_io_read_binary}),
    Has<bool(zqostream&, const void*, std::size_t, std::size_t)>({&ZQ_io_write_binary}),
    Has<bool(ZQBinaryIOHandlerBase&, In)>({&ZQInstallGenericDataHandler<ZQFingerPrint>}),
    Has<bool(zqostream&, Fp, const ZQBinaryIOHandlerBase&)>({&ZQBinaryWrite<ZQFingerPrint>}),
};
static_assert(areDerived<ZQWriteFxn<ZQFingerPrint>, ZQFingerPrintWriteFxn> &&
              areDerived<ZQReadFxn<ZQFingerPrint>, ZQFingerPrintReadFxn> &&
              sizeof(ZQBaseZQBReadFxn<ZQFingerPrint>) != 0 &&
              sizeof(ZQBaseZQBWriteFxn<ZQFingerPrint>) != 0 &&
              sizeof(ZQBaseDataT<ZQFingerPrint>) != 0);

// Fields of records.
using Bytes = std::string_view;
using FieldType = ZQFieldType<ZQFingerPrint>;
using VectorFieldType = ZQVectorFieldType<ZQFingerPrint>;
using MaybeFps = VectorFieldType::OptionalValues;
const bool fields[] = {
    Has<ZQWriteBuffer, void(Bytes)>({&ZQWriteBuffer::WriteBlob}),
    Has<ZQReadBuffer, Bytes(bool*)>({&ZQReadBuffer::ReadBlob}),
    Has<ZQRecord, U(const ZQFieldBase&) const>({&ZQRecord::CheckField}),
    Has<ZQRecord, bool(const ZQFieldBase&)>({&ZQRecord::DeleteField}),
    Has<ZQRecord, void(const ZQFieldBase&, bool)>({&ZQRecord::MarkCacheDirty}),
    Has<ZQFieldTypeHandler, Text(Bytes) const>(
        {&ZQFieldTypeHandler::BytesToJSON, &ZQFieldTypeHandler::JSONToBytes}),
    Has<bool(std::unique_ptr<ZQFieldTypeHandler>)>({&ZQRegisterFieldType}),
    Has<bool(const JSONParseHelper&, In, std::vector<std::optional<Text>>&)>({&GetJSONArrayAttr}),
    Has<Text(Bytes)>({&ZQQuoteJSON}),
    Has<Text(Fp)>({&FieldType::ToBytes, &FieldType::Format, &FPToJSONStr}),
    Has<bool(ZQFingerPrint&, Bytes)>({&FieldType::FromBytes, &FPFromBytes}),
    Has<ZQFingerPrint(In)>({&FPFromJSONStr}),
    Has<Text(const MaybeFps&)>({&VectorFieldType::ToBytes, &VectorFieldType::Format}),
    Has<bool(MaybeFps&, Bytes)>({&VectorFieldType::FromBytes}),
    Has<ZQFieldTypeHandler*()>({&ZQInitFPFieldHandler, &ZQInitFPVecFieldHandler}),
    Has<void(ZQRecord&, ZQField<ZQFingerPrint>&, Fp)>({&ZQSetFingerPrintValue}),
};
static_assert(areDerived<ZQFieldTypeHandler, FieldType, VectorFieldType> &&
              ZQFieldStatus::OtherType == 4);

// VSEPR fingerprints.
using Vsepr = const ZQVseprFingerprint&;
using VseprOf = ZQVseprFingerprint(Vsepr) const;
#define TYPE_FUNCTIONS(space)                                                          \
  Has<U(U)>({&space::GetAtomicNumber, &space::GetHeavyDegree, &space::GetHeavyValence, \
             &space::GetHydrogenCount, &space::GetLPCount, &space::GetDegree,          \
             &space::GetValence}),                                                     \
      Has<int(U)>({&space::GetCharge}), Has<bool(U)>({&space::GetAromatic}),           \
      Has<Text(U)>({&space::GetName}), Has<U(In)>({&space::GetType}),                  \
      Has<U(const ZQAtomBase&)>({&space::GetType}),                                    \
      Has<ZQUnaryPredicate<ZQAtomBase>*(U)>({&space::CreatePredicate})
const bool vsepr[] = {
    TYPE_FUNCTIONS(VSEPRAroType),
    TYPE_FUNCTIONS(VSEPRAroStereoType),
    Has<U(U)>({&VSEPRAroStereoType::GetStereo}),
    Has<ZQVseprFingerprint, void(Mol, ZQVseprOptions)>({&ZQVseprFingerprint::Setup}),
    Has<ZQVseprFingerprint, void(const ZQAtomBase&, ZQVseprOptions)>({&ZQVseprFingerprint::Setup}),
    Has<ZQVseprFingerprint, void(const ZQBondBase&, ZQVseprOptions)>({&ZQVseprFingerprint::Setup}),
    Has<ZQVseprFingerprint, double() const>({&ZQVseprFingerprint::GetVolume}),
    Has<ZQVseprFingerprint, double(Vsepr) const>({&ZQVseprFingerprint::GetTanimoto}),
    Has<ZQVseprFingerprint, ZQVseprFingerprint(double) const>({&ZQVseprFingerprint::Scale}),
    Has<ZQVseprFingerprint, VseprOf>({&ZQVseprFingerprint::operator|, &ZQVseprFingerprint::operator&,
                                      &ZQVseprFingerprint::operator+}),
    Has<ZQVseprFingerprint, bool(Vsepr) const>({&ZQVseprFingerprint::operator<}),
    Has<double(Vsepr, Vsepr)>({&ZQGetTanimoto}),
    Has<double(Vsepr, Vsepr, double, double)>({&ZQGetTversky}),
    Has<void(ZQMolBase&, ZQVseprOptions)>({&ZQPrepVsepr}),
    Has<void(ZQAtomBase&, ZQVseprOptions)>({&ZQPrepVsepr}),
    Has<void(ZQBondBase&, ZQVseprOptions)>({&ZQPrepVsepr}),
    Has<double(Mol, Mol, double)>({&ZQGetVseprTanimoto}),
    Has<double(const ZQAtomBase&, const ZQAtomBase&, double)>({&ZQGetVseprTanimoto}),
    Has<double(const ZQBondBase&, const ZQBondBase&, double)>({&ZQGetVseprTanimoto}),
};
#undef TYPE_FUNCTIONS
static_assert(
    areDerived<ZQUnaryPredicate<ZQAtomBase>, VSEPRAroType::ZQIsType,
               VSEPRAroStereoType::ZQIsType> &&
    areDerived<ZQBinaryFunction<ZQVseprFingerprint, ZQVseprFingerprint, double, true, true>,
               ZQGetVseprTanimotoFxn>);

// The command line, and the library itself.
using Space = const ZQNamespaceInterface*();
const bool library[] = {
    Has<Space>({&ZQGetFPTypeNamespaceInterface, &ZQGetFPAtomTypeNamespaceInterface,
                &ZQGetFPBondTypeNamespaceInterface, &ZQGetSimMeasureNamespaceInterface,
                &ZQGetMemoryTypeNamespaceInterface}),
    Has<void(ZQParameter*, const ZQNamespaceInterface*)>({&AddDetails}),
    Has<bool(ZQInterface&, Type)>({&ZQConfigureFingerPrint}),
    Has<bool(ZQInterface&, U, In, In)>(
        {&ZQConfigureFingerPrintType, &ZQConfigureFPDatabaseMemoryType,
         &ZQConfigureFPDatabaseOptionsLimit, &ZQConfigureFPDatabaseOptionsSimFunc}),
    Has<Type(const ZQInterface&)>({&ZQSetupFingerPrint}),
    Has<U(const ZQInterface&, In)>({&ZQGetFPDatabaseMemoryType}),
    Has<bool(ZQInterface&, Options, In, In)>({&ZQConfigureFPDatabaseOptionsCutoff}),
    Has<bool(ZQInterface&, Options)>({&ZQConfigureFPDatabaseOptions}),
    Has<bool(ZQInterface&, U)>({&ZQConfigureFPDatabaseOptions}),
    Has<void(ZQFPDatabaseOptions&, const ZQInterface&)>({&ZQSetupFPDatabaseOptions}),
    Has<U()>({&ZQKorvexGetVersion}),
    Has<Text()>({&ZQKorvexGetArch, &ZQKorvexGetPlatform, &ZQKorvexGetNonDebugRelease,
                 &ZQKorvexGetDebugRelease, &ZQKorvexGetRelease, &ZQKorvexGetConfigureArgs}),
    Has<ZQLibraryVersion()>({&ZQKorvexVersion}),
    Has<bool()>({&ZQKorvexIsGPUReady}),
    Has<Text(In)>({&ZQGetKorvexClassHyperlink}),
    Has<Text(In, In)>({&ZQGetKorvexMethodHyperlink}),
};

TEST(PublicNames, FunctionsAreLinked) {
  const std::initializer_list<std::span<const bool>> tables = {
      molecule,  system, types,  generators, explanations, measures,
      databases, stored, fields, vsepr,      library};
  for (const std::span<const bool> table : tables) {
    for (const bool isLinked : table) EXPECT_TRUE(isLinked);
  }
}

}  // namespace
}  // namespace ZQKorvex
