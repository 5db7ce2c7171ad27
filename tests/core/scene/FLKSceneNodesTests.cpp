#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <thread>

#include "core/gpu/FLKPipelineNames.h"
#include "core/media/FLKImageIO.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKQuad.h"
#include "core/scene/FLKRealtimeVideoSprite.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKTimelineVideoSprite.h"
#include "core/scene/FLKURLVideoSprite.h"
#include "core/scene/FLKVideoContainer.h"

namespace {
std::filesystem::path scratch(const std::string& name) {
    auto dir = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / "scene" / name;
    std::filesystem::create_directories(dir);
    return dir;
}

struct Package : FLKSerializationFile {
    std::filesystem::path folder;
    explicit Package(std::filesystem::path f) : folder(std::move(f)) {}
    std::filesystem::path folderURL() const override { return folder; }
};

// A package folder with a 4 x 2 picture in its media folder.
std::filesystem::path packageWithPicture(const std::string& name) {
    auto folder = scratch(name);
    FLKImage image(4, 2);
    for (int i = 0; i < 8; ++i) std::memcpy(image.pixel(i % 4, i / 4), "\x10\x20\x30\xff", 4);
    FLKError error;
    EXPECT_TRUE(flk::writePNG(image, folder / "media" / "device.png", &error)) << error.fullMessage();
    return folder;
}

std::vector<FLKColor> fourColors() {
    return {FLKColor{1, 0, 0, 1}, FLKColor{0, 1, 0, 1}, FLKColor{0, 0, 1, 1}, FLKColor{1, 1, 1, 1}};
}

// A template-like scene: gradient background, device artwork, video container.
std::shared_ptr<FLKScene> templateScene(const std::filesystem::path& package) {
    auto scene = std::make_shared<FLKScene>();
    scene->setZOrder(0);
    scene->setMainCamera(FLKCamera::cameraWithFrame({0, 0, 1080, 1920}));
    auto background = FLKColorGradientSprite::colorGradientSpriteWithColors(fourColors());
    background->setShape(FLKPlane::planeWithFrame({0, 0, 1080, 1920}));
    scene->addChild(background);
    FLKError error;
    auto device = FLKTexturedSprite::spriteWithResourceURL(package / "media" / "device.png", &error);
    EXPECT_NE(device, nullptr) << error.fullMessage();
    if (device) {
        device->setName("Device");
        scene->addChild(device);
    }
    auto container = FLKVideoContainer::videoContainerWithFrame({100, 200, 300, 600});
    container->setVideoMaskImageURL(package / "media" / "device.png");
    scene->addChild(container);
    auto video = std::make_shared<FLKTimelineVideoSprite>();
    container->setVideo(video);
    container->setAudio(FLKAudioTrack::audioTrackWithAudioURL("/music/theme.m4a"));
    return scene;
}

std::vector<std::string> classNames(const std::vector<FLKObject::Ptr>& nodes) {
    std::vector<std::string> names;
    for (const auto& n : nodes) names.push_back(n->className());
    return names;
}
}  // namespace

