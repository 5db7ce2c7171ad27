#pragma once

// One grid vertex exactly as the textured pipelines read it.
struct FLKVertex {
    float position[4];  // x, y, 0, 1
    float texCoord[2];  // u, v
    float reserved[2];  // always zero
};

static_assert(sizeof(FLKVertex) == 32, "the textured pipelines read 32-byte vertex records");
