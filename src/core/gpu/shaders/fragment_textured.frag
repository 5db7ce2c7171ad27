#version 450 core

layout(location = 0) in vec2 vTexcoord;

layout(binding = 0) uniform sampler2D colorTexture;

layout(location = 0) out vec4 fragColor;

void main() {
    fragColor = texture(colorTexture, vTexcoord);
}
