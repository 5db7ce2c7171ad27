#include <gtest/gtest.h>

#include <cstring>

#include "core/gpu/FLKGPUTestSupport.h"
#include "core/media/FLKImageIO.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKAudioTrackMediaPlayer.h"
#include "core/model/FLKBoundingArray.h"
#include "core/model/FLKSceneBounds.h"
#include "core/model/FLKSceneModifier.h"
#include "core/model/FLKSceneModelTestSupport.h"
#include "core/model/FLKSceneQuery.h"
#include "core/scene/FLKQuad.h"
#include "core/scene/FLKTimelineVideoSprite.h"
#include "core/scene/FLKURLVideoSprite.h"
#include "core/timeline/FLKTimeline.h"

namespace {

class FLKOtherContainer : public FLKVideoContainer {};

std::shared_ptr<FLKSprite> spriteWithFrame(const FLKRect& frame) {
    auto sprite = std::make_shared<FLKSprite>();
    sprite->setShape(FLKPlane::planeWithFrame(frame));
    return sprite;
}

struct TemplateScene {
    std::shared_ptr<FLKScene> scene = std::make_shared<FLKScene>();
    std::shared_ptr<FLKColorGradientSprite> gradient = FLKColorGradientSprite::colorGradientSpriteWithColors(
        {FLKColor{1, 0, 0, 1}, FLKColor{0, 1, 0, 1}, FLKColor{0, 0, 1, 1}, FLKColor{1, 1, 1, 1}});
    std::shared_ptr<FLKVideoContainer> container = FLKVideoContainer::videoContainerWithFrame({100, 200, 300, 600});

