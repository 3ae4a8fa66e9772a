// The GeoID rules: each expression finds its own form only, masks fit the forms, and the
// platform tests select the forms per platform code.

#include <gtest/gtest.h>

#include <cctype>
#include <regex>
#include <string>
#include <type_traits>
#include <vector>

#include "platformCodeProbe.h"
#include "tables/zuvDeviceLocationRules.h"

namespace {

using zuvDL::_ZUV_IO_GEOID_EXTRACTION_RULE;
using zuvDL::ZUV_GEOID_TYPES;

static_assert(std::is_abstract<zuvDL::IDeviceLocationKey>::value, "keys are the service's own classes");
class NoKey : public zuvDL::IDeviceLocationKey {};

struct Sample {
    ZUV_GEOID_TYPES type;
    std::string geoId;
    std::vector<std::string> fields;
};

// One GeoID of each form, with leading zeros that must survive.
const Sample samples[] = {
    {zuvDL::ZUV_GEOID_TYPE_1, "r001i02s03", {"001", "02", "03"}},
    {zuvDL::ZUV_GEOID_TYPE_2, "r001u02p3i04", {"001", "02", "3", "04"}},
    {zuvDL::ZUV_GEOID_TYPE_4, "r001u02p3o4", {"001", "02", "3", "4"}},
    {zuvDL::ZUV_GEOID_TYPE_5, "r001u02p3x5y06", {"001", "02", "3", "5", "06"}},
    {zuvDL::ZUV_GEOID_TYPE_6, "r001u02p3i04x5y06", {"001", "02", "3", "04", "5", "06"}},
};

// The walk the table is made for: rules in order, skipping those whose test is false.
std::vector<ZUV_GEOID_TYPES> applicableTypes() {
    std::vector<ZUV_GEOID_TYPES> types;
    for (const auto& constRule : zuvDL::geoIdExtractionRules) {
        _ZUV_IO_GEOID_EXTRACTION_RULE rule = constRule;
        bool flag = false;
        NoKey key;
        if (rule.isApplicable(rule, flag, key, "PCIe Slot", {})) types.push_back(rule.geoIdType);
    }
    return types;
}

}  // namespace

TEST(GeoIdRules, SeparateRulesAndVectorHoldTheSameFiveRulesInOrder) {
    const _ZUV_IO_GEOID_EXTRACTION_RULE* separate[] = {&zuvDL::geoIdType1Rule, &zuvDL::geoIdType2Rule,
                                                       &zuvDL::geoIdType4Rule, &zuvDL::geoIdType5Rule,
                                                       &zuvDL::geoIdType6Rule};
    const ZUV_GEOID_TYPES types[] = {zuvDL::ZUV_GEOID_TYPE_1, zuvDL::ZUV_GEOID_TYPE_2, zuvDL::ZUV_GEOID_TYPE_4,
                                     zuvDL::ZUV_GEOID_TYPE_5, zuvDL::ZUV_GEOID_TYPE_6};
    const uint64_t fieldCounts[] = {3, 4, 4, 5, 6};
    const char* masks[] = {"r...i..s..", "r...u..p.i..", "r...u..p.o.", "r...u..p.x.y..", "r...u..p.i..x.y.."};
    ASSERT_EQ(zuvDL::geoIdExtractionRules.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i) {
        const auto& rule = zuvDL::geoIdExtractionRules[i];
        SCOPED_TRACE("rule " + std::to_string(i + 1));
        EXPECT_EQ(rule.geoIdType, types[i]);
        EXPECT_EQ(rule.fieldCount, fieldCounts[i]);
        EXPECT_EQ(rule.flags, 0);
        EXPECT_EQ(rule.mask, masks[i]);
        EXPECT_EQ(separate[i]->geoIdType, rule.geoIdType);
        EXPECT_EQ(separate[i]->expression, rule.expression);
        EXPECT_EQ(separate[i]->mask, rule.mask);
        EXPECT_EQ(separate[i]->fieldCount, rule.fieldCount);
        // The rule compiles nothing itself.
        EXPECT_EQ(rule.compiledExpression.mark_count(), 0u);
        EXPECT_EQ(separate[i]->compiledExpression.mark_count(), 0u);
        EXPECT_EQ(rule.compiledExpression.flags(), std::regex::ECMAScript);
    }
    EXPECT_EQ(sizeof(zuvDL::ZUV_GEOID_TYPES), 4u);
}

