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

const int kSamples = 16;
const float kMaximumZoom = 0.4;
const float kPi = 3.14159265;

// Both clips are smeared towards the centre, most at the middle of the
// transition, while the incoming one fades in.
void main() {
    ivec2 position = ivec2(gl_GlobalInvocationID.xy);
    if (storedEndPoint(position)) return;
    vec2 size = vec2(textureSize(fromTexture, 0));
    vec2 uv = (vec2(position) + 0.5) / size;
    vec2 towardsCentre = vec2(0.5) - uv;
    float strength = kMaximumZoom * sin(kPi * progress);
    float blend = smoothstep(0.0, 1.0, progress);
    vec4 sum = vec4(0.0);
    for (int i = 0; i < kSamples; ++i) {
        vec2 at = uv + towardsCentre * (strength * float(i) / float(kSamples));
        sum += mix(texture(fromTexture, at), texture(toTexture, at), blend);
    }
    imageStore(outputImage, position, sum / float(kSamples));
}
