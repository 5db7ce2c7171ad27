// Launching the program: the user defaults of a fresh install, the window's
// place, the launch sequence on a main queue whose time the test moves, and
// the welcome screen driven with real clicks.
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDockWidget>
#include <QListWidget>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

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

xcb_connection_t* xConnection() {
    return qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_atom_t atom(const char* name) {
    auto* reply = xcb_intern_atom_reply(xConnection(), xcb_intern_atom(xConnection(), 0, std::strlen(name), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return result;
}

// A shown top-level window of another program, by the instance part of its
// class ("flickwell" for the program, whatever its window's title).
std::optional<xcb_window_t> shownWindowOfProgram(const char* instance) {
    xcb_connection_t* c = xConnection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
        xcb_query_tree_reply(c, xcb_query_tree(c, root), nullptr), &std::free);
    if (!tree) return std::nullopt;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> attributes(
            xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, children[i]), nullptr), &std::free);
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) continue;
        std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> property(
            xcb_get_property_reply(
                c, xcb_get_property(c, 0, children[i], XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64), nullptr),
            &std::free);
        if (!property) continue;
        const auto* value = static_cast<const char*>(xcb_get_property_value(property.get()));
        const int length = xcb_get_property_value_length(property.get());
        if (std::strlen(instance) < static_cast<size_t>(length) && std::strcmp(value, instance) == 0) return children[i];
    }
    return std::nullopt;
}

// What the window's close button does.
void askToClose(xcb_window_t window) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom("WM_PROTOCOLS");
    event.data.data32[0] = atom("WM_DELETE_WINDOW");
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(xConnection(), 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
    xcb_flush(xConnection());
}

}  // namespace

class StartupTests : public QObject {
    Q_OBJECT

private slots:
    void firstLaunchCentresTheWindowAndTheWelcomeScreenStartsTheChosenTemplate();
    void laterLaunchesAreNotCentredAndFollowTheWelcomeSetting();
    void theOpenGLAlertNamesTheProblem();
    void withoutOpenGL45TheProgramShowsTheAlertAndExitsOnceItIsClosed();

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

void StartupTests::theOpenGLAlertNamesTheProblem() {
    QString text, informativeText;
    QMessageBox::StandardButtons buttons;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    std::function<void()> readAndDismiss = [&] {
        auto* alert = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!alert) return QTimer::singleShot(10, readAndDismiss);
        text = alert->text();
        informativeText = alert->informativeText();
        buttons = alert->standardButtons();
        icon = alert->icon();
        alert->button(QMessageBox::Ok)->click();
    };
    QTimer::singleShot(0, readAndDismiss);
    FLKApplicationSetup::showOpenGLNotSupportedAlert();
    QCOMPARE(text, QString("OpenGL 4.5 not supported."));
    QCOMPARE(informativeText, QString("This device does not support OpenGL 4.5 rendering and cannot run Flickwell."));
    QCOMPARE(buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(icon, QMessageBox::Critical);
}

void StartupTests::withoutOpenGL45TheProgramShowsTheAlertAndExitsOnceItIsClosed() {
    QTemporaryDir home;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("FLICKWELL_HOME", home.path());
    // Mesa then offers no more than OpenGL 3.3.
    environment.insert("MESA_GL_VERSION_OVERRIDE", "3.3");
    // What the driver keeps of its failed context at exit is not the program's.
    environment.insert("ASAN_OPTIONS", "detect_leaks=0");
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(FLK_PROGRAM, QStringList());
    QVERIFY2(program.waitForStarted(), qPrintable(program.errorString()));

    std::optional<xcb_window_t> alert;
    QTRY_VERIFY_WITH_TIMEOUT((alert = shownWindowOfProgram("flickwell")).has_value(), 60000);
    // It waits for the user.
    QVERIFY(!program.waitForFinished(0));
    QVERIFY(QGuiApplication::primaryScreen()->grabWindow(*alert).save(flk_test::artifactPath("opengl-alert.png")));

    askToClose(*alert);
    QVERIFY(program.waitForFinished(60000));
    const QString output = QString::fromLocal8Bit(program.readAll());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QVERIFY2(program.exitCode() == 0, qPrintable(output));
    QVERIFY2(output.contains("OpenGL 4.5 not supported."), qPrintable(output));
    // No main window came up behind the alert.
    QVERIFY(!shownWindowOfProgram("flickwell"));
}

int main(int argc, char** argv) { return flk_test::runTests<StartupTests>(argc, argv); }

#include "FLKStartupTests.moc"
