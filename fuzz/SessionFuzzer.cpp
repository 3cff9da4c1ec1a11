// Property: no session, well-formed or not, brings down the player or the library. An input that begins with an even
// byte is turned into well-formed lines; any other, as JSON text and comments are, is played as it stands.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "fuzz/Input.h"
#include "platform/host/Host.h"
#include "platform/host/Journal.h"
#include "tools/play/Player.h"
#include "tools/report/Summary.h"
#include "tools/report/Table.h"
#include "tools/session/Errors.h"

namespace {

constexpr std::int64_t kTime = 1'000'000'000;

// Positions that sessions gave; printed at the end.
std::size_t gCompleted = 0;
const int gPrinted = std::atexit([] { std::fprintf(stderr, "calculations: %zu completed\n", gCompleted); });

std::string number(fuzz::Input& input) {
    return std::to_string(input.time(kTime));
}
std::string sensor(fuzz::Input& input) {
    return "\"sensor\":" + std::to_string(static_cast<int>(input.below(17)) - 1);
}

std::string samplesLine(fuzz::Input& input) {
    std::string data;
    std::int64_t time = input.take<std::int64_t>();
    for (unsigned int left = input.below(120); left > 0; --left) {
        time = input.time(time);
        data.append("[").append(std::to_string(time)).append(",1,2,");
        data.append(std::to_string(input.below(50))).append(",\"nan\"],");
    }
    if (!data.empty()) data.pop_back();
    return R"({"samples":5,"data":[)" + data + "]}";
}

std::string metadataLine(fuzz::Input& input) {
    // Sizes around the two exposure times, at 4592 and 4704.
    const unsigned int size = 4760 - input.below(250);
    const unsigned int offset = size - 8 - input.below(200);
    return R"({"metadata":"m","entries":[{"tag":"0xC00A0002","int32":[)" + std::to_string(input.take<std::int32_t>()) +
           R"(]},{"tag":"0xC0010017","int64":[)" + number(input) + R"(]},{"tag":"0xC00A0006","int64":[4,)" +
           number(input) + ",6," + number(input) + R"(]},{"tag":"0xC0030000","memory":{"size":)" +
           std::to_string(size) + R"(,"u64":{")" + std::to_string(offset) + R"(":)" +
           std::to_string(input.take<std::uint32_t>()) + "}}}]}";
}

// A sensor whose driver describes any layout of the rows, in a memory of a few bytes.
std::string sensorLine(fuzz::Input& input) {
    const auto word = [&input] {
        return std::to_string(input.below(8) == 0 ? input.take<std::uint32_t>() : input.below(9));
    };
    return R"({"platform":"sensor",)" + sensor(input) + R"(,"otp_layout":{"multiGolden":{"valid":)" + word() +
           R"(,"gradient":)" + word() + R"(,"flag":)" + word() + R"(},"oisCalibration":{"offset":)" + word() +
           R"(,"size":)" + word() + R"(,"valid":)" + word() + R"(,"indexNum":)" + word() + R"(,"tableNumber":)" +
           word() + R"(},"enable":1},"otp":"01090301","rolling_shutter":{"0":)" +
           std::to_string(input.take<std::uint32_t>()) + "}}";
}

std::string_view boolean(fuzz::Input& input) {
    return input.below(2) != 0 ? "true" : "false";
}

// Something that the platform fails in from here on, or no longer, or that is seen of it.
std::string failureLine(fuzz::Input& input) {
    constexpr std::array kTags = {"0xC00A0002", "0xC0010017", "0xC00A0006", "0xC0030000"};
    std::string text = R"({"platform":")";
    switch (input.below(6)) {
        case 0:
            return text.append(R"(journal","on":)").append(boolean(input)) + "}";
        case 1:
            return text.append(R"(burst","runs":)") + std::to_string(input.below(4)) + "}";
        case 2:
            return text.append(R"(customer_data","present":)").append(boolean(input)) + "}";
        case 3:
            text.append(R"(otp_provider","present":)").append(boolean(input));
            text.append(R"(,"bytes":)").append(boolean(input));
            return text + R"(,"stored":)" + std::to_string(input.below(3)) + "}";
        case 4:
            text.append(R"(metadata_access","tag":")").append(kTags[input.below(kTags.size())]);
            text.append(R"(","read":)").append(std::to_string(input.below(2)));
            return text + R"(,"write":)" + std::to_string(input.below(2)) + "}";
        default:
            const auto operation =
                static_cast<host::Operation>(input.below(static_cast<unsigned int>(host::Operation::kCount)));
            text.append(R"(operation","name":")").append(host::nameOf(operation));
            return text.append(R"(","throws":)").append(boolean(input)) + "}";
    }
}

