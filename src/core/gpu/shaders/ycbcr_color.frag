// Not a shader of its own: placed by "#pragma include ycbcr_color" in the
// shaders that turn a frame's luma and chroma planes into RGB, so the
// conversion pass and the draws that sample planes directly agree.
layout(std140, binding = 2) uniform Colorimetry {
    float kr;         // luma weight of red: 0.2126 (BT.709), 0.299 (BT.601)
    float kb;         // luma weight of blue
    float fullRange;  // 1: codes 0-255, 0: luma 16-235, chroma 16-240
};

vec3 rgbFromYCbCr(float y, vec2 cbcr) {
    float luma;
    vec2 chroma = cbcr - vec2(128.0 / 255.0);
    if (fullRange > 0.5) {
        luma = y;
    } else {
        luma = (y - 16.0 / 255.0) * (255.0 / 219.0);
        chroma *= 255.0 / 224.0;
    }
    float kg = 1.0 - kr - kb;
    float r = luma + 2.0 * (1.0 - kr) * chroma.y;
    float b = luma + 2.0 * (1.0 - kb) * chroma.x;
    float g = (luma - kr * r - kb * b) / kg;
    return clamp(vec3(r, g, b), 0.0, 1.0);
}
