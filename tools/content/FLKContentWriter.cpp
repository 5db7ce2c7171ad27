#include "FLKContentWriter.h"

#include <system_error>

#include "FLKPlacedDevice.h"
#include "FLKSilenceWriter.h"
#include "core/media/FLKImageIO.h"
#include "core/model/FLKDocument.h"
#include "core/model/FLKMetadata.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKQuad.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"

namespace fs = std::filesystem;

namespace {

struct MaskDesign {
    const char* name;
    int width, height;
    double radius;
};

// Rounded screens of the common devices, and softer ones for frameless videos.
constexpr MaskDesign kMasks[] = {
    {"Phone Screen", 600, 1300, 78},
    {"Phone Screen Landscape", 1300, 600, 78},
    {"Tablet Screen", 840, 1120, 30},
    {"Soft Corners Portrait", 1080, 1920, 64},
    {"Soft Corners Landscape", 1920, 1080, 64},
};

constexpr double kSilenceSeconds = 2;

FLKError writeError(const fs::path& url, const std::string& reason) {
    return flk::fileSystemErrorWithMessage("Could not write " + url.string() + ".", EIO, reason);
}

bool makeFolder(const fs::path& url, FLKError* error) {
    std::error_code ec;
    fs::create_directories(url, ec);
    if (ec) flk::setError(error, writeError(url, ec.message()));
    return !ec;
}

std::shared_ptr<FLKScene> sceneFor(const FLKTemplateDesign& design, const FLKPlacedDevice& device,
                                   const std::optional<fs::path>& deviceURL, const std::optional<fs::path>& maskURL) {
    const FLKRect frame(0, 0, design.canvas.width, design.canvas.height);
    auto scene = std::make_shared<FLKScene>();
    scene->setName(design.name);
    scene->setMainCamera(FLKCamera::cameraWithFrame(frame));
    scene->setZOrder(0);

    std::vector<FLKColor> colors;
    for (unsigned rgb : design.gradient) {
        colors.push_back(FLKColor{((rgb >> 16) & 0xff) / 255.0, ((rgb >> 8) & 0xff) / 255.0, (rgb & 0xff) / 255.0, 1});
    }
    auto background = FLKColorGradientSprite::colorGradientSpriteWithColors(std::move(colors));
    background->setShape(FLKPlane::planeWithFrame(frame));
    background->setName("Background");
    background->setZOrder(1);
    scene->addChild(background);

    auto container = std::make_shared<FLKVideoContainer>();
    const auto& s = device.screen;
    container->setPlane(std::make_shared<FLKPlane>(s[0], s[1], s[2], s[3]));
    container->setName("Screen");
    container->setZOrder(10);
    if (maskURL) container->setVideoMaskImageURL(*maskURL);
    scene->addChild(container);

    if (deviceURL) {
        // Above the video: the bezel hides the screen's corners and the camera sits on top.
        auto artwork = std::make_shared<FLKTexturedSprite>();
        artwork->setShape(FLKQuad::quadWithFrame(
            FLKRect(device.origin.x, device.origin.y, device.artwork.width(), device.artwork.height())));
        artwork->setResourceURL(*deviceURL);
        artwork->setName("Device");
        artwork->setZOrder(20);
        scene->addChild(artwork);
    }
    return scene;
}

FLKCanvas previewOf(const FLKTemplateDesign& design, const FLKPlacedDevice& device) {
    FLKCanvas canvas(static_cast<int>(design.canvas.width), static_cast<int>(design.canvas.height));
    std::array<FLKPaint, 4> corners;
    for (size_t i = 0; i < 4; ++i) corners[i] = FLKPaint::hex(design.gradient[i]);
    canvas.fillGradient(corners);
    canvas.draw(device.preview, static_cast<int>(device.origin.x), static_cast<int>(device.origin.y));
    return canvas;
}

}  // namespace

FLKContentWriter::FLKContentWriter(fs::path outputFolder, std::optional<fs::path> previewFolder)
    : outputFolder_(std::move(outputFolder)), previewFolder_(std::move(previewFolder)) {}

