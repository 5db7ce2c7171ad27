// Not a shader of its own: placed after the #version line of a fragment
// shader built for analytic coverage. A single-sampled pass then weighs each
// pixel by how many of the four standard 4x multisample positions lie inside
// the drawn quad, which is what a 4x resolve of that quad would give.
#define FLK_ANALYTIC_COVERAGE 1

// Inside where dot(edge.xy, p) + edge.z >= 0 for all four, p in window
// coordinates; edge.xy has unit length.
layout(location = 0) uniform vec4 coverageEdges[4];

const vec2 kSamplePositions[4] = vec2[4](vec2(0.375, 0.125), vec2(0.875, 0.375),
                                         vec2(0.125, 0.625), vec2(0.625, 0.875));

float quadCoverage() {
    vec2 center = gl_FragCoord.xy;
    float nearest = 1.0;
    for (int e = 0; e < 4; ++e) {
        nearest = min(nearest, dot(coverageEdges[e].xy, center) + coverageEdges[e].z);
    }
    // No sample lies farther than 0.53 from the centre: well inside, all count.
    if (nearest >= 0.6) return 1.0;
    vec2 corner = floor(center);
    float covered = 0.0;
    for (int s = 0; s < 4; ++s) {
        vec2 p = corner + kSamplePositions[s];
        bool inside = true;
        for (int e = 0; e < 4; ++e) {
            inside = inside && dot(coverageEdges[e].xy, p) + coverageEdges[e].z >= 0.0;
        }
        covered += inside ? 1.0 : 0.0;
    }
    return covered * 0.25;
}
