// The part of SessionWriter that tells what the end of a monitor, or of the capture, leaves open.
#include "tools/import/SessionWriter.h"

namespace replay::import {
namespace {

using std::to_string;

}  // namespace

void SessionWriter::checkAsked(std::int32_t id) {
    const std::size_t missing = mSensors.at(id).evidence.unasked();
    if (missing == 0) return;
    mReport.framesLost += missing;
    hole("sensor " + to_string(id) + ": the calls for the last " + countOf(missing, "frame") +
         " handed over are missing, or were not made");
}

}  // namespace replay::import
