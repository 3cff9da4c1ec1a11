// What sessions cannot show of the colour-sensor helpers and the hooks: which bytes are touched, and at which
// addresses.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <future>
#include <latch>
#include <numeric>
#include <set>

#include "aaa/aaa/lsc/ShadingCustom.h"
#include "aaa/aaa/lsc/ShadingCustomUtil.h"
#include "tests/support/Faults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Scene.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kSourceSize = 72;

// Where ConvertColorSensorInfo writes for a type: one value, a run of 15, one value.
struct Block {
    CustShadingType type;
    std::size_t first;
    std::size_t run;
    std::size_t end;
};
constexpr Block kBlocks[] = {{CustShadingType::kSingleExposure, 308, 324, 388},
                             {CustShadingType::kFrame, 592, 608, 672}};
constexpr std::size_t kRunSize = 60;
constexpr std::size_t kLast = 68;  // byte of the source's last value
constexpr std::size_t kValue = 4;  // bytes

// One page between two that nobody may touch.
class GuardedPage {
public:
    GuardedPage() : mSize(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) {
        void* const memory = ::mmap(nullptr, 3 * mSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::bad_alloc();
        mBegin = static_cast<unsigned char*>(memory) + mSize;
        ::mprotect(mBegin, mSize, PROT_READ | PROT_WRITE);
    }
    ~GuardedPage() { ::munmap(mBegin - mSize, 3 * mSize); }
    GuardedPage(const GuardedPage&) = delete;
    GuardedPage& operator=(const GuardedPage&) = delete;

    unsigned char* begin() const { return mBegin; }
    unsigned char* end() const { return mBegin + mSize; }
    void forbidWriting() { ::mprotect(mBegin, mSize, PROT_READ); }

private:
    const std::size_t mSize;
    unsigned char* mBegin = nullptr;
};

std::array<unsigned char, kSourceSize> sourceBytes() {
    std::array<unsigned char, kSourceSize> bytes;
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

// What a destination of `size` bytes that was all 0xEE holds afterwards.
std::vector<unsigned char> converted(const Block& block, const unsigned char* source, std::size_t size) {
    std::vector<unsigned char> bytes(size, 0xEE);
    std::memcpy(&bytes[block.first], source + kLast, kValue);
    std::memcpy(&bytes[block.run], source, kRunSize);
    std::memcpy(&bytes[block.run + kRunSize], source + kLast, kValue);
    return bytes;
}

void convert(CustShadingType type, const unsigned char* source, unsigned char* destination) {
    CustomShadingUtil::ConvertColorSensorInfo(type, reinterpret_cast<long>(source),
                                              reinterpret_cast<long>(destination));
}

class Colour : public test::HostTest {};

TEST_F(Colour, ConversionStaysWithinTheNamedBytes) {
    const auto bytes = sourceBytes();
    GuardedPage source;
    for (unsigned char* const place : {source.begin(), source.end() - kSourceSize})
        std::memcpy(place, bytes.data(), bytes.size());
    source.forbidWriting();
    const GuardedPage destination;
    for (const Block& block : kBlocks) {
        const auto expected = converted(block, bytes.data(), block.end);
        for (const unsigned char* const from : {source.begin(), source.end() - kSourceSize}) {
            // The named bytes at the page's begin, those before them out of reach; then at its end.
            for (unsigned char* const first : {destination.begin(), destination.end() - (block.end - block.first)}) {
                std::fill(destination.begin(), destination.end(), 0xEE);
                convert(block.type, from, first - block.first);
                EXPECT_TRUE(std::equal(first, first + (block.end - block.first), &expected[block.first]));
                std::fill(first, first + (block.end - block.first), 0xEE);
                EXPECT_EQ(std::count(destination.begin(), destination.end(), 0xEE),
                          destination.end() - destination.begin());
            }
        }
    }
}

TEST_F(Colour, ConversionNeedsNoAlignment) {
    const auto bytes = sourceBytes();
    for (const Block& block : kBlocks) {
        for (std::size_t shift = 0; shift < 64; ++shift) {
            alignas(8) unsigned char source[kSourceSize + 8] = {};
            alignas(8) unsigned char destination[700];
            unsigned char* const from = source + shift % 8;
            std::memcpy(from, bytes.data(), bytes.size());
            std::fill(std::begin(destination), std::end(destination), 0xEE);
            convert(block.type, from, destination + shift / 8);
            const auto expected = converted(block, bytes.data(), block.end);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), destination + shift / 8)) << shift;
        }
    }
}

// One record as source and destination: what is written are the values from before the call.
TEST_F(Colour, ConversionMayOverlapItsSource) {
    for (const Block& block : kBlocks) {
        for (std::size_t offset = block.first - kSourceSize; offset <= block.end; ++offset) {
            std::vector<unsigned char> record(block.end + kSourceSize);
            std::iota(record.begin(), record.end(), static_cast<unsigned char>(offset));
            const std::vector<unsigned char> before = record;
            convert(block.type, &record[offset], record.data());
            auto expected = before;
            std::memcpy(&expected[block.first], &before[offset + kLast], kValue);
            std::memcpy(&expected[block.run], &before[offset], kRunSize);
            std::memcpy(&expected[block.run + kRunSize], &before[offset + kLast], kValue);
            EXPECT_EQ(record, expected) << offset;
        }
    }
}

