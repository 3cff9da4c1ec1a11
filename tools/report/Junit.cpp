#include "tools/report/Junit.h"

#include <string_view>

#include <fmt/format.h>

namespace replay {
namespace {

std::string escaped(std::string_view text) {
    std::string out;
    for (const char character : text) {
        switch (character) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                // XML has no form for other control characters.
                out += character == '\n' || static_cast<unsigned char>(character) >= ' ' ? character : '?';
        }
    }
    return out;
}

std::string testCase(const std::string& session, const std::string& name, const std::string& message,
                     const std::string& lines) {
    const std::string head = fmt::format(R"(  <testcase classname="{}" name="{}")", escaped(session), escaped(name));
    if (message.empty()) return head + "/>\n";
    return fmt::format("{}>\n    <failure message=\"{}\">{}</failure>\n  </testcase>\n", head, escaped(message),
                       escaped(lines));
}

}  // namespace

void writeJunit(std::ostream& out, const Comparison& comparison, const std::string& name) {
    std::string cases;
    std::size_t failures = 0;
    for (const auto& [exposure, group] : comparison.groups()) {
        failures += group.unmet > 0 ? 1U : 0U;
        const std::string message =
            group.unmet > 0 ? fmt::format("{} of {} expectations not met", group.unmet, group.compared) : "";
        cases +=
            testCase(name, fmt::format("sensor {} type {}", exposure.first, exposure.second), message, group.lines);
    }
    std::size_t tests = comparison.groups().size();
    if (tests == 0) {
        cases = testCase(name, "expectations", "the session has no expectations", "");
        tests = failures = 1;
    }
    out << fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<testsuite name=\"lsc_replay\" tests=\"{}\" failures=\"{}\">\n{}</testsuite>\n",
        tests, failures, cases);
}

}  // namespace replay
