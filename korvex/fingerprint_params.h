#pragma once

/// Type strings: the text form of a fingerprint type, in databases and user input. A
/// comma-separated list: the kind's prefix and tokens key=value, written in a fixed order, read in
/// any order after the prefix, which determines the kind. Invalid text causes a warning and a false
/// or null result; nothing is repaired.

#include <cstdint>
#include <string>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// The type of a type string; null if the string is invalid or has an old version.
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPType(const std::string& typeString);
/// The same for external text, such as a file's header or a command line. If a parameter is out of
/// its legal range, an assertion failure above, this returns null without a message; `*fault`, if
/// `fault` isn't null, is then a text such as "size 8 is outside 16 to 65535", and is empty
/// otherwise.
ZQ_EXPORT const ZQFPTypeBase* ZQReadFPType(const std::string& typeString,
                                           std::string* fault = nullptr);
/// Whether the string's syntax is valid; an old version is valid but causes a warning.
ZQ_EXPORT bool ZQIsValidFPTypeString(const std::string& typeString);
/// The packed version of a valid string of kinds 101 to 105, else 0.
ZQ_EXPORT unsigned short ZQGetFPTypeVersion(const std::string& typeString);
/// The kind by the string's prefix, 0 for none.
ZQ_EXPORT unsigned int GetFPTypeFromTypeStringPrefix(const std::string& typeString);

ZQ_EXPORT std::string ZQGetMACCS166FPStringPrefix();
ZQ_EXPORT std::string ZQGetPathFPStringPrefix();
ZQ_EXPORT std::string ZQGetLingoFPStringPrefix();
ZQ_EXPORT std::string ZQGetCircularFPStringPrefix();
ZQ_EXPORT std::string ZQGetTreeFPStringPrefix();
ZQ_EXPORT std::string ZQGetUnhashedPathFPStringPrefix();
ZQ_EXPORT std::string ZQGetUnhashedCircularFPStringPrefix();
ZQ_EXPORT std::string ZQGetUnhashedTreeFPStringPrefix();

/// Appends the type string of a kind, by its number, for a version and packed parameters, which
/// MACCS-166 and Lingo don't have. Bits of the id outside its fields cause the warning described in
/// fptypes.h; numbits below 16 is an assertion failure. An unknown number is an assertion failure
/// and appends nothing.
ZQ_EXPORT void ZQGetFPTypeStringFromID(unsigned int fptype, std::string& text,
                                       unsigned short version, std::uint64_t id = 0);
/// The same by the type class (fptypes.h).
template <class T>
void ZQGetFPTypeStringFromID(std::string& text, unsigned short version, std::uint64_t id = 0) {
  ZQGetFPTypeStringFromID(T::number, text, version, id);
}

// The parsers, by the kind's number. They accept the prefix anywhere in the list. They return false
// after a warning; only an invalid typing name gets no warning. They don't check the limits of the
// parameters. If a key is repeated, its last value is used. An output without a token is all ones;
// a version is 0, numbits of an unhashed kind 0. The first form is for the kinds with parameters,
// the second for MACCS-166 and Lingo; for another kind's number an assertion fails and the result
// is false.
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

// The parsers of one kind each. In those of unhashed kinds, a valid string with a "numbits" other
// than 0 is an assertion failure.
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

/// The parsed values of a type or type string, filled for kinds 101 to 105; for an unhashed kind
/// the object is invalid but has the kind set.
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

/// The kind's prefix, such as "Path". An assertion fails for null or an unhashed type.
ZQ_EXPORT std::string ZQGetFingerPrintName(const ZQFPTypeBase* type);
/// Number of bits of a fingerprint of this type: 166 for MACCS-166, 0 for Lingo. For null an
/// assertion fails and the result is 0.
ZQ_EXPORT unsigned int ZQGetFingerPrintSize(const ZQFPTypeBase* type);

}  // namespace ZQKorvex
