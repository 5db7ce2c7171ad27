#version 450 core

layout(location = 0) in vec2 vTexcoord;

layout(binding = 0) uniform sampler2D lumaTexture;
layout(binding = 2) uniform sampler2D chromaTexture;

layout(location = 0) out vec4 fragColor;

// BT.709, limited range: what the recordings and decoded frames carry.
vec3 rgbFromYCbCr(float y, vec2 cbcr) {
    float luma = (y - 16.0 / 255.0) * (255.0 / 219.0);
    vec2 c = (cbcr - vec2(128.0 / 255.0)) * (255.0 / 224.0);
    return clamp(vec3(luma + 1.5748 * c.y,
                      luma - 0.187324 * c.x - 0.468124 * c.y,
                      luma + 1.8556 * c.x), 0.0, 1.0);
}

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
