#pragma once
// The rules that find a device's GeoID in a text, one per GeoID form, each with the
// platform test under which the form can occur. Built before main, read-only afterwards.
//
// A walk that fits the table takes geoIdExtractionRules in order, skips a rule whose
// isApplicable is false, runs `expression` over the text and, on a match, takes the
// fieldCount groups behind group 1. The predicates look at none of their arguments.

#include <cstdint>
#include <functional>
#include <regex>
#include <string>
#include <vector>

namespace zuvDL {

// The GeoID forms; there is no 3.
enum ZUV_GEOID_TYPES : int32_t {
    ZUV_GEOID_TYPE_1 = 1,
    ZUV_GEOID_TYPE_2 = 2,
    ZUV_GEOID_TYPE_4 = 4,
    ZUV_GEOID_TYPE_5 = 5,
    ZUV_GEOID_TYPE_6 = 6,
};

// The device whose location is wanted; abstract, and only passed through to the rule
// predicates here. The service's keys derive from it.
class IDeviceLocationKey {
public:
    virtual ~IDeviceLocationKey() = 0;
};
inline IDeviceLocationKey::~IDeviceLocationKey() = default;

// The rule record keeps the name the service's code knows it by, reserved spelling and all.
struct _ZUV_IO_GEOID_EXTRACTION_RULE;  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

using zuvGeoIdRulePredicate = std::function<bool(_ZUV_IO_GEOID_EXTRACTION_RULE&, bool&, IDeviceLocationKey&,
                                                 std::string, const std::vector<ZUV_GEOID_TYPES>&)>;

struct _ZUV_IO_GEOID_EXTRACTION_RULE {  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
    zuvGeoIdRulePredicate isApplicable;
    ZUV_GEOID_TYPES geoIdType;
    std::string expression;  // ECMAScript; group 1 is the whole GeoID, then one group per field
    uint64_t fieldCount;
    int32_t flags;     // 0 in every rule
    std::string mask;  // the form's letters, one '.' per digit
    // Empty (ECMAScript, no pattern) until the code that applies the rule compiles
    // `expression` into it; a copied rule takes it along.
    std::regex compiledExpression;
};

// The platform tests, built in this order.
extern const zuvGeoIdRulePredicate onPlatform0Or1;
extern const zuvGeoIdRulePredicate onPlatform2Or4;
extern const zuvGeoIdRulePredicate onPlatform4;

// One rule per form, built before the vector that copies them and left unchanged.
extern const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType1Rule;
extern const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType2Rule;
extern const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType4Rule;
extern const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType5Rule;
extern const _ZUV_IO_GEOID_EXTRACTION_RULE geoIdType6Rule;

// The five rules in the order 1, 2, 4, 5, 6.
extern const std::vector<_ZUV_IO_GEOID_EXTRACTION_RULE> geoIdExtractionRules;

}  // namespace zuvDL
