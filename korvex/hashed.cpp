#include "korvex/hashed_local.h"

namespace ZQKorvex {

void ZQRepairParams(const ZQHashedKind& kind, ZQFPTypeValues& values) {
  const ZQFPTypeValues& defaults = kind.defaults;
  const char* distance = kind.kind.distanceKey;
  if (values.numbits < 16 || values.numbits > 65535) {
    ZQThrow.Warning("%s : invalid bit vector size %d for %s fingerprint (default %d is used)%s",
                    kind.makeName, values.numbits, kind.name, defaults.numbits, kind.ending);
    values.numbits = defaults.numbits;
  }
  if (values.minDistance > kind.largestDistance) {
    ZQThrow.Warning("%s : invalid min %s %d for %s fingerprint (default %d is used)%s",
                    kind.makeName, distance, values.minDistance, kind.name, defaults.minDistance,
                    kind.ending);
    values.minDistance = defaults.minDistance;
  }
  if (values.maxDistance > kind.largestDistance) {
    ZQThrow.Warning("%s : invalid max %s %d for %s fingerprint%s (default %d is used)%s",
                    kind.makeName, distance, values.maxDistance, kind.name, kind.ofMaxDistance,
                    defaults.maxDistance, kind.ending);
    values.maxDistance = defaults.maxDistance;
  }
  if (values.minDistance > values.maxDistance) {
    ZQThrow.Warning(
        "%s : invalid min %s %d > max %s %d for %s fingerprint (min%s = max%s is used)%s",
        kind.makeName, distance, values.minDistance, distance, values.maxDistance, kind.name,
        distance, distance, kind.ending);
    values.minDistance = values.maxDistance;
  }
  if (values.atype == ZQFPAtomType::None && values.btype == ZQFPBondType::None) {
    ZQThrow.Warning(
        "%s : invalid to have both atom and bond types set to be None (default types are used)!",
        kind.makeName);
    values.atype = defaults.atype;
    values.btype = defaults.btype;
  }
}

}  // namespace ZQKorvex
