#include "core/model/FLKSceneBounds.h"

#include "core/model/FLKBoundingArray.h"

FLKRect FLKSceneBounds::bounds() const {
    auto scene = scene_.lock();
    if (!scene) return FLKRect::zero();
    return flk::calculateBounds(flk::boundingObjectsArray(scene->recursiveAllChildren()));
}
