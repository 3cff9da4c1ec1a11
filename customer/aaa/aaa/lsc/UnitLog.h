// The log of the customer unit: the convention of ShadingLog.h under the unit's tag, for its own file and for those
// that log on its behalf.
#pragma once

#define LSC_LOG_TAG "TarvoShadingCustomUtil"
#include "aaa/aaa/lsc/ShadingLog.h"  // IWYU pragma: export
