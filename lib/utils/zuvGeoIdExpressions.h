#pragma once
// The GeoID grammar: five forms, each a letter followed by a fixed number of digits, then the
// next letter and so on. In the search expressions group 1 is the whole GeoID and the
// following groups are its fields; \b lets a GeoID stand inside a longer text. The texts are
// valid both as extended POSIX expressions and in the ECMAScript grammar of std::regex. The
// device location rules are built from `forms`; the decoder of zuvUtils uses the three below.

#include <cstdint>

struct zuvGeoIdForm {
    int32_t type;      // 1, 2, 4, 5, 6: there is no type 3
    const char* mask;  // the letters of the form, "." per digit: as long as the GeoID
    int32_t fieldCount;
    const char* expression;  // search in a longer text
};

namespace zuvGeoIdExpressions {

constexpr zuvGeoIdForm forms[] = {
    {1, "r...i..s..", 3, "\\b(r([0-9]{3})i([0-9]{2})s([0-9]{2}))\\b"},
    {2, "r...u..p.i..", 4, "\\b(r([0-9]{3})u([0-9]{2})p([0-9])i([0-9]{2}))\\b"},
    {4, "r...u..p.o.", 4, "\\b(r([0-9]{3})u([0-9]{2})p([0-9])o([0-9]))\\b"},
    {5, "r...u..p.x.y..", 5, "\\b(r([0-9]{3})u([0-9]{2})p([0-9])x([0-9])y([0-9]{2}))\\b"},
    {6, "r...u..p.i..x.y..", 6, "\\b(r([0-9]{3})u([0-9]{2})p([0-9])i([0-9]{2})x([0-9])y([0-9]{2}))\\b"},
};

// A type 2 GeoID inside a PCI designation text.
constexpr const char* findType2 = "\\b(r[0-9]{3}u[0-9]{2}p[0-9]i[0-9]{2})\\b";
// The whole text is a GeoID of type 1 or type 2; the groups are its fields.
constexpr const char* decodeType1 = "^r([0-9]{3})i([0-9]{2})s([0-9]{2})$";
constexpr const char* decodeType2 = "^r([0-9]{3})u([0-9]{2})p([0-9])i([0-9]{2})$";

}  // namespace zuvGeoIdExpressions