std::string line(fuzz::Input& input) {
    switch (input.below(13)) {
        case 0:
            return R"({"platform":"log","mode":)" + std::to_string(input.below(16)) +
                   R"(,"details_level":5,"details_mask":"0x821000"})";
        case 1:
            return R"({"platform":"property","key":"vendor.tarvo.3a.lscutil.log","value":)" +
                   std::to_string(input.below(6)) + "}";
        case 2:
            return R"({"call":"RegisterAndStartSensorMonitor",)" + sensor(input) + R"(,"type":5})";
        case 3:
            return samplesLine(input);
        case 4:
            return R"({"call":"UpdateSensorData",)" + sensor(input) + R"(,"frame":)" + std::to_string(input.below(5)) +
                   R"(,"timestamp":1})";
        case 5:
            return metadataLine(input);
        case 6:
            return R"({"call":"fillLscOISCompInfo",)" + sensor(input) + R"(,"metadata":"m"})";
        case 7:
            return R"({"call":"CalcOISValue","type":)" + std::to_string(input.below(8)) +
                   R"(,"input":{"sof_timestamp":)" + std::to_string(input.take<std::uint64_t>()) +
                   R"(,"exposure_time":)" + std::to_string(input.take<std::uint64_t>()) + R"(},"frame":0,)" +
                   sensor(input) + "}";
        case 8:
            return R"({"call":"StoreRollingShutter",)" + sensor(input) + R"(,"mode":)" +
                   std::to_string(input.below(2)) + "}";
        case 9:
            return sensorLine(input);
        case 10:
            return R"({"call":"QueryOTPInfo",)" + sensor(input) + R"(,"length":)" + std::to_string(input.below(64)) +
                   "}";
        case 11:
            return failureLine(input);
        default:
            return R"({"call":"UnRegisterSensorMonitor",)" + sensor(input) + "}";
    }
}

// A camera that works: 120 samples, one a millisecond, around the time that metadata has.
std::string cameraLines() {
    std::string text =
        "{\"platform\":\"sensor\",\"sensor\":0,\"otp_layout\":{\"oisCalibration\":{\"valid\":0},\"enable\":1},"
        "\"otp\":\"01\",\"rolling_shutter\":{\"0\":3000000}}\n{\"metadata\":\"m\",\"entries\":[]}\n"
        "{\"call\":\"RegisterAndStartSensorMonitor\",\"sensor\":0,\"type\":5}\n"
        "{\"call\":\"StoreRollingShutter\",\"sensor\":0,\"mode\":0}\n{\"samples\":5,\"data\":[";
    for (int ms = -60; ms < 60; ++ms)
        text += (ms == -60 ? "[" : ",[") + std::to_string(kTime + ms * 1'000'000) + ",1,2,3,4]";
    return text + "]}\n{\"call\":\"UpdateSensorData\",\"sensor\":0,\"frame\":1,\"timestamp\":1}\n";
}

std::string structured(fuzz::Input input) {
    std::string text = cameraLines();
    while (!input.empty())
        text += line(input) + "\n";
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const bool wellFormed = size != 0 && data[0] % 2 == 0;
    // Cast: bytes are characters here.
    const std::string text =
        wellFormed ? structured({data + 1, size - 1}) : std::string(reinterpret_cast<const char*>(data), size);
    std::istringstream session(text);
    std::ostringstream results;
    std::ostringstream shown;
    replay::Table table(shown);
    replay::Comparison comparison(shown);
    replay::Statistics statistics;
    replay::PlayOptions options;
    options.results = &results;
    options.observers = {&table, &comparison, &statistics};
    try {
        replay::play(session, options);
        replay::printSummary(shown, statistics, comparison);
    } catch (const replay::SessionError&) {
        fuzz::require(!wellFormed);
    }
    for (const auto& [id, sensor] : statistics.sensors())
        gCompleted += sensor.matchUs.count();
    const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
    delete TarvoShadingCustomUtil::mSingleInstance;
    TarvoShadingCustomUtil::mSingleInstance = nullptr;
    return 0;
}
