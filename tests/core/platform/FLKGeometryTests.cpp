#include <gtest/gtest.h>

#include "core/platform/FLKColor.h"
#include "core/platform/FLKRect.h"

TEST(FLKRect, NullIsTheIdentityOfUnion) {
    FLKRect r(1, 2, 3, 4);
    EXPECT_TRUE(FLKRect::null().isNull());
    EXPECT_EQ(FLKRect::null().unionWith(r), r);
    EXPECT_EQ(r.unionWith(FLKRect::null()), r);
    EXPECT_TRUE(FLKRect::null().unionWith(FLKRect::null()).isNull());
    EXPECT_EQ(FLKRect(0, 0, 10, 10).unionWith(FLKRect(20, -5, 5, 5)), FLKRect(0, -5, 25, 15));
    // A zero-size rectangle is not null: it still widens a union.
    EXPECT_EQ(FLKRect(5, 5, 0, 0).unionWith(FLKRect(10, 10, 1, 1)), FLKRect(5, 5, 6, 6));
}

TEST(FLKRect, NegativeSizesAreStandardised) {
    FLKRect r(10, 10, -4, -6);
    EXPECT_DOUBLE_EQ(r.minX(), 6);
    EXPECT_DOUBLE_EQ(r.maxY(), 10);
    EXPECT_EQ(r.standardized(), FLKRect(6, 4, 4, 6));
    EXPECT_TRUE(r.containsPoint({7, 5}));
}

TEST(FLKRect, DictionaryFormsUsePlatformKeys) {
    FLKRect r(1.5, -2, 30, 40.25);
    auto d = r.dictionaryRepresentation();
    EXPECT_EQ(d.dump(), R"({"X":1.5,"Y":-2.0,"Width":30.0,"Height":40.25})");
    EXPECT_EQ(FLKRect::fromDictionary(d), r);
    EXPECT_FALSE(FLKRect::fromDictionary(FLKJSON{{"X", 1}}).has_value());
    auto p = FLKPoint{3, 4}.dictionaryRepresentation();
    EXPECT_EQ(p.dump(), R"({"X":3.0,"Y":4.0})");
    EXPECT_EQ(FLKPoint::fromDictionary(p), (FLKPoint{3, 4}));
}

TEST(FLKColor, HexRoundTrip) {
    EXPECT_EQ(FLKColor({1.0, 0.5, 0.0, 1.0}).hexadecimalValue(), "#ff7f00");
    for (const char* s : {"#FF7F00", "ff7f00", "#ff7f00"}) {
        FLKColor c = FLKColor::colorFromHexadecimalValue(s);
        EXPECT_DOUBLE_EQ(c.red, 1.0) << s;
        EXPECT_DOUBLE_EQ(c.green, 127.0 / 255.0) << s;
        EXPECT_DOUBLE_EQ(c.blue, 0.0) << s;
        EXPECT_DOUBLE_EQ(c.alpha, 1.0) << s;
    }
    // Alpha is dropped on the way out and comes back opaque.
    FLKColor translucent{0.2, 0.4, 0.6, 0.5};
    EXPECT_EQ(flk::hexColor(*translucent.hexadecimalValue()).alpha, 1.0);
    // Every code survives a round trip.
    for (int v = 0; v < 256; ++v) {
        FLKColor c{v / 255.0, 0, (255 - v) / 255.0, 1};
        EXPECT_EQ(flk::hexColor(*c.hexadecimalValue()), c) << v;
    }
}

TEST(FLKColor, HexParsingIgnoresHighBitsAndStopsAtNonDigits) {
    EXPECT_EQ(flk::hexColor("#ff0a0b0c"), flk::hexColor("#0a0b0c"));
    EXPECT_EQ(flk::hexColor("#0000ffzz99"), (FLKColor{0, 0, 1, 1}));
    EXPECT_EQ(flk::hexColor(""), (FLKColor{0, 0, 0, 1}));
    EXPECT_EQ(flk::hexColor("nothex"), (FLKColor{0, 0, 0, 1}));
    EXPECT_FALSE(FLKColor({NAN, 0, 0, 1}).hexadecimalValue().has_value());
}
