#version 450 core
// Every texture, render targets included, keeps its top row first in memory;
// GL's window y grows upwards, so clip-space y is mirrored here.

layout(location = 0) in vec4 position;
layout(location = 1) in vec2 texcoord;

layout(std140, binding = 1) uniform Camera {
    mat4 projection;
};

layout(location = 0) out vec2 vTexcoord;

void main() {
    vec4 clip = projection * position;
    gl_Position = vec4(clip.x, -clip.y, clip.z, clip.w);
    vTexcoord = texcoord;
}
