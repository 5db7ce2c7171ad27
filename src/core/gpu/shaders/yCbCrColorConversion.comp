#version 450 core

layout(local_size_x = 8, local_size_y = 8) in;

layout(binding = 0) uniform sampler2D lumaTexture;
layout(binding = 2) uniform sampler2D chromaTexture;  // one Cb, Cr pair a texel, half size
layout(binding = 1, rgba8) uniform writeonly image2D outputImage;

#pragma include ycbcr_color

void main() {
    ivec2 position = ivec2(gl_GlobalInvocationID.xy);
    float y = texelFetch(lumaTexture, position, 0).r;
    ivec2 chromaPosition = min(position / 2, textureSize(chromaTexture, 0) - 1);
    vec2 cbcr = texelFetch(chromaTexture, chromaPosition, 0).rg;
    imageStore(outputImage, position, vec4(rgbFromYCbCr(y, cbcr), 1.0));
}