TEST(GeoIdRules, EachExpressionFindsItsOwnFormOnlyAndGivesItsFields) {
    for (const auto& rule : zuvDL::geoIdExtractionRules) {
        const std::regex compiled(rule.expression, std::regex::ECMAScript);
        ASSERT_EQ(compiled.mark_count(), rule.fieldCount + 1) << rule.expression;
        for (const Sample& sample : samples) {
            SCOPED_TRACE("rule " + std::to_string(rule.geoIdType) + " on " + sample.geoId);
            const bool own = sample.type == rule.geoIdType;
            // Alone, inside a designation, and glued to a letter, digit or underscore.
            std::smatch match;
            const std::string alone = sample.geoId;
            const std::string inside = "PCIe Slot " + sample.geoId + " x8";
            EXPECT_EQ(std::regex_search(alone, match, compiled), own);
            ASSERT_EQ(std::regex_search(inside, match, compiled), own);
            if (own) {
                EXPECT_EQ(match.str(1), sample.geoId);
                for (std::size_t f = 0; f < rule.fieldCount; ++f) EXPECT_EQ(match.str(f + 2), sample.fields[f]);
            }
            for (const char* glue : {"a", "7", "_"}) {
                EXPECT_FALSE(std::regex_search(sample.geoId + glue, compiled)) << glue;
                EXPECT_FALSE(std::regex_search(glue + sample.geoId, compiled)) << glue;
            }
        }
    }
}

TEST(GeoIdRules, MaskIsTheFormWithADotPerDigit) {
    for (const auto& rule : zuvDL::geoIdExtractionRules) {
        for (const Sample& sample : samples) {
            if (sample.type != rule.geoIdType) continue;
            ASSERT_EQ(rule.mask.size(), sample.geoId.size()) << rule.mask;
            for (std::size_t i = 0; i < rule.mask.size(); ++i) {
                const char expected = std::isdigit(static_cast<unsigned char>(sample.geoId[i])) ? '.' : sample.geoId[i];
                EXPECT_EQ(rule.mask[i], expected) << rule.mask << " at " << i;
            }
        }
    }
}

TEST(GeoIdRules, FormsThatApplyPerPlatformCode) {
    using T = std::vector<ZUV_GEOID_TYPES>;
    struct Case {
        int32_t code;
        T types;
    };
    const Case cases[] = {
        {0, {zuvDL::ZUV_GEOID_TYPE_1}},
        {1, {zuvDL::ZUV_GEOID_TYPE_1}},
        {2, {zuvDL::ZUV_GEOID_TYPE_2}},
        {4, {zuvDL::ZUV_GEOID_TYPE_2, zuvDL::ZUV_GEOID_TYPE_4, zuvDL::ZUV_GEOID_TYPE_5, zuvDL::ZUV_GEOID_TYPE_6}},
        {-1, {}},
    };
    for (const Case& c : cases) {
        zuvtablestest::setPlatformCode(c.code);
        EXPECT_EQ(applicableTypes(), c.types) << "platform code " << c.code;
    }
    zuvtablestest::setPlatformCode(-1);
}

TEST(GeoIdRules, WalkOnPlatform2DoesNotFindForm6) {
    // The text holds a form 6 GeoID and nothing else: on platform 2 only form 2 applies,
    // and its expression doesn't match inside the form 6 GeoID.
    zuvtablestest::setPlatformCode(2);
    const std::string text = "PCIe Slot r001u02p3i04x5y06 x16";
    int found = 0;
    for (const auto& rule : zuvDL::geoIdExtractionRules) {
        _ZUV_IO_GEOID_EXTRACTION_RULE copy = rule;
        bool flag = false;
        NoKey key;
        if (!copy.isApplicable(copy, flag, key, text, {})) continue;
        copy.compiledExpression.assign(copy.expression, std::regex::ECMAScript);
        if (std::regex_search(text, copy.compiledExpression)) ++found;
    }
    EXPECT_EQ(found, 0);
    zuvtablestest::setPlatformCode(4);
    std::vector<ZUV_GEOID_TYPES> types;
    for (const auto& rule : zuvDL::geoIdExtractionRules) {
        _ZUV_IO_GEOID_EXTRACTION_RULE copy = rule;
        bool flag = false;
        NoKey key;
        if (copy.isApplicable(copy, flag, key, text, {}) && std::regex_search(text, std::regex(copy.expression)))
            types.push_back(copy.geoIdType);
    }
    EXPECT_EQ(types, std::vector<ZUV_GEOID_TYPES>{zuvDL::ZUV_GEOID_TYPE_6});
    zuvtablestest::setPlatformCode(-1);
    // Compiling a copy left the table's own rule empty.
    for (const auto& rule : zuvDL::geoIdExtractionRules) EXPECT_EQ(rule.compiledExpression.mark_count(), 0u);
}