TEST(FLKSceneSerialization, ReadingThroughTheBaseGivesTheWholeScene) {
    auto package = packageWithPicture("roundtrip");
    auto scene = templateScene(package);
    auto url = package / "scenes" / "scene.json";
    FLKError error;
    ASSERT_TRUE(flk::writeToJSONAtURL(*scene, url, &error)) << error.fullMessage();

    // The device picture is stored relative to the package.
    auto stored = *flk::dictionaryFromJSONAtURL(url);
    EXPECT_EQ(stored["children"][1]["resourceURL"], "media/device.png");
    EXPECT_EQ(stored["children"][2]["videoMaskImageURL"], "media/device.png");

    std::shared_ptr<FLKObject> back;
    {
        FLKFileSerializationContextScope context(std::make_shared<Package>(package));
        back = flk::serializableFromJSONAtURL<FLKObject>(url);
    }
    auto loaded = std::dynamic_pointer_cast<FLKScene>(back);
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(loaded->isEqual(*scene));
    EXPECT_EQ(classNames(loaded->recursiveAllChildren()), classNames(scene->recursiveAllChildren()));
    EXPECT_EQ(classNames(loaded->children()),
              (std::vector<std::string>{"FLKColorGradientSprite", "FLKTexturedSprite", "FLKVideoContainer"}));
    ASSERT_NE(loaded->mainCamera(), nullptr);
    EXPECT_EQ(loaded->mainCamera()->frame(), FLKRect(0, 0, 1080, 1920));

    auto device = std::dynamic_pointer_cast<FLKTexturedSprite>(loaded->children()[1]);
    ASSERT_NE(device->texture(), nullptr);
    EXPECT_EQ(device->texture()->width(), 4);
    EXPECT_EQ(device->resourceURL(), package / "media" / "device.png");
    EXPECT_EQ(device->className(), "FLKTexturedSprite");
    EXPECT_EQ(*device->name(), "Device");
    EXPECT_EQ(dynamic_cast<FLKQuad*>(device->plane().get()) != nullptr, true);

    // The container re-links the video and audio it finds among its children.
    auto container = loaded->childWithClass<FLKVideoContainer>();
    ASSERT_NE(container, nullptr);
    ASSERT_NE(container->video(), nullptr);
    EXPECT_EQ(container->video()->className(), "FLKTimelineVideoSprite");
    EXPECT_TRUE(container->video()->plane()->isEqual(*container->plane()));
    EXPECT_NE(container->video()->maskTexture(), nullptr);
    EXPECT_EQ(container->video()->pipelineName(), FLKPipelineNameVertexFragmentTexturedMaskedBGRA);
    ASSERT_NE(container->audio(), nullptr);
    EXPECT_EQ(container->audio()->audioURL(), std::filesystem::path("/music/theme.m4a"));
    EXPECT_EQ(container->resourceURLs(), (std::vector<std::filesystem::path>{package / "media" / "device.png"}));
}

TEST(FLKSceneSerialization, MissingPicturesAndHostilePathsLoadWithoutMedia) {
    auto package = scratch("missing");
    FLKJSON dictionary = {{"className", "FLKTexturedSprite"},
                          {"zOrder", 1},
                          {"resourceURL", "media/absent.png"},
                          {"shape", FLKPlane::planeWithFrame({0, 0, 10, 10})->serialized()}};
    FLKFileSerializationContextScope context(std::make_shared<Package>(package));
    auto sprite = std::dynamic_pointer_cast<FLKTexturedSprite>(FLKObject::newWithDictionary(dictionary));
    ASSERT_NE(sprite, nullptr);
    EXPECT_EQ(sprite->texture(), nullptr);
    EXPECT_FALSE(sprite->resourceURL().has_value());
    EXPECT_EQ(sprite->bounds(), FLKRect(0, 0, 10, 10));

    FLKJSON escaping = {{"className", "FLKVideoContainer"}, {"videoMaskImageURL", "../../etc/passwd"}};
    auto container = std::dynamic_pointer_cast<FLKVideoContainer>(FLKObject::newWithDictionary(escaping));
    ASSERT_NE(container, nullptr);
    EXPECT_FALSE(container->videoMaskImageURL().has_value());
}

TEST(FLKSceneCopy, CopiesAreIndependentAndShareTheCamera) {
    auto package = packageWithPicture("copy");
    auto scene = templateScene(package);
    auto copy = std::static_pointer_cast<FLKScene>(scene->copy());
    EXPECT_TRUE(copy->isEqual(*scene));
    EXPECT_EQ(copy->mainCamera(), scene->mainCamera());

    auto container = scene->childWithClass<FLKVideoContainer>();
    auto copiedContainer = copy->childWithClass<FLKVideoContainer>();
    ASSERT_NE(copiedContainer, container);
    ASSERT_NE(copiedContainer->video(), nullptr);
    EXPECT_NE(copiedContainer->video(), container->video());
    EXPECT_EQ(copiedContainer->video()->parent(), copiedContainer);
    EXPECT_NE(copiedContainer->video()->maskTexture(), nullptr);

    copiedContainer->moveBy({10, 0});
    EXPECT_EQ(container->plane()->topLeft(), (FLKPoint{100, 200}));
    EXPECT_EQ(copiedContainer->video()->plane()->topLeft(), (FLKPoint{110, 200}));
    EXPECT_FALSE(copy->isEqual(*scene));

    auto gradient = copy->childWithClass<FLKColorGradientSprite>();
    gradient->setColors({FLKColor::black(), FLKColor::black(), FLKColor::black(), FLKColor::black()});
    EXPECT_EQ(scene->childWithClass<FLKColorGradientSprite>()->colors(), fourColors());
}

