// From pictures as files hold them to images as the filter interface carries them, and back.
#pragma once

#include "HostImage.h"
#include "pictures/Picture.h"

namespace mv::host {

// The document that a published host would make of the picture, whose samples move into it.
HostDocument TakeDocument(Picture& picture, std::vector<std::uint8_t> mask = {});

// Puts an image of the picture's own shape back into it.
void PutImage(HostImage&& image, Picture& picture);

}  // namespace mv::host
