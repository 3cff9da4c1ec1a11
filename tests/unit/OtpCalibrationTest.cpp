// Arithmetic on the layout and the bytes of an OTP memory.
#include <gmock/gmock.h>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::ElementsAre;

TEST(Golden, IndexFollowsTheSignedGradient) {
    const auto index = [](int magnitude, int flag) {
        return lsc::multiTableIndex(
            lsc::signedGradient(static_cast<std::uint8_t>(magnitude), static_cast<std::uint8_t>(flag)).value);
    };
    for (const int magnitude : {0, 4}) {
        EXPECT_EQ(index(magnitude, 0), 1);
        EXPECT_EQ(index(magnitude, 255), 1);
    }
    for (const int magnitude : {5, 8}) {
        EXPECT_EQ(index(magnitude, 0x80), 2);
        EXPECT_EQ(index(magnitude, 0x81), 3);
    }
    for (const int magnitude : {9, 255}) {
        EXPECT_EQ(index(magnitude, 0x80), 4);
        EXPECT_EQ(index(magnitude, 0x81), 5);
    }
    EXPECT_EQ(lsc::signedGradient(5, 0x80).sign, 128);
    EXPECT_EQ(lsc::signedGradient(5, 0x81).sign, -127);
}

Bytes reordered(const Bytes& source, std::uint32_t rows, std::uint32_t entries, std::uint64_t capacity) {
    Bytes destination(source.size() + 4, 0xEE);
    lsc::reorderTable(source.data(), destination.data(), capacity, {0, 0, 0, rows, entries});
    return destination;
}

TEST(Table, ReversesAllButTheFirstEntryOfARow) {
    const Bytes source = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    EXPECT_THAT(reordered(source, 2, 4, 16),
                ElementsAre(0, 1, 6, 7, 4, 5, 2, 3, 8, 9, 14, 15, 12, 13, 10, 11, 0xEE, 0xEE, 0xEE, 0xEE));
    EXPECT_THAT(reordered({1, 2, 3, 4}, 2, 1, 4), ElementsAre(1, 2, 3, 4, 0xEE, 0xEE, 0xEE, 0xEE));
}

TEST(Table, WritesWholeEntriesAsFarAsTheCapacityReaches) {
    EXPECT_THAT(reordered({1, 2, 3, 4, 5, 6}, 1, 3, 5), ElementsAre(1, 2, 5, 6, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE));
    EXPECT_THAT(reordered({1, 2}, 1, 1, 1), testing::Each(0xEE));
    EXPECT_THAT(reordered({1, 2}, 9, 0, 100), testing::Each(0xEE));
    EXPECT_THAT(reordered({1, 2}, 0, 9, 100), testing::Each(0xEE));
}

TEST(Layout, NamesOnlyBytesOfAnOtpMemory) {
    const auto golden = [](std::uint32_t valid, std::uint32_t gradient, std::uint32_t flag) {
        return lsc::isPlausible(OTPInfo::MultiGolden{0xFFFFFFFF, 0xFFFFFFFF, valid, gradient, flag});
    };
    EXPECT_TRUE(golden(0xFFFF, 0xFFFF, 0xFFFF));
    EXPECT_FALSE(golden(0x10000, 0, 0));
    EXPECT_FALSE(golden(0, 0x10000, 0));
    EXPECT_FALSE(golden(0, 0, 0xFFFFFFFF));

    const auto ois = [](std::uint32_t offset, std::uint32_t valid, std::uint32_t rows, std::uint32_t entries) {
        return lsc::isPlausible(OTPInfo::OisCalibration{offset, 0, valid, rows, entries});
    };
    EXPECT_TRUE(ois(0, 0xFFFF, 0x8000, 1));
    EXPECT_TRUE(ois(0x10000, 0, 0, 0xFFFFFFFF));
    EXPECT_FALSE(ois(0x10001, 0, 0, 0));
    EXPECT_FALSE(ois(0, 0x10000, 0, 0));
    EXPECT_FALSE(ois(1, 0, 0x8000, 1));
    EXPECT_FALSE(ois(0xFFFFFFFF, 0, 1, 1));
    // Products that come back to 0 in 32 and in 64 bits.
    EXPECT_FALSE(ois(0, 0, 0x80000000, 2));
    EXPECT_FALSE(ois(0, 0, 0x80000000, 0x80000000));
    EXPECT_FALSE(ois(0, 0, 0xFFFFFFFF, 0xFFFFFFFF));
}

}  // namespace
