#version 450 core
// Clip-space y is mirrored for the same reason as in vertex_textured.

layout(location = 0) in vec4 position;
layout(location = 1) in vec4 color;
layout(location = 2) in vec2 texcoord;

layout(std140, binding = 1) uniform Camera {
    mat4 projection;
};

layout(location = 0) out vec4 vColor;
layout(location = 1) out vec2 vTexcoord;

void main() {
    vec4 clip = projection * position;
    gl_Position = vec4(clip.x, -clip.y, clip.z, clip.w);
    vColor = color;
    vTexcoord = texcoord;
}
