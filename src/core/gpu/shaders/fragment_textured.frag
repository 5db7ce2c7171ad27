#version 450 core

layout(location = 0) in vec2 vTexcoord;

layout(binding = 0) uniform sampler2D colorTexture;

layout(location = 0) out vec4 fragColor;

void main() {
    fragColor = texture(colorTexture, vTexcoord);
#ifdef FLK_ANALYTIC_COVERAGE
    float coverage = quadCoverage();
    if (coverage == 0.0) discard;
    fragColor *= coverage;
#endif
}
