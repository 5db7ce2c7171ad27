#version 450 core

layout(location = 0) in vec2 vTexcoord;

layout(binding = 0) uniform sampler2D colorTexture;
layout(binding = 1) uniform sampler2D maskTexture;

layout(location = 0) out vec4 fragColor;

void main() {
    // The mask's coverage is its alpha; colours are premultiplied, so all four scale.
    fragColor = texture(colorTexture, vTexcoord) * texture(maskTexture, vTexcoord).a;
#ifdef FLK_ANALYTIC_COVERAGE
    float coverage = quadCoverage();
    if (coverage == 0.0) discard;
    fragColor *= coverage;
#endif
}
