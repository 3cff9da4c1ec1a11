// Property: whatever bytes a capture holds, the import ends, and the player plays what it writes. The first byte
// decides how many bytes come at once.
#include <algorithm>
#include <sstream>
#include <string>

#include "customer/aaa/aaa/lsc/TarvoShadingCustomUtil.h"
#include "fuzz/Input.h"
#include "tools/import/CaptureReader.h"
#include "tools/import/LineSplitter.h"
#include "tools/import/SessionWriter.h"
#include "tools/play/Player.h"
#include "tools/report/Comparison.h"

namespace {

std::string import(std::string_view capture, std::size_t step) {
    using namespace replay::import;
    std::string session;
    Timeline timeline;
    CaptureReader reader(timeline, std::nullopt);
    Report report;
    SessionWriter writer("capture", reader.facts(), timeline, report, [&](std::string_view text) { session += text; });
    LineSplitter lines([&](std::string_view line) {
        reader.add(line);
        writer.write(false);
    });
    for (; !capture.empty(); capture.remove_prefix(std::min(step, capture.size())))
        lines.add(capture.substr(0, step));
    lines.finish();
    reader.finish();
    writer.write(true);
    std::ostringstream shown;
    report.print(shown, "capture", reader.facts());
    return session;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    // Cast: bytes are characters here.
    const std::string_view capture(reinterpret_cast<const char*>(data), size);
    std::istringstream session(import(capture, std::size_t{data[0]} + 1));
    std::ostringstream shown;
    replay::Comparison comparison(shown);
    replay::PlayOptions options;
    options.observers = {&comparison};
    replay::play(session, options);  // an exception ends the run
    const std::lock_guard lock(TarvoShadingCustomUtil::mSingleMutex);
    delete TarvoShadingCustomUtil::mSingleInstance;
    TarvoShadingCustomUtil::mSingleInstance = nullptr;
    return 0;
}
