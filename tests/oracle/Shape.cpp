#include "oracle/Shape.h"

namespace oracle {

std::optional<Shape> ChooseShape(const ImageFacts& facts) {
    int colors = facts.layerPlanes;
    bool alpha = facts.transparencyMask != 0;
    if (alpha) {
        alpha = facts.planes >= colors + 1;
        if (colors == 0) {
            colors = facts.planes;
        }
    }
    if (!alpha && colors == 0) {
        colors = facts.nonLayerPlanes != 0 ? facts.nonLayerPlanes : facts.planes;
    }

    switch (facts.imageMode) {
        case 1:
        case 10:
        case 17:
            colors = colors >= 2 ? 1 : colors;
            break;
        case 3:
        case 7:
        case 11:
        case 14:
        case 16:
            colors = colors > 3 ? 3 : colors;
            break;
        default:
            return std::nullopt;
    }
    if (colors < 1 || colors > 3) {
        return std::nullopt;
    }

    Shape shape;
    shape.colors = colors;
    shape.alpha = alpha;
    switch (facts.depth) {
        case 0:
        case 8:
            shape.sample = Sample::Byte;
            break;
        case 16:
            shape.sample = Sample::Word;
            break;
        case 32:
            shape.sample = Sample::Float;
            break;
        default:
            return std::nullopt;
    }
    // The host promises fewer samples than the layout would read.
    if (facts.planes < shape.Channels()) {
        return std::nullopt;
    }
    return shape;
}

}  // namespace oracle
