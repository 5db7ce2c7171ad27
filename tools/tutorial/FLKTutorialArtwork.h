#pragma once

#include <memory>
#include <string_view>

#include "FLKCanvas.h"
#include "core/gpu/FLKGPUTexture.h"

// The pictures of the tutorial animation, drawn on the CPU. Each keeps a
// transparent margin for its shadow; `*Margin` gives it in pixels.
namespace flk::tutorial {

inline constexpr int kPhoneWidth = 236;
inline constexpr int kPhoneHeight = 480;
inline constexpr int kScreenInset = 10;
inline constexpr int kShadowMargin = 24;

// The phone around its screen; the screen itself is a hole.
FLKCanvas drawPhone();
// A video file: a page with a folded corner and a play button.
FLKCanvas drawRecordingFile();
// One step of the export arrow.
FLKCanvas drawChevron();
// A white label with an icon and a format name ("MP4", "GIF").
FLKCanvas drawFormatBadge(std::string_view format, unsigned accent);

// Premultiplied RGBA texture of a canvas, as the renderer blends it.
std::shared_ptr<FLKGPUTexture> textureOf(const FLKCanvas& canvas);

}  // namespace flk::tutorial
