#version 450 core

layout(local_size_x = 8, local_size_y = 8) in;

layout(binding = 0) uniform sampler2D fromTexture;  // the outgoing clip
layout(binding = 1) uniform sampler2D toTexture;    // the incoming clip
layout(binding = 2, rgba8) uniform writeonly image2D outputImage;

layout(std140, binding = 0) uniform Transition {
    float progress;
};

vec4 outgoing(ivec2 position) {
    return texelFetch(fromTexture, position, 0);
}

// The incoming clip may differ in size: it is then scaled to the output.
vec4 incoming(ivec2 position) {
    ivec2 size = textureSize(fromTexture, 0);
    if (textureSize(toTexture, 0) == size) return texelFetch(toTexture, position, 0);
    return texture(toTexture, (vec2(position) + 0.5) / vec2(size));
}

// The end points are stored as they are, so a finished transition is exactly its clip.
bool storedEndPoint(ivec2 position) {
    if (progress <= 0.0) {
        imageStore(outputImage, position, outgoing(position));
        return true;
    }
    if (progress >= 1.0) {
        imageStore(outputImage, position, incoming(position));
        return true;
    }
    return false;
}

const float kSoftness = 0.15;
const float kLinesAcross = 12.0;

// 0 on a hatch line, 1 halfway between two lines of the family.
float distanceToLine(float coordinate, float period) {
    float f = fract(coordinate / period);
    return 2.0 * min(f, 1.0 - f);
}

// The incoming clip shows first along two families of diagonal lines, which
// thicken until they cover the picture.
void main() {
    ivec2 position = ivec2(gl_GlobalInvocationID.xy);
    if (storedEndPoint(position)) return;
    ivec2 size = textureSize(fromTexture, 0);
    float period = max(float(max(size.x, size.y)) / kLinesAcross, 4.0);
    vec2 at = vec2(position) + 0.5;
    float threshold = min(distanceToLine(at.x + at.y, period), distanceToLine(at.x - at.y, period));
    float reveal = clamp((progress * (1.0 + kSoftness) - threshold) / kSoftness, 0.0, 1.0);
    imageStore(outputImage, position, mix(outgoing(position), incoming(position), reveal));
}
