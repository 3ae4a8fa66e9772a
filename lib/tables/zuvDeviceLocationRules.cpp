#include "tables/zuvDeviceLocationRules.h"

#include "platform/zuvPlatformCode.h"

namespace zuvDL {

// Stateless closures that ignore their arguments and forward to the platform predicate;
// building them asks nothing of the platform.
const zuvGeoIdRulePredicate onPlatform0Or1 = [](_ZUV_IO_GEOID_EXTRACTION_RULE&, bool&, IDeviceLocationKey&, std::string,
                                                const std::vector<ZUV_GEOID_TYPES>&) { return isPlatform0Or1(); };
const zuvGeoIdRulePredicate onPlatform2Or4 = [](_ZUV_IO_GEOID_EXTRACTION_RULE&, bool&, IDeviceLocationKey&, std::string,
                                                const std::vector<ZUV_GEOID_TYPES>&) { return isPlatform2Or4(); };
const zuvGeoIdRulePredicate onPlatform4 = [](_ZUV_IO_GEOID_EXTRACTION_RULE&, bool&, IDeviceLocationKey&, std::string,
                                             const std::vector<ZUV_GEOID_TYPES>&) { return isPlatform4(); };

// \b before and after: a GeoID may stand inside a longer text, but not directly next to a
// letter, digit or underscore (so r001u02p3i04 is not found inside r001u02p3i04x5y06).
const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType1Rule{
    onPlatform0Or1, ZUV_GEOID_TYPE_1, R"(\b(r([0-9]{3})i([0-9]{2})s([0-9]{2}))\b)", 3, 0, "r...i..s..", {}};
const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType2Rule{
    onPlatform2Or4, ZUV_GEOID_TYPE_2, R"(\b(r([0-9]{3})u([0-9]{2})p([0-9])i([0-9]{2}))\b)", 4, 0, "r...u..p.i..", {}};
const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType4Rule{
    onPlatform4, ZUV_GEOID_TYPE_4, R"(\b(r([0-9]{3})u([0-9]{2})p([0-9])o([0-9]))\b)", 4, 0, "r...u..p.o.", {}};
const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType5Rule{
    onPlatform4, ZUV_GEOID_TYPE_5, R"(\b(r([0-9]{3})u([0-9]{2})p([0-9])x([0-9])y([0-9]{2}))\b)", 5, 0, "r...u..p.x.y..",
    {}};
const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType6Rule{
    onPlatform4,
    ZUV_GEOID_TYPE_6,
    R"(\b(r([0-9]{3})u([0-9]{2})p([0-9])i([0-9]{2})x([0-9])y([0-9]{2}))\b)",
    6,
    0,
    "r...u..p.i..x.y..",
    {}};

const std::vector<_ZUV_IO_GEOID_EXTRACTION_RULE> geoIdExtractionRules{geoIdType1Rule, geoIdType2Rule, geoIdType4Rule,
                                                                      geoIdType5Rule, geoIdType6Rule};

}  // namespace zuvDL
