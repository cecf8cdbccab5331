// The sample pictures, one painter each. Nothing in them is at random: every machine paints the
// same.
#pragma once

#include "sample/Canvas.h"

namespace mv::host::sample {

// Of all scenes but the lake.
inline constexpr int kSceneWidth = 1200;
inline constexpr int kSceneHeight = 800;

Picture PaintLake();    // a low sun behind trees
Picture PaintStreet();  // a wet street at night
Picture PaintStage();   // a singer, spotlights and a crowd
Picture PaintFlower();  // a daisy against the light
Picture PaintRoad();    // an open road by day
Picture PaintWindow();  // a window of coloured glass in a dark wall
Picture PaintTunnel();  // lamps in a tunnel

}  // namespace mv::host::sample
