// The 23 ways to put the blurred pixel over the picture's own.
#pragma once

#include "oracle/Color.h"

namespace oracle {

void BlendPixels(const Shape& shape, Pixel& backdrop, const Pixel& source, int mode);

}  // namespace oracle
