// What a calculation's list of samples says of the hand-overs before it: whose they are.
#pragma once

#include "tools/import/Timeline.h"

namespace replay::import {

// Adds to the votes of the hand-overs that wait in the timeline and stand before the exposure's query.
void vote(const Exposure& exposure, Timeline& timeline);

// Whether the list holds this sample, to the microsecond.
bool isListed(const std::vector<Listed>& listing, const NSCam::Utils::SensorData& sample);

}  // namespace replay::import
