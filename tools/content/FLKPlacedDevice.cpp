#include "FLKPlacedDevice.h"

#include <cmath>
#include <numbers>

namespace {

constexpr int kShadowMargin = 90;

FLKPaint accentOf(const FLKTemplateDesign& design) {
    return FLKPaint::hex(design.gradient[0]).mixed(FLKPaint::hex(design.gradient[3]), 0.4f);
}

std::array<FLKPoint, 4> cornersOf(const FLKRect& r, FLKPoint offset) {
    return {FLKPoint{r.origin.x + offset.x, r.origin.y + offset.y}, FLKPoint{r.maxX() + offset.x, r.origin.y + offset.y},
            FLKPoint{r.origin.x + offset.x, r.maxY() + offset.y}, FLKPoint{r.maxX() + offset.x, r.maxY() + offset.y}};
}

FLKPlacedDevice frameless(const FLKTemplateDesign& design) {
    FLKRect frame(0, 0, design.canvas.width, design.canvas.height);
    FLKCanvas preview(static_cast<int>(frame.size.width), static_cast<int>(frame.size.height));
    FLKRoundedRect screen{frame, 0};
    flkDrawScreenPlaceholder(preview, screen, accentOf(design));
    return {FLKCanvas(0, 0), std::move(preview), {0, 0}, cornersOf(frame, {0, 0}), screen};
}

FLKPlacedDevice upright(const FLKTemplateDesign& design) {
    auto device = FLKDeviceArtwork::draw(design.device, 1, kShadowMargin);
    if (design.pose == FLKDevicePose::turnedLeft) device = device.turnedLeft();
    device.addShadow(1);
    FLKCanvas preview(device.artwork.width(), device.artwork.height());
    flkDrawScreenPlaceholder(preview, device.screen, accentOf(design));
    preview.draw(device.artwork, 0, 0);
    FLKPoint origin{std::round((design.canvas.width - device.artwork.width()) / 2),
                    std::round((design.canvas.height - device.artwork.height()) / 2)};
    auto screen = cornersOf(device.screen.rect, origin);
    return {std::move(device.artwork), std::move(preview), origin, screen, device.screen};
}

// Flat device pixels (drawn at `scale`) to the scene: the device turned in
// space and seen through a pinhole camera centred on the frame.
FLKHomography perspectiveMap(const FLKCanvas& flat, double scale, FLKSize canvas) {
    const double yaw = -24 * std::numbers::pi / 180, pitch = -7 * std::numbers::pi / 180, roll = 5 * std::numbers::pi / 180;
    const double cy = std::cos(yaw), sy = std::sin(yaw), cp = std::cos(pitch), sp = std::sin(pitch);
    const double cr = std::cos(roll), sr = std::sin(roll);
    // R = Rz(roll) * Rx(pitch) * Ry(yaw); only its first two columns act on a plane at z = 0.
    const double r00 = cr * cy - sr * sp * sy, r01 = -sr * cp;
    const double r10 = sr * cy + cr * sp * sy, r11 = cr * cp;
    const double r20 = -cp * sy, r21 = sp;
    const double distance = 2000, focal = 0.9 * distance;
    FLKHomography centre{{1 / scale, 0, -flat.width() / (2 * scale), 0, 1 / scale, -flat.height() / (2 * scale), 0, 0, 1}};
    FLKHomography rotate{{r00, r01, 0, r10, r11, 0, r20, r21, distance}};
    FLKHomography project{{focal, 0, canvas.width / 2, 0, focal, canvas.height / 2, 0, 0, 1}};
    return project.after(rotate).after(centre);
}

FLKPlacedDevice perspective(const FLKTemplateDesign& design) {
    constexpr double kScale = 2;
    auto flat = FLKDeviceArtwork::draw(design.device, kScale, 4);
    FLKHomography toScene = perspectiveMap(flat.artwork, kScale, design.canvas);

    double minX = 1e9, minY = 1e9, maxX = -1e9, maxY = -1e9;
    for (const auto& corner : cornersOf(FLKRect(0, 0, flat.artwork.width(), flat.artwork.height()), {0, 0})) {
        FLKPoint p = toScene.map(corner);
        minX = std::min(minX, p.x), maxX = std::max(maxX, p.x), minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
    }
    FLKPoint origin{std::floor(minX) - kShadowMargin, std::floor(minY) - kShadowMargin};
    FLKHomography toLocal = FLKHomography{{1, 0, -origin.x, 0, 1, -origin.y, 0, 0, 1}}.after(toScene);
    int width = static_cast<int>(std::ceil(maxX - origin.x)) + kShadowMargin;
    int height = static_cast<int>(std::ceil(maxY - origin.y)) + kShadowMargin;

    FLKDeviceArtwork warped{FLKCanvas(width, height), FLKCanvas(width, height), flat.screen};
    warped.artwork.drawWarped(flat.artwork, toLocal);
    warped.silhouette.drawWarped(flat.silhouette, toLocal);
    warped.addShadow(1);

    FLKCanvas flatContent(flat.artwork.width(), flat.artwork.height());
    flkDrawScreenPlaceholder(flatContent, flat.screen, accentOf(design));
    FLKCanvas preview(width, height);
    preview.drawWarped(flatContent, toLocal);
    preview.draw(warped.artwork, 0, 0);

    std::array<FLKPoint, 4> screen;
    auto flatCorners = cornersOf(flat.screen.rect, {0, 0});
    for (size_t i = 0; i < 4; ++i) screen[i] = toScene.map(flatCorners[i]);
    FLKRoundedRect flatScreen{FLKRect(0, 0, flat.screen.rect.size.width / kScale, flat.screen.rect.size.height / kScale),
                              flat.screen.radius / kScale};
    return {std::move(warped.artwork), std::move(preview), origin, screen, flatScreen};
}

}  // namespace

FLKPlacedDevice FLKPlacedDevice::place(const FLKTemplateDesign& design) {
    switch (design.pose) {
        case FLKDevicePose::none: return frameless(design);
        case FLKDevicePose::perspective: return perspective(design);
        case FLKDevicePose::upright:
        case FLKDevicePose::turnedLeft: break;
    }
    return upright(design);
}

FLKImage flkScreenMask(int width, int height, double radius) {
    FLKCanvas canvas(width, height);
    canvas.fill({FLKRect(0, 0, width, height), radius}, FLKPaint{1, 1, 1, 1});
    FLKImage image = canvas.image();
    for (size_t i = 0; i < image.rgba.size(); i += 4) std::fill_n(&image.rgba[i], 3, 255);
    return image;
}
