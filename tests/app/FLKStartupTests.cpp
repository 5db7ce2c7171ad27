// Launching the program: the user defaults of a fresh install, the window's
// place, the launch sequence on a main queue whose time the test moves, and
// the welcome screen driven with real clicks.
#include <QApplication>
#include <QCheckBox>
#include <QDockWidget>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <memory>

#include "FLKAppTestSupport.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKApplicationDelegate.h"
#include "app/shell/FLKApplicationSetup.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKWelcomeWindow.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/platform/FLKUserDefaults.h"
#include "core/platform/FLKUserDefaultsKeys.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKShape.h"
#include "core/scene/FLKVideoContainer.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKSelectionWidgetViewModel.h"

namespace {

// One launch of the program against a given settings file.
struct Launch {
    explicit Launch(const QString& settingsFile)
        : defaults(std::make_unique<FLKUserDefaults>(settingsFile.toStdString())),
          delegate(std::make_unique<FLKApplicationDelegate>(*defaults, queue)) {
        delegate->applicationDidFinishLaunching();
    }
    ~Launch() {
        // The window goes first: its timers and welcome screen use the settings.
        delegate.reset();
        defaults.reset();
    }
    FLKMainWindow& window() const { return *delegate->window(); }

    std::shared_ptr<FLKManualMainQueue> queue = std::make_shared<FLKManualMainQueue>();
    std::unique_ptr<FLKUserDefaults> defaults;
    std::unique_ptr<FLKApplicationDelegate> delegate;
};

QPoint availableCentre() { return QGuiApplication::primaryScreen()->availableGeometry().center(); }

bool isCentred(const QWidget& window) {
    const QPoint offset = window.geometry().center() - availableCentre();
    return std::abs(offset.x()) <= 1 && std::abs(offset.y()) <= 1;
}

std::shared_ptr<FLKVideoContainer> screenOf(const std::shared_ptr<FLKScene>& scene) {
    return scene ? scene->childWithClass<FLKVideoContainer>() : nullptr;
}

}  // namespace

class StartupTests : public QObject {
    Q_OBJECT

private slots:
    void firstLaunchCentresTheWindowAndTheWelcomeScreenStartsTheChosenTemplate();
    void laterLaunchesAreNotCentredAndFollowTheWelcomeSetting();

private:
    // The settings file of one install; both launches share it.
    QTemporaryDir install;
    QString settingsFile() const { return install.filePath("config/FLKUserDefaults.json"); }
};

