#include "tools/replay/Player.h"

#include <optional>

#include "platform/host/Host.h"
#include "tools/replay/Calls.h"
#include "tools/replay/Errors.h"
#include "tools/replay/Expectations.h"
#include "tools/replay/FrameReport.h"
#include "tools/replay/PlatformLines.h"
#include "tools/replay/Session.h"
#include "tools/replay/SessionReader.h"
#include "tools/replay/look/Cost.h"

namespace replay {
namespace {

void flush(std::ostream* out, const char* what) {
    if (out != nullptr && !out->flush()) throw StreamError(std::string(what) + " cannot be written");
}

void playCall(Fields& fields, std::size_t number, Session& session, const PlayOptions& options) {
    const Call call = readCall(fields, session);
    fields.finish();
    if (options.costs != nullptr) session.timeCalls(&options.costs->of(fields.text("call")));
    ResultLine result(number, fields.text("call"));
    call(session, result);
    const std::string& text = result.finish(session.takeLog());
    if (options.results != nullptr && !(*options.results << text << '\n'))
        throw StreamError("results cannot be written");
}

void playLine(const Json& line, std::size_t number, Session& session, const PlayOptions& options) {
    const Place place;
    Fields fields(line, place);
    if (fields.has("call")) return playCall(fields, number, session, options);
    const Setting apply = readSetting(fields);
    fields.finish();
    apply(session);
}

void checkExpectation(std::string_view line, Session& session) {
    const Expectation expected = readExpectation(line);
    if (FrameReport* const report = session.report()) report->compare(expected);
}

void playLines(SessionReader& reader, Session& session, const PlayOptions& options) {
    while (reader.next()) {
        try {
            if (isExpectation(reader.text())) {
                checkExpectation(reader.text(), session);
            } else {
                playLine(parseLine(reader.text()), reader.number(), session, options);
            }
        } catch (const LineError& error) {
            flush(options.results, "results");
            throw SessionError(options.name, reader.number(), error.what());
        }
        if (options.progress) options.progress(reader.number(), reader.bytes());
    }
}

}  // namespace

void play(std::istream& input, const PlayOptions& options) {
    host::reset();
    std::ostream nowhere(nullptr);
    std::optional<FrameReport> report;
    if (options.table != nullptr || !options.observers.empty()) {
        report.emplace(options.table != nullptr ? *options.table : nowhere, options.observers);
    }
    Session session(options.log, report ? &*report : nullptr);
    SessionReader reader(input, options.name);
    playLines(reader, session, options);
    if (options.endMonitors) session.endMonitors();
    if (report) report->finish();
    flush(options.results, "results");
    flush(options.table, "table");
}

}  // namespace replay
