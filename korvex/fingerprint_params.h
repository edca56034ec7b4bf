#pragma once

/// Type strings: the text form of a fingerprint type, which databases carry and users write. A
/// comma-separated list: the kind's prefix and tokens key=value, written in a fixed order, read in
/// any order behind the prefix that decides the kind. Bad text is reported by a warning and a
/// false or null answer; nothing is repaired.

#include <cstdint>
#include <string>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// The type that a string names; null if it names none or carries an old version.
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPType(const std::string& typeString);
/// The same for a text from outside, such as a file's header or a command line. A parameter out of
/// its legal range, which is an assertion failure above, is null here without a report; `*fault`,
/// if `fault` isn't null, then reads like "size 8 is outside 16 to 65535", and is empty otherwise.
ZQ_EXPORT const ZQFPTypeBase* ZQReadFPType(const std::string& typeString,
                                           std::string* fault = nullptr);
/// Whether the string is valid in form; an old version warns and is valid.
ZQ_EXPORT bool ZQIsValidFPTypeString(const std::string& typeString);
/// The packed version of a valid string of the kinds 101 to 105, else 0.
ZQ_EXPORT unsigned short ZQGetFPTypeVersion(const std::string& typeString);
/// The kind by how the string begins, 0 for none.
ZQ_EXPORT unsigned int GetFPTypeFromTypeStringPrefix(const std::string& typeString);

ZQ_EXPORT std::string ZQGetMACCS166FPStringPrefix();
ZQ_EXPORT std::string ZQGetPathFPStringPrefix();
ZQ_EXPORT std::string ZQGetLingoFPStringPrefix();
ZQ_EXPORT std::string ZQGetCircularFPStringPrefix();
ZQ_EXPORT std::string ZQGetTreeFPStringPrefix();
ZQ_EXPORT std::string ZQGetUnhashedPathFPStringPrefix();
ZQ_EXPORT std::string ZQGetUnhashedCircularFPStringPrefix();
ZQ_EXPORT std::string ZQGetUnhashedTreeFPStringPrefix();

/// Appends the type string of a kind, by its number, under a version and packed parameters, which
/// MACCS-166 and Lingo don't have. Bits of the id outside of its fields warn as fptypes.h says, and
/// numbits below 16 is an assertion failure. A number of no kind is an assertion failure and
/// appends nothing.
ZQ_EXPORT void ZQGetFPTypeStringFromID(unsigned int fptype, std::string& text,
                                       unsigned short version, std::uint64_t id = 0);
/// The same by the type class (fptypes.h).
template <class T>
void ZQGetFPTypeStringFromID(std::string& text, unsigned short version, std::uint64_t id = 0) {
  ZQGetFPTypeStringFromID(T::number, text, version, id);
}

// The parsers, by the kind's number, which take the prefix anywhere in the list. False after a
// warning, but for the name of a typing that isn't valid, which is refused in silence; limits of
// the parameters aren't checked here. Of a repeated key the last value stands. An output that no
// token named is all ones, a version 0, numbits of an unhashed kind 0. The first form is for the
// kinds with parameters, the second for MACCS-166 and Lingo; another kind's number is an assertion
// failure, and false.
ZQ_EXPORT bool ZQGetFPTypeParamsFromString(unsigned int fptype, const std::string& typeString,
                                           unsigned short& version, unsigned int& numbits,
                                           unsigned int& min, unsigned int& max,
                                           unsigned int& atype, unsigned int& btype);
ZQ_EXPORT bool ZQGetFPTypeParamsFromString(unsigned int fptype, const std::string& typeString,
                                           unsigned short& version);
