#version 450 core

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec2 vTexcoord;

layout(location = 0) out vec4 fragColor;

void main() {
    // Vertex colours have straight alpha; blending expects premultiplied.
    fragColor = vec4(vColor.rgb * vColor.a, vColor.a);
#ifdef FLK_ANALYTIC_COVERAGE
    float coverage = quadCoverage();
    if (coverage == 0.0) discard;
    fragColor *= coverage;
#endif
}
