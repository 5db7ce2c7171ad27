#include "app/shell/FLKPreferencesDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/shell/FLKApplicationSetup.h"
#include "core/platform/FLKPerformanceSettings.h"
#include "core/platform/FLKUserDefaultsKeys.h"

namespace {
struct Level {
    unsigned level;
    const char* title;
    const char* meaning;
};

// What each level trades, highest first.
constexpr Level kLevels[] = {
    {3, "3 - Best quality", "Smoothest edges (4x multisampling); the preview is drawn at the window's resolution."},
    {2, "2 - Balanced", "Lighter edge smoothing (2x) and quicker video drawing, at the window's resolution."},
    {1, "1 - Fastest",
     "One sample a pixel with edges smoothed by how much of each pixel they cover, quicker video drawing, and the "
     "preview drawn at no more than 1280 x 720 pixels and scaled: for slow graphics."},
};
}  // namespace

FLKPreferencesDialog::FLKPreferencesDialog(FLKPerformanceSettings& performance, FLKUserDefaults& defaults,
                                           QWidget* parent)
    : QDialog(parent), performance_(performance), defaults_(defaults) {
    setWindowTitle("Preferences");
    setMinimumWidth(440);
    auto* layout = new QVBoxLayout(this);

    auto* performanceGroup = new QGroupBox("Preview Performance", this);
    auto* levelsLayout = new QVBoxLayout(performanceGroup);
    levels_ = new QButtonGroup(this);
    for (const Level& level : kLevels) {
        auto* button = new QRadioButton(level.title, performanceGroup);
        auto* meaning = new QLabel(level.meaning, performanceGroup);
        meaning->setWordWrap(true);
        meaning->setIndent(24);
        levels_->addButton(button, static_cast<int>(level.level));
        levelsLayout->addWidget(button);
        levelsLayout->addWidget(meaning);
    }
    auto* note = new QLabel("The preview runs at 30 frames per second at every level; exports are not affected. "
                            "The level is not kept between starts.",
                            performanceGroup);
    note->setWordWrap(true);
    levelsLayout->addWidget(note);
    if (FLKApplicationSetup::drawsInSoftware()) {
        auto* software = new QLabel(QString("This computer draws with software OpenGL, so the preview started at "
                                            "level %1.")
                                        .arg(FLKApplicationSetup::kSoftwarePerformanceLevel),
                                    performanceGroup);
        software->setObjectName("softwareRenderingNote");
        software->setWordWrap(true);
        levelsLayout->addWidget(software);
    }
    connect(levels_, &QButtonGroup::idClicked, this,
            [this](int level) { performance_.setPerformanceLevel(static_cast<unsigned>(level)); });
    layout->addWidget(performanceGroup);

    auto* general = new QGroupBox("General", this);
    auto* generalLayout = new QVBoxLayout(general);
    welcome_ = new QCheckBox("Show the welcome screen at start", general);
    connect(welcome_, &QCheckBox::toggled, this, [this](bool on) { flk::setShouldShowWelcomeScreen(on, defaults_); });
    sound_ = new QCheckBox("Play sounds", general);
    connect(sound_, &QCheckBox::toggled, this, [this](bool on) { flk::setSoundOn(on, defaults_); });
    generalLayout->addWidget(welcome_);
    generalLayout->addWidget(sound_);
    layout->addWidget(general);

    for (QGroupBox* group : {performanceGroup, general}) group->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    layout->addStretch();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    showCurrentValues();
    // The level can change elsewhere while the dialog is open.
    auto& center = FLKNotificationCenter::defaultCenter();
    levelObservation_ = FLKObservation(
        center, center.addObserver(FLKPerformanceSettingsDidUpdatePerformanceLevel, &performance_,
                                   [this](const FLKNotification&) {
                                       QMetaObject::invokeMethod(this, [this] { showCurrentValues(); },
                                                                 Qt::QueuedConnection);
                                   }));
}

QRadioButton* FLKPreferencesDialog::levelButton(unsigned level) const {
    return qobject_cast<QRadioButton*>(levels_->button(static_cast<int>(level)));
}

void FLKPreferencesDialog::showCurrentValues() {
    if (QRadioButton* button = levelButton(performance_.performanceLevel())) button->setChecked(true);
    const QSignalBlocker blockWelcome(welcome_);
    const QSignalBlocker blockSound(sound_);
    welcome_->setChecked(flk::shouldShowWelcomeScreen(defaults_));
    sound_->setChecked(flk::isSoundOn(defaults_));
}