bool FLKContentWriter::writeAll(FLKError* error) {
    if (!makeFolder(outputFolder_, error)) return false;
    if (previewFolder_ && !makeFolder(*previewFolder_, error)) return false;
    for (const auto& design : FLKTemplateDesign::builtInDesigns()) {
        if (!writeTemplate(design, error)) return false;
    }
    return writeTemplateList(error) && writeMasks(error) && writeSilence(error);
}

bool FLKContentWriter::writeTemplate(const FLKTemplateDesign& design, FLKError* error) {
    const fs::path target = outputFolder_ / (design.name + "." + kFLKFileExtensionFlickwellTemplate);
    const fs::path partial = outputFolder_ / ("." + design.name + ".partial");
    std::error_code ec;
    fs::remove_all(partial, ec);
    bool written = writePackage(design, partial, error);
    if (written) {
        fs::remove_all(target, ec);
        fs::rename(partial, target, ec);
        if (ec) flk::setError(error, writeError(target, ec.message()));
        written = !ec;
    }
    if (!written) fs::remove_all(partial, ec);
    return written;
}

bool FLKContentWriter::writePackage(const FLKTemplateDesign& design, const fs::path& folder, FLKError* error) {
    for (const char* sub : {"media", "preview", "scenes", "timelines"}) {
        if (!makeFolder(folder / sub, error)) return false;
    }
    const FLKPlacedDevice device = FLKPlacedDevice::place(design);
    std::optional<fs::path> deviceURL, maskURL;
    if (device.artwork.width() > 0) {
        deviceURL = folder / "media" / (design.slug + "-device.png");
        if (!flk::writePNG(device.artwork.image(), *deviceURL, error)) return false;
    }
    if (design.masksScreen) {
        const FLKRect& screen = device.flatScreen.rect;
        maskURL = folder / "media" / (design.slug + "-screen-mask.png");
        FLKImage mask = flkScreenMask(static_cast<int>(std::lround(screen.size.width)),
                                      static_cast<int>(std::lround(screen.size.height)), device.flatScreen.radius);
        if (!flk::writePNG(mask, *maskURL, error)) return false;
    }

    auto scene = sceneFor(design, device, deviceURL, maskURL);
    auto timeline = FLKTimeline::timelineWithTimer({});
    FLKDocument document;
    document.setCurrentScene(scene);
    document.setCurrentTimeline(timeline);
    if (!flk::writeToJSONAtURL(document, folder / "document.json", error) ||
        !flk::writeToJSONAtURL(FLKMetadata(), folder / "metadata.json", error) ||
        !flk::writeToJSONAtURL(*scene, folder / "scenes" / (*scene->identifier() + ".json"), error) ||
        !flk::writeToJSONAtURL(*timeline, folder / "timelines" / (timeline->identifier() + ".json"), error)) {
        return false;
    }

    FLKCanvas half = previewOf(design, device).downsampled(1);
    if (previewFolder_ && !flk::writePNG(half.image(), *previewFolder_ / (design.slug + ".png"), error)) return false;
    return flk::writePNG(half.downsampled(1).image(), folder / "preview" / (design.slug + ".png"), error);
}

bool FLKContentWriter::writeTemplateList(FLKError* error) {
    FLKJSON names = FLKJSON::array();
    for (const auto& design : FLKTemplateDesign::builtInDesigns()) names.push_back(design.name);
    return flk::writeJSONToURL(names, outputFolder_ / (std::string("FLKTemplateList.") + kFLKFileExtensionPlist), error);
}

bool FLKContentWriter::writeMasks(FLKError* error) {
    FLKJSON names = FLKJSON::array();
    for (const auto& mask : kMasks) {
        fs::path url = outputFolder_ / (std::string(mask.name) + "." + kFLKFileExtensionPNG);
        if (!flk::writePNG(flkScreenMask(mask.width, mask.height, mask.radius), url, error)) return false;
        names.push_back(mask.name);
    }
    return flk::writeJSONToURL(names, outputFolder_ / (std::string("FLKMasksList.") + kFLKFileExtensionPlist), error);
}

bool FLKContentWriter::writeSilence(FLKError* error) {
    return flkWriteSilence(outputFolder_ / (std::string("silence.") + kFLKFileExtensionMP3), kSilenceSeconds, error);
}
