#include "tools/play/Player.h"

#include <string>

#include "platform/host/Host.h"
#include "tools/play/Calls.h"
#include "tools/play/PlatformLines.h"
#include "tools/play/PlayState.h"
#include "tools/session/Errors.h"
#include "tools/session/Expectation.h"
#include "tools/session/LineParser.h"
#include "tools/session/SessionReader.h"

namespace replay {
namespace {

[[noreturn]] void failWriting() {
    throw StreamError("results cannot be written");
}

void flush(const PlayOptions& options) {
    if (options.results != nullptr && !options.results->flush()) failWriting();
}

void playCall(ObjectReader& line, std::size_t number, PlayState& state, const PlayOptions& options) {
    const PreparedCall call = readCall(line, state);
    line.finish();
    const std::string function = line.text("call");
    state.beginCall(function);
    ResultLine result(number, function, options.results != nullptr);
    call(state, result);
    const std::string& text = result.finish(state.takeLog(), state.takeJournal());
    if (options.results != nullptr && !(*options.results << text << '\n')) failWriting();
}

void playLine(const Json& line, std::size_t number, PlayState& state, const PlayOptions& options) {
    const Place place;
    ObjectReader fields(line, place);
    if (fields.has("call")) return playCall(fields, number, state, options);
    const Setting apply = readSetting(fields, state);
    fields.finish();
    apply(state);
}

void playLines(SessionReader& reader, PlayState& state, const PlayOptions& options) {
    LineParser parser;
    while (reader.next()) {
        if (isExpectation(reader.text())) {
            state.watch().expected(readExpectation(reader.text()));
        } else {
            playLine(parser.parse(reader.text()), reader.number(), state, options);
        }
        if (options.progress) options.progress(reader.number(), reader.bytes());
    }
}

}  // namespace

void play(std::istream& input, const PlayOptions& options) {
    host::reset();
    PlayState state(options.log, options.results != nullptr, options.observers);
    if (options.calculationMode) state.subject().overrideCalculationMode(*options.calculationMode);
    SessionReader reader(input, options.name);
    try {
        playLines(reader, state, options);
    } catch (const LineError& error) {
        flush(options);
        throw SessionError(options.name, reader.number(), error.what());
    }
    if (options.endMonitors) state.endMonitors();
    flush(options);
}

}  // namespace replay
