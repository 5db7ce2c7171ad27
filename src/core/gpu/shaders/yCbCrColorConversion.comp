#version 450 core

layout(local_size_x = 8, local_size_y = 8) in;

layout(binding = 0) uniform sampler2D lumaTexture;
layout(binding = 2) uniform sampler2D chromaTexture;  // one Cb, Cr pair a texel, half size
layout(binding = 1, rgba8) uniform writeonly image2D outputImage;

layout(std140, binding = 0) uniform Colorimetry {
    float kr;         // luma weight of red: 0.2126 (BT.709), 0.299 (BT.601)
    float kb;         // luma weight of blue
    float fullRange;  // 1: codes 0-255, 0: luma 16-235, chroma 16-240
};

vec3 rgbFromYCbCr(float y, vec2 cbcr) {
    float luma;
    vec2 chroma = cbcr - vec2(128.0 / 255.0);
    if (fullRange > 0.5) {
        luma = y;
    } else {
        luma = (y - 16.0 / 255.0) * (255.0 / 219.0);
        chroma *= 255.0 / 224.0;
    }
    float kg = 1.0 - kr - kb;
    float r = luma + 2.0 * (1.0 - kr) * chroma.y;
    float b = luma + 2.0 * (1.0 - kb) * chroma.x;
    float g = (luma - kr * r - kb * b) / kg;
    return clamp(vec3(r, g, b), 0.0, 1.0);
}

void main() {
    ivec2 position = ivec2(gl_GlobalInvocationID.xy);
    float y = texelFetch(lumaTexture, position, 0).r;
    ivec2 chromaPosition = min(position / 2, textureSize(chromaTexture, 0) - 1);
    vec2 cbcr = texelFetch(chromaTexture, chromaPosition, 0).rg;
    imageStore(outputImage, position, vec4(rgbFromYCbCr(y, cbcr), 1.0));
}
