// What is made of the layout and the bytes of an OTP memory.
#include <gmock/gmock.h>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using lsc::BlockState;
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

// An OTP memory of full size; its first two bytes are a marker of 1 and one of 7.
class Blocks : public testing::Test {
protected:
    BlockState golden(std::uint32_t valid, std::uint32_t gradient, std::uint32_t flag) const {
        return lsc::decodeBlock(OTPInfo::MultiGolden{kBeyond, kBeyond, valid, gradient, flag}, mOtp.data()).state;
    }
    BlockState calibration(std::uint32_t offset, std::uint32_t valid, std::uint32_t rows, std::uint32_t entries) const {
        return lsc::decodeBlock(OTPInfo::OisCalibration{offset, 4, valid, rows, entries}, mOtp.data()).state;
    }

    static constexpr std::uint32_t kBeyond = 0xFFFFFFFF;
    static constexpr std::uint32_t kLast = lsc::kOtpMemorySize - 1;
    static constexpr std::uint32_t kNot = 1;  // offset of the marker that is not 1
    Bytes mOtp = [] {
        Bytes otp(lsc::kOtpMemorySize);
        otp.front() = otp.back() = 1;
        otp[kNot] = 7;
        return otp;
    }();
};

TEST_F(Blocks, TheMarkerComesFirstAndOnlyThenTheOtherWords) {
    EXPECT_EQ(golden(0, kLast, kLast), BlockState::kValid);
    EXPECT_EQ(golden(kLast, 0, 0), BlockState::kValid);
    EXPECT_EQ(golden(kLast + 1, 0, 0), BlockState::kOutside);
    EXPECT_EQ(golden(0, kLast + 1, 0), BlockState::kOutside);
    EXPECT_EQ(golden(0, 0, kBeyond), BlockState::kOutside);
    EXPECT_EQ(golden(kNot, kBeyond, kBeyond), BlockState::kNotValid);

    EXPECT_EQ(calibration(0, kLast, 0x8000, 1), BlockState::kValid);
    EXPECT_EQ(calibration(lsc::kOtpMemorySize, 0, 0, kBeyond), BlockState::kValid);
    EXPECT_EQ(calibration(lsc::kOtpMemorySize + 1, 0, 0, 0), BlockState::kOutside);
    EXPECT_EQ(calibration(0, kLast + 1, 0, 0), BlockState::kOutside);
    EXPECT_EQ(calibration(1, 0, 0x8000, 1), BlockState::kOutside);
    EXPECT_EQ(calibration(kBeyond, 0, 1, 1), BlockState::kOutside);
    EXPECT_EQ(calibration(kBeyond, kNot, kBeyond, kBeyond), BlockState::kNotValid);
    // Tables whose bytes come back to 0 in 32 bits, and to those of the whole memory in 64.
    EXPECT_EQ(calibration(0, 0, 0x80000000, 2), BlockState::kOutside);
    EXPECT_EQ(calibration(0, 0, 2'147'516'416, 4'294'901'761), BlockState::kOutside);
    EXPECT_EQ(calibration(0, 0, kBeyond, kBeyond), BlockState::kOutside);
}

TEST_F(Blocks, AnInvalidBlockShowsItsMarkerAndGivesNothing) {
    const lsc::GoldenBlock golden = lsc::decodeBlock(OTPInfo::MultiGolden{0, 0, kNot, 0, 0}, mOtp.data());
    EXPECT_EQ(golden.marker, 7);
    EXPECT_EQ(golden.tableIndex, 0);
    const lsc::CalibrationBlock table = lsc::decodeBlock(OTPInfo::OisCalibration{0, 4, kNot, 1, 2}, mOtp.data());
    EXPECT_EQ(table.marker, 7);
    EXPECT_EQ(table.table, nullptr);
}

}  // namespace