    TemplateScene() {
        scene->setZOrder(0);
        scene->setMainCamera(FLKCamera::cameraWithFrame({0, 0, 1080, 1920}));
        gradient->setShape(FLKPlane::planeWithFrame({0, 0, 1080, 1920}));
        scene->addChild(gradient);
        scene->addChild(container);
    }
};

TEST(FLKSceneQuery, FindsTheLandmarksOfExactlyTheirClasses) {
    TemplateScene t;
    auto subclassContainer = std::make_shared<FLKOtherContainer>();
    subclassContainer->setZOrder(50);
    t.scene->addChild(subclassContainer);
    FLKSceneQuery query(t.scene);
    EXPECT_EQ(query.videoContainer(), t.container);
    EXPECT_EQ(query.gradientSprite(), t.gradient);
    EXPECT_EQ(query.mainCamera(), t.scene->mainCamera());
    ASSERT_EQ(query.recursiveAllChildren().size(), 3u);
    EXPECT_EQ(query.recursiveAllChildren().front(), t.gradient);

    // Of two containers the one on top answers.
    auto upper = FLKVideoContainer::videoContainerWithFrame({0, 0, 10, 10});
    upper->setZOrder(100);
    t.scene->addChild(upper);
    EXPECT_EQ(query.videoContainer(), upper);

    auto onlySubclass = std::make_shared<FLKScene>();
    onlySubclass->addChild(std::make_shared<FLKOtherContainer>());
    EXPECT_EQ(FLKSceneQuery(onlySubclass).videoContainer(), nullptr);
}

TEST(FLKSceneQuery, DoesNotKeepTheSceneAlive) {
    auto t = std::make_unique<TemplateScene>();
    FLKSceneQuery query(t->scene);
    std::weak_ptr<FLKScene> weak = t->scene;
    t.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(query.videoContainer(), nullptr);
    EXPECT_EQ(query.mainCamera(), nullptr);
    EXPECT_EQ(query.bounds(), FLKRect::zero());
}

TEST(FLKSceneBounds, UnitesEveryBoundingNode) {
    TemplateScene t;
    auto outside = spriteWithFrame({-50, -20, 100, 40});
    t.container->addChild(outside);
    // The container has no bounds of its own; only sprites count.
    EXPECT_EQ(FLKSceneQuery(t.scene).bounds(), FLKRect(-50, -20, 1130, 1940));

    auto noSprites = std::make_shared<FLKScene>();
    noSprites->addChild(FLKVideoContainer::videoContainerWithFrame({0, 0, 10, 10}));
    EXPECT_TRUE(FLKSceneBounds(noSprites).bounds().isNull());
    EXPECT_TRUE(FLKSceneBounds(std::make_shared<FLKScene>()).bounds().isNull());
    EXPECT_EQ(FLKSceneBounds().bounds(), FLKRect::zero());
}

TEST(FLKBoundingArray, UnionStartsFromTheFirstAndSkipsEmptyRectangles) {
    auto real = spriteWithFrame({10, 20, 30, 40});
    auto shapeless = std::make_shared<FLKSprite>();  // zero bounds at the origin
    EXPECT_TRUE(flk::calculateBounds({}).isNull());
    EXPECT_EQ(flk::calculateBounds({real}), FLKRect(10, 20, 30, 40));
    EXPECT_EQ(flk::calculateBounds({shapeless}), FLKRect::zero());
    EXPECT_EQ(flk::calculateBounds({shapeless, real}), FLKRect(10, 20, 30, 40));
    EXPECT_EQ(flk::calculateBounds({real, nullptr}), FLKRect(10, 20, 30, 40));
    EXPECT_EQ(flk::calculateBounds({real, spriteWithFrame({0, 0, 5, 5})}), FLKRect(0, 0, 40, 60));

    std::vector<FLKObject::Ptr> nodes{real, FLKVideoContainer::videoContainerWithFrame({0, 0, 1, 1}), shapeless};
    auto bounding = flk::boundingObjectsArray(nodes);
    ASSERT_EQ(bounding.size(), 2u);
    EXPECT_EQ(bounding[0].get(), static_cast<FLKBounding*>(real.get()));
    EXPECT_FALSE(flk::checkThatEveryShapeIsBounding(nodes));
    EXPECT_TRUE(flk::checkThatEveryShapeIsBounding({real, shapeless}));
    EXPECT_TRUE(flk::checkThatEveryShapeIsBounding({}));
}

class CountingPresenter : public FLKSceneModifierWidgetPresenter {
public:
    void updateWidget() override { ++updates; }
    int updates = 0;
};

// Puts each movie on the timeline's first video track and lets the timeline
// feed the scene's container, as the document's clip factory does.
class TimelineClipFactory : public FLKSceneModifierClipFactory {
public:
    explicit TimelineClipFactory(std::shared_ptr<FLKScene> scene) : scene_(std::move(scene)) {}
    void makeClipForResourceURL(const std::filesystem::path& url) override {
        auto track = timeline->tracks().empty() ? timeline->createVideoTrack()
                                                : std::dynamic_pointer_cast<FLKTimelineVideoTrack>(timeline->tracks().front());
        track->addClip(track->createClipWithVideoURL(url));
        timeline->mapScene(scene_);
    }
    std::shared_ptr<FLKTimeline> timeline = FLKTimeline::timelineWithTimer({});

private:
    std::shared_ptr<FLKScene> scene_;
};

class FLKSceneModifierTest : public FLKGLTest {
protected:
    void SetUp() override {
        FLKGLTest::SetUp();
        factory = std::make_shared<TimelineClipFactory>(t.scene);
        modifier = std::make_unique<FLKSceneModifier>(t.scene, factory, presenter);
    }

    std::filesystem::path picture(const std::string& name) {
        auto path = flk::test::scratchFolder("pictures") / name;
        FLKImage image(8, 4);
        for (int i = 0; i < 32; ++i) std::memcpy(image.pixel(i % 8, i / 8), "\x20\x40\x60\xff", 4);
        FLKError error;
        EXPECT_TRUE(flk::writePNG(image, path, &error)) << error.fullMessage();
        return path;
    }

    TemplateScene t;
    std::shared_ptr<CountingPresenter> presenter = std::make_shared<CountingPresenter>();
    std::shared_ptr<TimelineClipFactory> factory;
    std::unique_ptr<FLKSceneModifier> modifier;
};

TEST_F(FLKSceneModifierTest, ReplacedBackgroundKeepsItsPlaceInTheStacking) {
    auto first = modifier->loadBackgroundSpriteWithImageURL(picture("first.png"), {0, 0, 1080, 1920});
    ASSERT_NE(first, nullptr);
    // Placed by the scene: its zOrder plus the child count.
    EXPECT_EQ(first->zOrder(), 3);
    ASSERT_NE(first->name(), nullptr);
    EXPECT_EQ(*first->name(), "background_sprite");
    EXPECT_EQ(first->bounds(), FLKRect(0, 0, 1080, 1920));
    auto later = spriteWithFrame({0, 0, 10, 10});
    modifier->addChild(later);

    auto second = modifier->loadBackgroundSpriteWithImageURL(picture("second.png"), {10, 10, 500, 600});
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->zOrder(), 3);
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_EQ(second->parent(), t.scene);
    EXPECT_EQ(second->bounds(), FLKRect(10, 10, 500, 600));
    EXPECT_NE(std::dynamic_pointer_cast<FLKQuad>(second->shape()), nullptr);
    EXPECT_EQ(t.scene->childrenWithClass<FLKTexturedSprite>(), std::vector<std::shared_ptr<FLKTexturedSprite>>{second});
    EXPECT_LT(second->zOrder(), later->zOrder());
}

