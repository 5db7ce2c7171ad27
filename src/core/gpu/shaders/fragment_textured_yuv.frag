#version 450 core

layout(location = 0) in vec2 vTexcoord;

layout(binding = 0) uniform sampler2D lumaTexture;
layout(binding = 2) uniform sampler2D chromaTexture;

layout(location = 0) out vec4 fragColor;

#pragma include ycbcr_color

void main() {
    float y = texture(lumaTexture, vTexcoord).r;
    vec2 cbcr = texture(chromaTexture, vTexcoord).rg;
    fragColor = vec4(rgbFromYCbCr(y, cbcr), 1.0);
#ifdef FLK_ANALYTIC_COVERAGE
    float coverage = quadCoverage();
    if (coverage == 0.0) discard;
    fragColor *= coverage;
#endif
}
