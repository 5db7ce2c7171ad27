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

void main() {
    ivec2 position = ivec2(gl_GlobalInvocationID.xy);
    if (storedEndPoint(position)) return;
    imageStore(outputImage, position, mix(outgoing(position), incoming(position), progress));
}