TEST_F(FLKSceneModifierTest, BadPictureOrVideoSpritesLeaveTheBackgroundAlone) {
    auto video = std::make_shared<FLKURLVideoSprite>();
    t.container->setVideo(video);
    EXPECT_EQ(modifier->removeCurrentTexturedSprite(), FLKObject::kZOrderNotPlaced);
    EXPECT_EQ(video->parent(), t.container);

    auto background = modifier->loadBackgroundSpriteWithImageURL(picture("kept.png"), {0, 0, 8, 4});
    ASSERT_NE(background, nullptr);
    auto missing = flk::test::scratchFolder("pictures") / "missing.png";
    FLKError error;
    EXPECT_EQ(modifier->loadBackgroundSpriteWithImageURL(missing, {0, 0, 8, 4}, &error), nullptr);
    EXPECT_NE(error.fullMessage().find("missing.png"), std::string::npos) << error.fullMessage();
    EXPECT_EQ(background->parent(), t.scene);
}

TEST_F(FLKSceneModifierTest, LoadedVideoReachesTheContainerThroughTheTimeline) {
    auto movie = flk::test::scratchFolder("movies") / "clip.mp4";
    FLKSyntheticVideo::Options options;
    options.width = 64;
    options.height = 64;
    options.frameCount = 15;
    FLKError error;
    ASSERT_TRUE(FLKSyntheticVideo::writeVideo(movie.string(), options, &error)) << error.fullMessage();

    EXPECT_EQ(modifier->loadVideoWithURL(movie), t.container);
    auto sprite = std::dynamic_pointer_cast<FLKTimelineVideoSprite>(t.container->video());
    ASSERT_NE(sprite, nullptr);
    auto track = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(factory->timeline->tracks().front());
    EXPECT_EQ(sprite->provider(), track);
    ASSERT_EQ(track->videoClips().size(), 1u);
    EXPECT_EQ(track->videoClips().front()->assetURL(), movie);
    EXPECT_NEAR(track->duration(), 0.5, 0.01);

    // Without a clip factory the container is still answered and nothing changes.
    FLKSceneModifier bare(t.scene, nullptr, nullptr);
    EXPECT_EQ(bare.loadVideoWithURL(movie), t.container);
    EXPECT_EQ(track->videoClips().size(), 1u);
}

TEST_F(FLKSceneModifierTest, AudioIsAttachedToTheContainerAndPlays) {
    FLKAudioTrackMediaPlayer::install();
    auto tone = flk::test::scratchFolder("sounds") / "tone.m4a";
    ASSERT_TRUE(FLKSyntheticVideo::writeTone(tone.string(), 1.0));
    auto first = modifier->loadAudioWithURL(tone);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(t.container->audio(), first);
    EXPECT_EQ(first->parent(), t.container);
    ASSERT_NE(first->player(), nullptr);
    EXPECT_TRUE(first->player()->isPlaying());
    EXPECT_EQ(first->serialized()["audioURL"], "file://" + tone.string());

    auto second = modifier->loadAudioWithURL(tone);
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_EQ(t.container->childrenWithClass<FLKAudioTrack>(), std::vector<std::shared_ptr<FLKAudioTrack>>{second});

    modifier->unloadAudio();
    EXPECT_EQ(t.container->audio(), nullptr);
    EXPECT_EQ(second->parent(), nullptr);
    FLKAudioTrackPlayer::setFactory(nullptr);
}

TEST_F(FLKSceneModifierTest, CameraChangesRedrawTheWidget) {
    modifier->focusCamera();
    // The 720-high viewport shows the whole 1920-high background.
    EXPECT_DOUBLE_EQ(t.scene->mainCamera()->scale(), 720.0 / 1920.0);
    EXPECT_EQ(presenter->updates, 1);

    auto camera = FLKCamera::cameraWithFrame({0, 0, 100, 100});
    modifier->setCamera(camera);
    EXPECT_EQ(modifier->mainCamera(), camera);
    EXPECT_EQ(presenter->updates, 2);
}

}  // namespace