void StartupTests::firstLaunchCentresTheWindowAndTheWelcomeScreenStartsTheChosenTemplate() {
    Launch launch(settingsFile());
    FLKMainWindow& window = launch.window();
    QCOMPARE(flk::numberOfLaunches(*launch.defaults), int64_t(1));
    QVERIFY(flk::isFirstLaunch(*launch.defaults));
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY2(isCentred(window), qPrintable(QString("window at %1,%2 %3x%4")
                                               .arg(window.x()).arg(window.y()).arg(window.width()).arg(window.height())));
    // A panel made with the window waits for the launch sequence.
    auto* panel = new QDockWidget("Panel", &window);
    window.addDockWidget(Qt::BottomDockWidgetArea, panel);
    panel->show();
    QVERIFY(panel->isVisible());

    // Nothing before 0.1 s; the panels are set up then, the scene at 0.4 s.
    launch.queue->advanceBy(0.09);
    QVERIFY(panel->isVisible());
    launch.queue->advanceBy(0.02);
    QVERIFY(!panel->isVisible());
    launch.queue->advanceBy(0.28);
    QVERIFY(!window.canvasViewModels());
    QVERIFY(!window.welcomeWindow());
    launch.queue->advanceBy(0.02);
    launch.queue->runPending();
    QVERIFY(window.canvasViewModels());
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    QCOMPARE(window.sceneView()->scene(), loader.currentScene());

    // First launch: the welcome screen, and the canvas ignores the pointer meanwhile.
    FLKWelcomeWindow* welcome = window.welcomeWindow();
    QVERIFY(welcome);
    QVERIFY(QTest::qWaitForWindowExposed(welcome));
    QVERIFY(!window.sceneView()->isUserInteractionEnabled());
    QVERIFY(!panel->isVisible());
    auto shownScreen = screenOf(loader.currentScene());
    QVERIFY(shownScreen);
    const FLKRect screenBounds = shownScreen->shape()->bounds();
    QTest::mouseClick(window.sceneView(), Qt::LeftButton, {},
                      window.sceneView()->widgetPointForScenePoint(screenBounds.center()).toPoint());
    QVERIFY(window.canvasViewModels()->selecting()->selectedObjects().empty());

    // Every template is offered with its preview.
    const auto& templates = FLKTemplateManager::defaultManager().templates();
    QListWidget* list = welcome->templateList();
    QCOMPARE(list->count(), int(templates.size()));
    QVERIFY(list->count() >= 2);
    QTRY_VERIFY(!welcome->isLoadingPreviews());
    for (int row = 0; row < list->count(); ++row) {
        QCOMPARE(list->item(row)->text(), QString::fromStdString(templates[row]->name()));
        QVERIFY2(!list->item(row)->icon().isNull(), qPrintable(list->item(row)->text() + " has no preview"));
    }
    QVERIFY(welcome->grab().save(flk_test::artifactPath("welcome-window.png")));

    // Not again at later launches; then the last template, chosen with the mouse.
    QVERIFY(welcome->showAtLaunchBox()->isChecked());
    QTest::mouseClick(welcome->showAtLaunchBox(), Qt::LeftButton, {}, QPoint(8, welcome->showAtLaunchBox()->height() / 2));
    QVERIFY(!flk::shouldShowWelcomeScreen(*launch.defaults));
    const int last = list->count() - 1;
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(last)).center());
    QCOMPARE(list->currentRow(), last);
    const auto before = loader.currentScene();
    QTest::mouseClick(welcome->startButton(), Qt::LeftButton);

    QTRY_VERIFY(!window.welcomeWindow());
    QVERIFY(loader.currentScene() != before);
    QCOMPARE(window.sceneView()->scene(), loader.currentScene());
    QCOMPARE(QString::fromStdString(FLKTemplateManager::defaultManager().selectedTemplate()->name()),
             QString::fromStdString(templates[last]->name()));
    // The loaded screen is the chosen template's, not the first one's.
    auto chosenScreen = screenOf(templates[last]->scene());
    QVERIFY(chosenScreen);
    QVERIFY(screenOf(loader.currentScene())->shape()->bounds() == chosenScreen->shape()->bounds());
    QVERIFY(!(chosenScreen->shape()->bounds() == screenBounds));
    QVERIFY(window.sceneView()->isUserInteractionEnabled());
    QVERIFY(panel->isVisible());
}

void StartupTests::laterLaunchesAreNotCentredAndFollowTheWelcomeSetting() {
    Launch launch(settingsFile());
    FLKMainWindow& window = launch.window();
    QCOMPARE(flk::numberOfLaunches(*launch.defaults), int64_t(2));
    QVERIFY(!flk::isFirstLaunch(*launch.defaults));
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(!isCentred(window));

    launch.queue->advanceBy(0.45);
    launch.queue->runPending();
    QVERIFY(window.canvasViewModels());
    QVERIFY(!window.welcomeWindow());
    QVERIFY(window.sceneView()->isUserInteractionEnabled());
}

int main(int argc, char** argv) {
    QTemporaryDir home;
    ::setenv("FLICKWELL_HOME", qPrintable(home.path()), 1);
    ::setenv("FLICKWELL_RESOURCES", FLK_TEST_RESOURCES, 0);
    FLKApplicationSetup::prepareEnvironment();
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    std::string reason;
    if (!FLKApplicationSetup::bindCore(&application, &reason)) {
        qCritical("No OpenGL 4.5 through Qt: %s", reason.c_str());
        return 1;
    }
    flk_test::pinGLDriver();
    StartupTests tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "FLKStartupTests.moc"