/// The same by the type class.
template <class T>
bool ZQGetFPTypeParamsFromString(const std::string& typeString, unsigned short& version,
                                 unsigned int& numbits, unsigned int& min, unsigned int& max,
                                 unsigned int& atype, unsigned int& btype) {
  return ZQGetFPTypeParamsFromString(T::number, typeString, version, numbits, min, max, atype,
                                     btype);
}
template <class T>
bool ZQGetFPTypeParamsFromString(const std::string& typeString, unsigned short& version) {
  return ZQGetFPTypeParamsFromString(T::number, typeString, version);
}

// The parsers of one kind each. The unhashed ones hold a valid string to a "numbits" of 0, if it
// has that token: otherwise an assertion failure.
ZQ_EXPORT bool ZQGetPathFPTypeParams(const std::string& typeString, unsigned short& version,
                                     unsigned int& numbits, unsigned int& minbonds,
                                     unsigned int& maxbonds, unsigned int& atype,
                                     unsigned int& btype);
ZQ_EXPORT bool ZQGetCircularFPTypeParams(const std::string& typeString, unsigned short& version,
                                         unsigned int& numbits, unsigned int& minradius,
                                         unsigned int& maxradius, unsigned int& atype,
                                         unsigned int& btype);
ZQ_EXPORT bool ZQGetTreeFPTypeParams(const std::string& typeString, unsigned short& version,
                                     unsigned int& numbits, unsigned int& minbonds,
                                     unsigned int& maxbonds, unsigned int& atype,
                                     unsigned int& btype);
ZQ_EXPORT bool ZQGetUnhashedPathFPTypeParams(const std::string& typeString, unsigned short& version,
                                             unsigned int& minbonds, unsigned int& maxbonds,
                                             unsigned int& atype, unsigned int& btype);
ZQ_EXPORT bool ZQGetUnhashedCircularFPTypeParams(const std::string& typeString,
                                                 unsigned short& version, unsigned int& minradius,
                                                 unsigned int& maxradius, unsigned int& atype,
                                                 unsigned int& btype);
ZQ_EXPORT bool ZQGetUnhashedTreeFPTypeParams(const std::string& typeString, unsigned short& version,
                                             unsigned int& minbonds, unsigned int& maxbonds,
                                             unsigned int& atype, unsigned int& btype);
ZQ_EXPORT bool ZQGetLingoFPTypeParams(const std::string& typeString, unsigned short& version);
ZQ_EXPORT bool ZQGetMACCS166FPTypeParams(const std::string& typeString, unsigned short& version);

/// The parsed view of a type or of its string, filled for the kinds 101 to 105; an unhashed kind
/// gives an object that is not valid and has the kind set.
class ZQ_EXPORT ZQFPTypeParams {
 public:
  explicit ZQFPTypeParams(const std::string& typeString);
  explicit ZQFPTypeParams(const ZQFPTypeBase* type);

  bool IsValid() const { return valid_; }
  unsigned int GetFPType() const { return fptype_; }
  unsigned short GetVersion() const { return version_; }
  unsigned int GetNumBits() const { return numbits_; }
  unsigned int GetMinDistance() const { return minDistance_; }
  unsigned int GetMaxDistance() const { return maxDistance_; }
  unsigned int GetAtomTypes() const { return atomTypes_; }
  unsigned int GetBondTypes() const { return bondTypes_; }

 private:
  bool valid_ = false;
  unsigned int fptype_ = 0;
  unsigned short version_ = 0;
  unsigned int numbits_ = 0;
  unsigned int minDistance_ = 0;
  unsigned int maxDistance_ = 0;
  unsigned int atomTypes_ = 0;
  unsigned int bondTypes_ = 0;
};

/// The kind's prefix, such as "Path". Null or an unhashed type is an assertion failure.
ZQ_EXPORT std::string ZQGetFingerPrintName(const ZQFPTypeBase* type);
/// Bits of a fingerprint of this type: 166 for MACCS-166, 0 for Lingo. Null is an assertion
/// failure that answers 0.
ZQ_EXPORT unsigned int ZQGetFingerPrintSize(const ZQFPTypeBase* type);

}  // namespace ZQKorvex
