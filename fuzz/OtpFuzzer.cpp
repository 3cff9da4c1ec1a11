// Property: whatever layout a driver claims and whatever the OTP memory holds, the read touches nothing but what the
// layout names within the limit, and gives what the plainest code gives. The memory ends with the last byte that is to
// be read.
#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "fuzz/Input.h"
#include "platform/host/Host.h"

namespace {

using fuzz::require;
using Bytes = std::vector<std::uint8_t>;
using Layout = std::array<std::uint32_t, 11>;

constexpr std::size_t kMemory = 64 * 1024;
constexpr std::size_t kLength = 64;  // integers asked for

// One of a few memories: noise, and many valid markers.
constexpr unsigned int kMemories = 16;
const Bytes& memoryOf(unsigned int number) {
    static std::array<Bytes, kMemories> memories;
    Bytes& memory = memories[number];
    if (!memory.empty()) return memory;
    std::mt19937 random(number);
    memory.resize(kMemory);
    for (std::uint8_t& byte : memory)
        byte = random() % 4 == 0 ? 1 : static_cast<std::uint8_t>(random());
    return memory;
}

// A word near the begin or the end of the memory, near a power of two, or anything.
std::uint32_t word(fuzz::Input& input) {
    switch (input.below(4)) {
        case 0:
            return input.below(64);
        case 1:
            return static_cast<std::uint32_t>(kMemory) - input.below(64);
        case 2:
            return (1U << input.below(32)) - input.below(3);
        default:
            return input.take<std::uint32_t>();
    }
}

// How many bytes of the memory a reader of the layout has to read.
std::size_t bytesRead(const Layout& layout, const Bytes& memory) {
    std::uint64_t end = 0;
    const auto reads = [&end](std::uint64_t offset, std::uint64_t count = 1) {
        if (offset + count <= kMemory) end = std::max(end, offset + count);
    };
    const auto isValid = [&](std::uint32_t marker) { return reads(marker), marker < kMemory && memory[marker] == 1; };
    if (isValid(layout[2]) && std::max(layout[3], layout[4]) < kMemory) reads(layout[3]), reads(layout[4]);
    const std::uint64_t entries = std::uint64_t{layout[8]} * layout[9];
    if (isValid(layout[7]) && entries != 0 && entries <= kMemory) reads(layout[5], 2 * entries);
    return end;
}

std::int32_t expectedIndex(const Layout& layout, const Bytes& memory) {
    const auto [valid, gradient, flag] = std::array{layout[2], layout[3], layout[4]};
    if (std::max({valid, gradient, flag}) >= kMemory || memory[valid] != 1) return 0;
    const int g = memory[flag] > 128 ? -memory[gradient] : memory[gradient];
    if (g >= 9) return 4;
    if (g <= -9) return 5;
    if (g >= 5) return 2;
    return g <= -5 ? 3 : 1;
}

// The bytes that a caller gets of the table; none when the block is not valid.
Bytes expectedTable(const Layout& layout, const Bytes& memory) {
    const std::uint64_t offset = layout[5];
    const std::uint64_t entries = std::uint64_t{layout[8]} * layout[9];
    if (entries > kMemory || offset + 2 * entries > kMemory) return {};
    if (layout[7] >= kMemory || memory[layout[7]] != 1) return {};
    Bytes table(std::min<std::size_t>(layout[6], kLength * sizeof(int)));
    for (std::size_t entry = 0; entry < entries; ++entry) {
        const std::size_t column = entry % layout[9];
        const std::size_t from = entry - column + (column == 0 ? 0 : layout[9] - column);
        if (2 * entry + 2 > layout[6]) break;
        for (std::size_t byte = 2 * entry; byte < std::min(2 * entry + 2, table.size()); ++byte) {
            table[byte] = memory[offset + 2 * from + byte % 2];
        }
    }
    return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint8_t kUntouched = 0xA5;
    fuzz::Input input(data, size);
    const Bytes& memory = memoryOf(input.below(kMemories));
    Layout layout;
    for (std::uint32_t& value : layout)
        value = word(input);

    host::reset();
    host::Sensor sensor;
    sensor.otpLayout = layout;
    sensor.otp = Bytes(memory.data(), memory.data() + bytesRead(layout, memory));
    host::setSensor(3, sensor);
    TarvoShadingCustomUtil util;
    int index = -1;
    util.GetMultiTableIndex(index, 3);
    std::array<int, kLength> array;
    std::memset(array.data(), kUntouched, sizeof array);
    util.QueryOTPInfo(array.data(), array.size(), 3);

    const bool enabled = layout[10] != 0;
    require(index == (enabled ? expectedIndex(layout, memory) : 0));
    Bytes expected = enabled ? expectedTable(layout, memory) : Bytes();
    expected.resize(sizeof array, kUntouched);
    require(std::memcmp(array.data(), expected.data(), sizeof array) == 0);
    return 0;
}
