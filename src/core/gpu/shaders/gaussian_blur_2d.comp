#version 450 core

layout(local_size_x = 8, local_size_y = 8) in;

layout(binding = 0) uniform sampler2D sourceTexture;
layout(binding = 2) uniform sampler2D weightTexture;  // n x n, R32F, summing to 1
layout(binding = 1, rgba8) uniform writeonly image2D outputImage;

void main() {
    ivec2 position = ivec2(gl_GlobalInvocationID.xy);
    ivec2 last = textureSize(sourceTexture, 0) - 1;
    int side = textureSize(weightTexture, 0).x;
    int half_ = side / 2;
    vec4 sum = vec4(0.0);
    for (int j = 0; j < side; ++j) {
        for (int i = 0; i < side; ++i) {
            ivec2 at = clamp(position + ivec2(i - half_, j - half_), ivec2(0), last);
            sum += texelFetch(weightTexture, ivec2(i, j), 0).r * texelFetch(sourceTexture, at, 0);
        }
    }
    imageStore(outputImage, position, sum);
}