TEST(FLKSceneCopy, TemplatedSceneEmptiesTheVideoContainer) {
    auto package = packageWithPicture("templated");
    auto scene = templateScene(package);
    auto templated = scene->templatedScene();
    auto container = templated->childWithClass<FLKVideoContainer>();
    EXPECT_EQ(container->video(), nullptr);
    EXPECT_EQ(container->audio(), nullptr);
    EXPECT_TRUE(container->children().empty());
    EXPECT_EQ(templated->childWithClass<FLKTimelineVideoSprite>(), nullptr);
    // The original keeps its recording.
    EXPECT_NE(scene->childWithClass<FLKVideoContainer>()->video(), nullptr);
}

TEST(FLKColorGradientSprite, FourCornerVerticesOf48Bytes) {
    auto sprite = FLKColorGradientSprite::colorGradientSpriteWithColors(
        {FLKColor{1, 0, 0, 1}, FLKColor{0, 1, 0, 0.5}, FLKColor{0, 0, 1, 1}, FLKColor{0.25, 0.5, 0.75, 1}});
    EXPECT_EQ(sprite->vertexBuffer(), nullptr);  // no shape yet
    sprite->setShape(FLKPlane::planeWithFrame({10, 20, 100, 50}));
    EXPECT_EQ(sprite->pipelineName(), FLKPipelineNameVertexFragmentColored);

    auto buffer = sprite->vertexBuffer();
    ASSERT_NE(buffer, nullptr);
    ASSERT_EQ(buffer->length(), 192u);
    auto bytes = buffer->contents();
    float f[48];
    std::memcpy(f, bytes.data(), sizeof f);
    const float expected[4][12] = {
        {10, 20, 0, 1, 1, 0, 0, 1, 0, 0, 0, 0},
        {110, 20, 0, 1, 0, 1, 0, 0.5f, 1, 0, 0, 0},
        {10, 70, 0, 1, 0, 0, 1, 1, 0, 1, 0, 0},
        {110, 70, 0, 1, 0.25f, 0.5f, 0.75f, 1, 1, 1, 0, 0},
    };
    for (int v = 0; v < 4; ++v) {
        for (int i = 0; i < 12; ++i) EXPECT_FLOAT_EQ(f[v * 12 + i], expected[v][i]) << "vertex " << v << " float " << i;
    }
    auto indices = sprite->indexBuffer()->contents();
    ASSERT_EQ(indices.size(), 12u);
    uint16_t index[6];
    std::memcpy(index, indices.data(), sizeof index);
    EXPECT_EQ(std::vector<uint16_t>(index, index + 6), (std::vector<uint16_t>{0, 1, 2, 1, 3, 2}));

    // Buffers are cached until the colours or the shape change.
    EXPECT_EQ(sprite->vertexBuffer(), buffer);
    sprite->setColors(fourColors());
    EXPECT_NE(sprite->vertexBuffer(), buffer);
    sprite->setColors({FLKColor::white()});
    EXPECT_EQ(sprite->vertexBuffer(), nullptr);
}

TEST(FLKColorGradientSprite, ColoursAreStoredAsHexStrings) {
    auto sprite = FLKColorGradientSprite::colorGradientSpriteWithColors(fourColors());
    auto dictionary = sprite->serialized();
    EXPECT_EQ(dictionary["colors"], (FLKJSON{"#ff0000", "#00ff00", "#0000ff", "#ffffff"}));
    auto back = std::dynamic_pointer_cast<FLKColorGradientSprite>(FLKObject::newWithDictionary(dictionary));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->colors(), fourColors());
    EXPECT_TRUE(back->isEqual(*sprite));
}

