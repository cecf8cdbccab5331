// All of the published filter interface that the module and its hosts use.
#pragma once

#include "hostapi/Codes.h"
#include "hostapi/Descriptors.h"
#include "hostapi/FilterRecord.h"
#include "hostapi/Services.h"
#include "hostapi/Suites.h"
#include "hostapi/Timing.h"
#include "hostapi/Types.h"
