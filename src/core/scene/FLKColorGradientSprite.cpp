#include "core/scene/FLKColorGradientSprite.h"

#include <cstring>

#include "core/gpu/FLKPipelineNames.h"

FLK_REGISTER_SERIALIZABLE(FLKColorGradientSprite);

FLKJSON flk::colorsToHexStrings(const std::vector<FLKColor>& colors) {
    FLKJSON strings = FLKJSON::array();
    for (const auto& color : colors) {
        if (auto hex = color.hexadecimalValue()) strings.push_back(*hex);
    }
    return strings;
}

std::vector<FLKColor> flk::colorsFromHexStrings(const FLKJSON& strings) {
    std::vector<FLKColor> colors;
    if (!strings.is_array()) return colors;
    for (const auto& hex : strings) {
        if (hex.is_string()) colors.push_back(flk::hexColor(hex.get<std::string>()));
    }
    return colors;
}

std::shared_ptr<FLKColorGradientSprite> FLKColorGradientSprite::colorGradientSpriteWithColors(
    std::vector<FLKColor> colors) {
    return std::make_shared<FLKColorGradientSprite>(std::move(colors));
}

std::shared_ptr<FLKColorGradientSprite> FLKColorGradientSprite::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKColorGradientSprite>(dictionary);
}

void FLKColorGradientSprite::initWithDictionary(const FLKJSON& dictionary) {
    FLKSprite::initWithDictionary(dictionary);
    auto colors = dictionary.find("colors");
    if (colors != dictionary.end()) setColors(flk::colorsFromHexStrings(*colors));
}

FLKJSON FLKColorGradientSprite::serialized() const {
    auto dictionary = FLKSprite::serialized();
    dictionary["colors"] = flk::colorsToHexStrings(colors());
    return dictionary;
}

std::vector<FLKColor> FLKColorGradientSprite::colors() const {
    std::lock_guard lock(colorsMutex_);
    return colors_;
}

void FLKColorGradientSprite::setColors(std::vector<FLKColor> colors) {
    {
        std::lock_guard lock(colorsMutex_);
        colors_ = std::move(colors);
    }
    setCachedVertexBuffer(nullptr);
}

std::shared_ptr<FLKPlane> FLKColorGradientSprite::drawnPlane() const {
    auto shape = plane();
    if (!shape) return nullptr;
    return std::make_shared<FLKPlane>(shape->topLeft(), shape->topRight(), shape->bottomLeft(), shape->bottomRight(), 1);
}

std::vector<FLKColoredVertex> FLKColorGradientSprite::coloredVertices() const {
    static constexpr float kTexCoords[4][2] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    auto corners = drawnPlane();
    auto colors = this->colors();
    if (!corners || colors.size() != 4 || corners->verticesLength() < 4 * sizeof(FLKVertex)) return {};
    std::vector<FLKColoredVertex> vertices(4);
    for (size_t i = 0; i < 4; ++i) {
        auto& vertex = vertices[i];
        std::memcpy(vertex.position, corners->vertices()[i].position, sizeof vertex.position);
        const FLKColor& color = colors[i];
        vertex.color[0] = static_cast<float>(color.red);
        vertex.color[1] = static_cast<float>(color.green);
        vertex.color[2] = static_cast<float>(color.blue);
        vertex.color[3] = static_cast<float>(color.alpha);
        vertex.texCoord[0] = kTexCoords[i][0];
        vertex.texCoord[1] = kTexCoords[i][1];
        vertex.reserved[0] = vertex.reserved[1] = 0;
    }
    return vertices;
}

std::string FLKColorGradientSprite::pipelineName() const { return FLKPipelineNameVertexFragmentColored; }

std::shared_ptr<FLKGPUBuffer> FLKColorGradientSprite::vertexBuffer() {
    if (auto cached = cachedVertexBuffer()) return cached;
    auto vertices = coloredVertices();
    if (vertices.empty()) return nullptr;  // no shape, or not four colours: nothing to draw
    auto buffer = std::make_shared<FLKGPUBuffer>(vertices.data(), vertices.size() * sizeof(FLKColoredVertex));
    setCachedVertexBuffer(buffer);
    return buffer;
}

std::shared_ptr<FLKGPUBuffer> FLKColorGradientSprite::indexBuffer() { return FLKSprite::indexBuffer(); }

FLKObject::Ptr FLKColorGradientSprite::copy() const {
    auto sprite = std::static_pointer_cast<FLKColorGradientSprite>(FLKSprite::copy());
    sprite->setColors(colors());
    return sprite;
}

bool FLKColorGradientSprite::isEqual(const FLKObject& other) const {
    return FLKSprite::isEqual(other) && colors() == static_cast<const FLKColorGradientSprite&>(other).colors();
}