TEST_F(Colour, OtherTypesAreRefusedWithOneErrorEach) {
    host::setLogSwitches(1, 0, 0);
    test::LogCapture log;
    const GuardedPage page;
    const long nowhere = reinterpret_cast<long>(page.end());
    float values[18] = {1};
    for (const std::uint32_t type : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 0x80000000U, 0xFFFFFFFFU}) {
        const auto which = static_cast<CustShadingType>(type);
        const std::string text = "] Unknown type " + std::to_string(static_cast<std::int32_t>(type)) + " (";
        if (type >= 2) CustomShadingUtil::ConvertColorSensorInfo(which, nowhere, nowhere);
        if (type != 2) CustomShadingUtil::QueryMetaInfo(which, nowhere, values);
        if (type != 2) CustomShadingUtil::UpdateMetaInfo(which, nowhere, values);
        const auto lines = log.take();
        EXPECT_EQ(lines.size(), (type >= 2 ? 1U : 0U) + (type != 2 ? 2U : 0U)) << type;
        EXPECT_THAT(lines, Each(testing::AllOf(testing::StartsWith("android 6 CustomShadingUtil: ["),
                                               testing::HasSubstr(text))));
    }
}

TEST_F(Colour, OnlyEighteenFloatsReachTheCallersArray) {
    host::setLogSwitches(1, 0, 0);
    test::LogCapture log;
    for (const std::size_t count : {0U, 1U, 17U, 18U, 19U, 100'000U}) {
        NSCam::IMetadata metadata;
        host::setMetadataEntry(metadata, 0x90040159, std::vector<float>(count, 2.5F));
        float values[18] = {};
        CustomShadingUtil::QueryMetaInfo(CustShadingType::kColorSensorInfo, reinterpret_cast<long>(&metadata), values);
        EXPECT_THAT(values, Each(count == 18 ? 2.5F : 0.0F)) << count;
        EXPECT_EQ(log.take().size(), count == 18 ? 0U : 1U) << count;
    }
    NSCam::IMetadata doubles;
    host::setMetadataEntry(doubles, 0x90040159, std::vector<double>(18, 2.5));
    float values[18] = {};
    CustomShadingUtil::QueryMetaInfo(CustShadingType::kColorSensorInfo, reinterpret_cast<long>(&doubles), values);
    EXPECT_THAT(values, Each(0.0F));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(Hooks, TheDebugRecordIsFilledWhateverItHeld) {
    SHADING_DEBUG_INFO_S record;
    std::memset(&record, 0xA5, sizeof record);
    CustomShadingFlow(0).setCustomShadingDebugInfo(record);
    unsigned char bytes[sizeof record];
    std::memcpy(bytes, &record, sizeof record);
    EXPECT_THAT(std::vector(bytes, bytes + 8), ElementsAre(0, 0, 0, 6, 9, 3, 0, 0));
    EXPECT_THAT(std::vector(bytes + 4208, bytes + 4216), ElementsAre(0x0E, 2, 0, 6, 9, 3, 0, 0));
    EXPECT_THAT(std::vector(bytes + 4216, bytes + sizeof bytes), Each(0));
    for (std::uint32_t i = 0; i <= SHAD_TAG_END; ++i) {
        EXPECT_EQ(record.pairs[i].tag, 0x06000000 + i);
        EXPECT_EQ(record.pairs[i].value, 777U);
    }
}

TEST(Hooks, RacingFirstCallsMakeOneInstance) {
    constexpr int kThreads = 8;
    struct Answer {
        CustomShadingFlow* instance;
        std::size_t allocations;
    };
    std::latch start(kThreads);
    std::vector<std::future<Answer>> answers;
    for (int i = 0; i < kThreads; ++i) {
        answers.push_back(std::async(std::launch::async, [&start] {
            start.arrive_and_wait();
            const std::size_t before = test::allocationCount();
            CustomShadingFlow* const instance = CustomShadingFlow::getInstance(3);
            return Answer{instance, test::allocationCount() - before};
        }));
    }
    std::size_t allocations = 0;
    for (auto& answer : answers) {
        const Answer made = answer.get();
        EXPECT_EQ(made.instance, CustomShadingFlow::getInstance(3));
        allocations += made.allocations;
    }
    EXPECT_EQ(allocations, 1U);
}

TEST(Hooks, EachIndexHasOneInstanceOfItsOwn) {
    std::set<CustomShadingFlow*> instances;
    for (int index = 0; index < 20; ++index) {
        CustomShadingFlow* const instance = CustomShadingFlow::getInstance(index);
        EXPECT_NE(instance, nullptr);
        EXPECT_EQ(CustomShadingFlow::getInstance(index), instance);
        instances.insert(instance);
    }
    EXPECT_EQ(instances.size(), 20U);
}

}  // namespace