TEST(FLKSprite, TransformsReplaceTheShapeAndDropBuffers) {
    auto texture = std::make_shared<FLKGPUTexture>(40, 20, FLKPixelFormat::RGBA8, std::vector<uint8_t>(40 * 20 * 4));
    FLKTexturedSprite sprite(texture);
    EXPECT_EQ(sprite.bounds(), FLKRect(0, 0, 40, 20));
    EXPECT_TRUE(sprite.isInteractable());
    EXPECT_EQ(sprite.pipelineName(), FLKPipelineNameVertexFragmentTexturedBGRA);

    auto vertices = sprite.vertexBuffer();
    auto indices = sprite.indexBuffer();
    ASSERT_NE(vertices, nullptr);
    EXPECT_EQ(vertices->length(), sprite.plane()->verticesLength());
    EXPECT_EQ(indices->length(), sprite.plane()->indicesLength());

    sprite.moveBy({10, 5});
    EXPECT_EQ(sprite.bounds(), FLKRect(10, 5, 40, 20));
    EXPECT_NE(sprite.vertexBuffer(), vertices);
    EXPECT_TRUE(sprite.hitTest({15, 10}));
    EXPECT_FALSE(sprite.hitTest({5, 10}));

    sprite.setPosition({0, 0});
    EXPECT_EQ(sprite.position(), (FLKPoint{0, 0}));
    sprite.scaleBy(2.0, {0, 0});
    EXPECT_EQ(sprite.bounds(), FLKRect(-40, -20, 80, 40));

    // The sprite keeps its own copy of a shape it is given.
    auto plane = FLKPlane::planeWithFrame({0, 0, 1, 1});
    sprite.setShape(plane);
    plane->setTopLeft({-5, -5});
    EXPECT_EQ(sprite.plane()->topLeft(), (FLKPoint{0, 0}));

    sprite.setMaskTexture(texture);
    EXPECT_EQ(sprite.pipelineName(), FLKPipelineNameVertexFragmentTexturedMaskedBGRA);
}

TEST(FLKVideoSprite, OrientationTurnsTheDrawnPlane) {
    EXPECT_EQ(FLKVideoSprite::videoOrientationForSize({1080, 1080}), 1u);
    EXPECT_EQ(FLKVideoSprite::videoOrientationForSize({1920, 1080}), 2u);

    FLKTimelineVideoSprite sprite;
    sprite.setShape(FLKPlane::planeWithFrame({0, 0, 100, 200}));
    EXPECT_EQ(sprite.orientedPlane()->topLeft(), (FLKPoint{0, 0}));
    auto portraitVertices = sprite.vertexBuffer();

    sprite.setVideoOrientation(2);
    auto turned = sprite.orientedPlane();
    EXPECT_EQ(turned->topLeft(), (FLKPoint{100, 0}));
    EXPECT_EQ(turned->bottomLeft(), (FLKPoint{0, 0}));
    EXPECT_NE(sprite.vertexBuffer(), portraitVertices);
    // The stored shape itself is untouched.
    EXPECT_EQ(sprite.plane()->topLeft(), (FLKPoint{0, 0}));
    EXPECT_EQ(sprite.serialized()["videoOrientation"], 2);
    EXPECT_FALSE(sprite.isInteractable());
}

TEST(FLKVideoSprite, FramesBecomeTexturesAndLiveSpritesFollowOrientation) {
    auto live = FLKRealtimeVideoSprite::realtimeVideoSprite();
    live->setShape(FLKPlane::planeWithFrame({0, 0, 10, 10}));
    live->setRespondsToOrientationChanges(true);
    auto landscape = std::make_shared<FLKPixelBuffer>(8, 4);
    live->recorderDidOutputSampleBuffer({landscape, 0.0});
    ASSERT_NE(live->texture(), nullptr);
    EXPECT_EQ(live->texture()->width(), 8);
    EXPECT_EQ(live->videoOrientation(), 2u);
    EXPECT_EQ(live->imageBuffer(), landscape);

    // A broken frame keeps the previous texture.
    auto texture = live->texture();
    auto broken = std::make_shared<FLKPixelBuffer>();
    broken->width = 8;
    broken->height = 4;
    broken->stride = 32;
    live->updateWithSampleBuffer({broken, 1.0});
    EXPECT_EQ(live->texture(), texture);

    // A live sprite is never stored.
    EXPECT_TRUE(live->serialized().is_null());
    auto parent = std::make_shared<FLKObject>();
    parent->addChild(live);
    EXPECT_TRUE(parent->serialized()["children"].empty());
}

TEST(FLKRealtimeVideoSprite, FramesBehindTheWallClockAreDropped) {
    FLKRealtimeVideoSprite sprite;
    sprite.setStartDate(FLKVideoSprite::Clock::now() - std::chrono::seconds(1));
    auto pixels = std::make_shared<FLKPixelBuffer>(2, 2);
    EXPECT_FALSE(sprite.shouldDiscardSampleBuffer({pixels, 10.0}));
    EXPECT_EQ(sprite.startSampleBufferTime(), 10.0);
    // Half a second of media after a second of wall time: late, dropped, and
    // the reference moves back by the lag (about half a second).
    EXPECT_TRUE(sprite.shouldDiscardSampleBuffer({pixels, 10.5}));
    EXPECT_NEAR(sprite.startSampleBufferTime(), 9.5, 0.05);
    // Ahead of the wall clock: kept.
    EXPECT_FALSE(sprite.shouldDiscardSampleBuffer({pixels, 11.5}));
}

