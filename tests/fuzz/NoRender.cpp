// Stands in for the switch over the pixel shapes where a target renders nothing: without it the
// eighteen renders, most of the module's code, stay out of the program.
#include <cstdlib>

#include "frame/pfFilterRadialBlur.h"

namespace mv {

std::int32_t pfFilterRadialBlur::SelectRenderTemplate(hostapi::FilterRecord*) {
    std::abort();
}

}  // namespace mv
