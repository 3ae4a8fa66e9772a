#include "tables/zuvDeviceLocationRules.h"

#include "platform/zuvPlatformCode.h"
#include "tables/zuvTablesInitOrder.h"
#include "utils/zuvGeoIdExpressions.h"

namespace zuvDL {

// Stateless closures that ignore their arguments and forward to the platform predicate;
// building them asks nothing of the platform.
ZUV_BUILT_THIRD const zuvGeoIdRulePredicate onPlatform0Or1 =
    [](_ZUV_IO_GEOID_EXTRACTION_RULE&, bool&, IDeviceLocationKey&, const std::string&,
       const std::vector<ZUV_GEOID_TYPES>&) { return isPlatform0Or1(); };
ZUV_BUILT_THIRD const zuvGeoIdRulePredicate onPlatform2Or4 =
    [](_ZUV_IO_GEOID_EXTRACTION_RULE&, bool&, IDeviceLocationKey&, const std::string&,
       const std::vector<ZUV_GEOID_TYPES>&) { return isPlatform2Or4(); };
ZUV_BUILT_THIRD const zuvGeoIdRulePredicate onPlatform4 = [](_ZUV_IO_GEOID_EXTRACTION_RULE&, bool&, IDeviceLocationKey&,
                                                             const std::string&, const std::vector<ZUV_GEOID_TYPES>&) {
    return isPlatform4();
};

namespace {

// A rule for one form of the GeoID grammar: its expression, field count and mask as the
// grammar has them, flags 0, and an empty compiled expression.
_ZUV_IO_GEOID_EXTRACTION_RULE ruleFor(const zuvGeoIdForm& form, const zuvGeoIdRulePredicate& isApplicable) {
    return {isApplicable,
            static_cast<ZUV_GEOID_TYPES>(form.type),
            form.expression,
            static_cast<uint64_t>(form.fieldCount),
            0,
            form.mask,
            {}};
}

}  // namespace

ZUV_BUILT_THIRD const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType1Rule =
    ruleFor(zuvGeoIdExpressions::forms[0], onPlatform0Or1);
ZUV_BUILT_THIRD const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType2Rule =
    ruleFor(zuvGeoIdExpressions::forms[1], onPlatform2Or4);
ZUV_BUILT_THIRD const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType4Rule =
    ruleFor(zuvGeoIdExpressions::forms[2], onPlatform4);
ZUV_BUILT_THIRD const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType5Rule =
    ruleFor(zuvGeoIdExpressions::forms[3], onPlatform4);
ZUV_BUILT_THIRD const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType6Rule =
    ruleFor(zuvGeoIdExpressions::forms[4], onPlatform4);

ZUV_BUILT_THIRD const std::vector<_ZUV_IO_GEOID_EXTRACTION_RULE> geoIdExtractionRules{
    geoIdType1Rule, geoIdType2Rule, geoIdType4Rule, geoIdType5Rule, geoIdType6Rule};

}  // namespace zuvDL