namespace {
struct FixedProvider : FLKTextureProvider {
    std::shared_ptr<FLKGPUTexture> current;
    int refreshes = 0;
    void refreshTexture() override { ++refreshes; }
    std::shared_ptr<FLKGPUTexture> texture() const override { return current; }
};
}  // namespace

TEST(FLKTimelineVideoSprite, ShowsItsWeaklyHeldProvidersTexture) {
    FLKTimelineVideoSprite sprite;
    auto provider = std::make_shared<FixedProvider>();
    provider->current = std::make_shared<FLKGPUTexture>(2, 2, FLKPixelFormat::BGRA8, std::vector<uint8_t>(16));
    sprite.setProvider(provider);
    EXPECT_EQ(sprite.texture(), provider->current);
    sprite.updateFrame({720, 720});
    EXPECT_EQ(provider->refreshes, 1);
    provider.reset();
    EXPECT_EQ(sprite.provider(), nullptr);
    EXPECT_EQ(sprite.texture(), nullptr);
}

TEST(FLKURLVideoSprite, StoresTheRelativePathAndLoopFlag) {
    auto package = scratch("urlvideo");
    FLKURLVideoSprite sprite(package / "media" / "clip.mp4");
    sprite.setShouldLoop(true);
    auto dictionary = sprite.serialized();
    EXPECT_EQ(dictionary["resourceURL"], "media/clip.mp4");
    EXPECT_EQ(dictionary["shouldLoop"], true);
    EXPECT_EQ(sprite.bounds(), FLKRect::zero());

    FLKFileSerializationContextScope context(std::make_shared<Package>(package));
    auto back = std::dynamic_pointer_cast<FLKURLVideoSprite>(FLKObject::newWithDictionary(dictionary));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->resourceURL(), package / "media" / "clip.mp4");
    EXPECT_TRUE(back->shouldLoop());
    EXPECT_TRUE(back->isEqual(sprite));
}

TEST(FLKVideoContainer, VideoAndAudioFollowTheContainer) {
    auto container = FLKVideoContainer::videoContainerWithFrame({0, 0, 100, 200});
    EXPECT_TRUE(container->isInteractable());
    auto first = std::make_shared<FLKTimelineVideoSprite>();
    container->setVideo(first);
    EXPECT_EQ(first->parent(), container);
    EXPECT_TRUE(first->plane()->isEqual(*container->plane()));

    container->scaleBy(2.0, {0, 0});
    EXPECT_EQ(first->bounds(), FLKRect(0, 0, 200, 400));
    EXPECT_TRUE(container->hitTest({150, 350}));

    auto second = std::make_shared<FLKTimelineVideoSprite>();
    container->setVideo(second);
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_EQ(container->children().size(), 1u);
    EXPECT_EQ(container->children()[0], second);

    auto audio = FLKAudioTrack::audioTrackWithAudioURL("/tmp/a.m4a");
    container->addChild(audio);
    EXPECT_EQ(container->audio(), audio);
    EXPECT_EQ(audio->volume(), 0.0f);  // no player installed: silent, no crash
    container->setAudio(nullptr);
    EXPECT_EQ(container->audio(), nullptr);
    EXPECT_EQ(container->children().size(), 1u);
}

TEST(FLKAudioTrack, StoresTheAbsoluteURLString) {
    auto track = FLKAudioTrack::audioTrackWithAudioURL("/music/theme.m4a");
    auto dictionary = track->serialized();
    EXPECT_EQ(dictionary["audioURL"], "file:///music/theme.m4a");
    auto back = std::dynamic_pointer_cast<FLKAudioTrack>(FLKObject::newWithDictionary(dictionary));
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(back->isEqual(*track));
    dictionary["audioURL"] = "not a url";
    EXPECT_FALSE(std::dynamic_pointer_cast<FLKAudioTrack>(FLKObject::newWithDictionary(dictionary))
                     ->audioURL()
                     .has_value());
}
