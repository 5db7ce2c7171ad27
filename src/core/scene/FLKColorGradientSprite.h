#pragma once

#include <array>
#include <vector>

#include "core/platform/FLKColor.h"
#include "core/scene/FLKSprite.h"

// One corner vertex of a gradient as the coloured pipeline reads it.
struct FLKColoredVertex {
    float position[4];  // x, y, 0, 1
    float color[4];     // red, green, blue, alpha
    float texCoord[2];
    float reserved[2];  // always zero
};
static_assert(sizeof(FLKColoredVertex) == 48, "the coloured pipeline reads 48-byte vertex records");

// A quad filled with a gradient between four corner colours, in the order
// top left, top right, bottom left, bottom right.
class FLKColorGradientSprite : public FLKSprite {
public:
    FLKColorGradientSprite() = default;
    explicit FLKColorGradientSprite(std::vector<FLKColor> colors) : colors_(std::move(colors)) {}
    static std::shared_ptr<FLKColorGradientSprite> colorGradientSpriteWithColors(std::vector<FLKColor> colors);

    static std::shared_ptr<FLKColorGradientSprite> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKColorGradientSprite"; }

    std::vector<FLKColor> colors() const;
    void setColors(std::vector<FLKColor> colors);

    // The four corners of the shape with their colours; empty unless there
    // are a shape and exactly four colours.
    std::vector<FLKColoredVertex> coloredVertices() const;

    std::string pipelineName() const override;
    std::shared_ptr<FLKGPUBuffer> vertexBuffer() override;
    // The two triangles over the four corners.
    std::shared_ptr<FLKGPUBuffer> indexBuffer() override;

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKColorGradientSprite>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;
    // The shape reduced to one grid cell: its vertex records are the corners.
    std::shared_ptr<FLKPlane> drawnPlane() const override;

private:
    mutable std::mutex colorsMutex_;
    std::vector<FLKColor> colors_;  // guarded by colorsMutex_
};

namespace flk {
// Colours to and from their stored "#rrggbb" strings.
FLKJSON colorsToHexStrings(const std::vector<FLKColor>& colors);
std::vector<FLKColor> colorsFromHexStrings(const FLKJSON& strings);
}  // namespace flk
