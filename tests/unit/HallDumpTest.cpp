// The hall dump file, byte for byte.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <tuple>

#include "customer/aaa/aaa/lsc/OisHallDump.h"
#include "tests/support/ScratchDirectory.h"

namespace {

namespace fs = std::filesystem;

constexpr char kPath[] = "data/vendor/camera_dump/capture_camera_-3_frame_-1_-5_oishall.txt";

class HallDump : public testing::Test {
protected:
    HallDump() {
        mSamples.entries[1] = {1.5F, -2.25F, 0};
        mSamples.entries[2] = {1e10F, 0.0000004F, 0};
        mSpan.start = 1;
        mSpan.end = 2;
    }

    bool write(const std::vector<double>& x, const std::vector<double>& y) {
        return lsc::writeOisHallDump(-3, 0xFFFFFFFF, {0, 20'000'000, 20'000, std::uint64_t(-5), 9'000}, mSamples, mSpan,
                                     x, y);
    }

    static std::string content() {
        std::ifstream file(kPath);
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    }

    const test::ScratchDirectory mScratch;
    lsc::ActiveSamples mSamples;
    lsc::SpanSearch mSpan;
};

constexpr char kHead[] =
    "frame: -1\n"
    "\t\"OIS hall X\": 1.500000\n\t\"OIS hall Y\": -2.250000\n"
    "\t\"OIS hall X\": 10000000000.000000\n\t\"OIS hall Y\": 0.000000\n";
constexpr char kTail[] = "\t\"exposure_time\": 20000\n\t\"shutter_time\": 9000\n";

TEST_F(HallDump, HoldsSpanResultAndTimes) {
    fs::create_directories(test::kDumpDirectory);
    const std::string result =
        "\t\"match ois hall0 X\": 4.000000\n\t\"match ois hall0 y\": 5.000000\n"
        "\t\"match ois hall1 X\": 0.000000\n\t\"match ois hall1 y\": 0.000000\n";
    const std::tuple<std::vector<double>, std::vector<double>, std::string> cases[] = {
        {{4, 0}, {5, 0, 7}, result}, {{4, 0, 7}, {5, 0}, result}, {{4, 0}, {5}, ""}, {{4}, {5, 0}, ""}};
    for (const auto& [x, y, shown] : cases) {
        EXPECT_TRUE(write(x, y));
        EXPECT_EQ(content(), kHead + shown + kTail);
    }
}

TEST_F(HallDump, NumbersOfTheGreatestLengthFitItsName) {
    fs::create_directories(test::kDumpDirectory);
    constexpr std::uint64_t kFarStart = std::uint64_t{1} << 63;
    lsc::writeOisHallDump(INT32_MIN, 0x80000000, {0, 0, 0, kFarStart, 0}, mSamples, mSpan, {}, {});
    EXPECT_TRUE(fs::exists(std::string(test::kDumpDirectory) +
                           "/capture_camera_-2147483648_frame_-2147483648_-9223372036854775808_oishall.txt"));
}

TEST_F(HallDump, IsSkippedWithoutItsDirectory) {
    EXPECT_TRUE(write({4, 0}, {5, 0}));
    EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(HallDump, WritesNothingButAFile) {
    fs::create_directories(test::kDumpDirectory);
    std::ofstream("elsewhere") << "kept";
    fs::create_symlink(fs::absolute("elsewhere"), kPath);
    write({4, 0}, {5, 0});
    EXPECT_EQ(content(), "kept");
    fs::remove(kPath);
    ASSERT_EQ(mkfifo(kPath, 0600), 0);
    EXPECT_TRUE(write({4, 0}, {5, 0}));  // and does not wait for a reader
    EXPECT_TRUE(fs::is_fifo(kPath));
    fs::remove(kPath);
    std::ofstream(kPath) << std::string(10'000, 'x');
    write({4}, {5, 0});
    EXPECT_EQ(content(), std::string(kHead) + kTail);
}

TEST_F(HallDump, IsForWhomTheUmaskLetsReadAndUsesAnyDescriptor) {
    fs::create_directories(test::kDumpDirectory);
    const mode_t mask = umask(0);
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    EXPECT_TRUE(write({4}, {5, 0}));
    dup2(input, STDIN_FILENO);
    close(input);
    umask(mask);
    EXPECT_EQ(content(), std::string(kHead) + kTail);
    EXPECT_EQ(fs::status(kPath).permissions(), fs::perms{0666});
}

TEST_F(HallDump, TellsThatTheDiskIsFull) {
    fs::create_directories(test::kDumpDirectory);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {100, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(write({4, 0}, {5, 0}));
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(content().size(), 100U);
}

}  // namespace
