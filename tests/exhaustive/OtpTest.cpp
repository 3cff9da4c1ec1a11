// Every gradient, and every small table of the OIS calibration, against plain code.
#include <gmock/gmock.h>

#include <numeric>

#include "customer/aaa/aaa/lsc/OtpCalibration.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

int plainIndex(int gradient) {
    if (gradient >= 9) return 4;
    if (gradient >= 5) return 2;
    if (gradient >= -4) return 1;
    return gradient >= -8 ? 3 : 5;
}

TEST(Every, GradientSelectsItsTable) {
    for (int magnitude = 0; magnitude < 256; ++magnitude) {
        for (int flag = 0; flag < 256; ++flag) {
            const auto gradient =
                lsc::signedGradient(static_cast<std::uint8_t>(magnitude), static_cast<std::uint8_t>(flag));
            const int expected = flag > 128 ? -magnitude : magnitude;
            ASSERT_EQ(gradient.value, expected) << flag;
            ASSERT_EQ(gradient.sign, flag > 128 ? flag - 256 : flag);
            ASSERT_EQ(lsc::multiTableIndex(gradient.value), plainIndex(expected)) << expected;
        }
    }
}

// Row by row; bytes that no whole entry fills stay as they are.
Bytes plainReordered(const Bytes& source, Bytes destination, std::size_t rows, std::size_t entries,
                     std::size_t capacity) {
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t k = 0; k < entries; ++k) {
            const std::size_t to = 2 * (row * entries + k);
            const std::size_t from = 2 * (row * entries + (k == 0 ? 0 : entries - k));
            if (to + 2 > capacity) return destination;
            destination[to] = source[from];
            destination[to + 1] = source[from + 1];
        }
    }
    return destination;
}

TEST(Every, SmallTableIsReorderedAndCopied) {
    for (std::uint32_t rows = 0; rows <= 5; ++rows) {
        for (std::uint32_t entries = 0; entries <= 7; ++entries) {
            const std::uint32_t bytes = 2 * rows * entries;
            Bytes otp(lsc::kOtpMemorySize);
            otp[0] = 1;
            std::iota(otp.begin() + 1, otp.begin() + 1 + bytes, std::uint8_t{1});
            const Bytes source(otp.begin() + 1, otp.begin() + 1 + bytes);
            for (std::uint32_t size = 0; size <= bytes + 3; ++size) {
                const OTPInfo::OisCalibration layout = {1, size, 0, rows, entries};
                const Bytes blank(size + 4, 0xEE);
                Bytes reordered = blank;
                lsc::reorderTable(source.data(), reordered.data(), size, layout);
                ASSERT_EQ(reordered, plainReordered(source, blank, rows, entries, size))
                    << rows << " x " << entries << ", " << size;

                // What callers get: as many bytes as the layout says, zeros where no entry stands.
                const auto block = lsc::decodeBlock(layout, otp.data());
                Bytes answer = blank;
                ASSERT_EQ(lsc::copyTable(block.table.get(), layout, answer.data(), size + 1), size);
                const Bytes zeros(size, 0);
                Bytes expected = plainReordered(source, zeros, rows, entries, size);
                expected.resize(size + 4, 0xEE);
                ASSERT_EQ(answer, expected) << rows << " x " << entries << ", " << size;
            }
        }
    }
}

}  // namespace
