#include "tools/replay/import/Capture.h"

#include <utility>

namespace replay::import {

void Capture::add(std::size_t line, CallData data) {
    Call& call = calls.emplace_back();
    call.line = line;
    call.data = std::move(data);
}

void Capture::addHole(std::size_t line, std::string text) {
    holes.push_back({line, std::move(text)});
}

}  // namespace replay::import
