// Runs a fuzz target without an engine: over the files and folders named on the command line, and over `--random N`
// inputs made from a seed that is printed.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMaxRandomBytes = 512;

void runFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::size_t runAll(const fs::path& path) {
    if (!fs::is_directory(path)) return runFile(path), 1;
    std::size_t count = 0;
    for (const auto& file : fs::directory_iterator(path))
        count += file.is_regular_file() ? runAll(file.path()) : 0;
    return count;
}

std::size_t runRandom(std::size_t count) {
    const auto seed = std::random_device{}();
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.resize(random() % kMaxRandomBytes);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t runs = 0;
    for (int i = 1; i < argc; ++i) {
        const bool random = std::string(argv[i]) == "--random" && i + 1 < argc;
        runs += random ? runRandom(std::strtoul(argv[++i], nullptr, 10)) : runAll(argv[i]);
    }
    std::printf("%zu inputs\n", runs);
    return runs != 0 ? 0 : 1;
}
