#version 450 core

layout(local_size_x = 8, local_size_y = 8) in;

layout(binding = 0) uniform sampler2D sourceTexture;
layout(binding = 1, rgba8) uniform writeonly image2D outputImage;

const float kLevels = 31.0;  // 32 levels a channel

// Recursive Bayer index of an 8x8 cell, 0..63.
float bayer8(ivec2 p) {
    int x = p.x & 7;
    int y = p.y & 7;
    int xy = x ^ y;
    int index = ((xy & 1) << 5) | ((x & 1) << 4) | ((xy & 2) << 2) | ((x & 2) << 1) | ((xy & 4) >> 1) | ((x & 4) >> 2);
    return float(index);
}

void main() {
    ivec2 position = ivec2(gl_GlobalInvocationID.xy);
    vec4 colour = texelFetch(sourceTexture, position, 0);
    float threshold = (bayer8(position) + 0.5) / 64.0;
    vec3 dithered = min(floor(colour.rgb * kLevels + threshold), vec3(kLevels)) / kLevels;
    imageStore(outputImage, position, vec4(dithered, colour.a));
}
