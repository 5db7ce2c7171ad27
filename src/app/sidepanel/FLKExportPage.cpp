#include "app/sidepanel/FLKExportPage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <cmath>
#include <filesystem>

#include "app/sidepanel/FLKExportOperationRow.h"
#include "core/exporter/FLKExportOperation.h"
#include "core/exporter/FLKExportPresets.h"
#include "core/exporter/FLKExportQueue.h"
#include "core/exporter/FLKExportVideoSanityChecker.h"
#include "core/exporter/FLKVideoSizeCalculator.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/timeline/FLKTimeline.h"

namespace {
QString number(double value) { return QString::number(value, 'g', 4); }

// "1080 × 1920 · 3–60 s · 30 fps": what a preset writes and accepts.
QString presetDetails(const FLKExportSettings& preset, FLKExportType type) {
    const FLKSize size = preset.maxVideoResolution();
    QString details = QStringLiteral("%1 × %2").arg(std::lround(size.width)).arg(std::lround(size.height));
    if (preset.maxDuration() > 0) {
        details += QStringLiteral(" · %1–%2 s").arg(number(preset.minDuration()), number(preset.maxDuration()));
    }
    const auto fps = type == FLKExportTypeGIF ? FLKExportPresets::gifFps(preset) : FLKExportPresets::kRenderFps;
    return details + QStringLiteral(" · %1 fps").arg(fps);
}

QString defaultFolder() {
    const QString movies = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    return !movies.isEmpty() && QDir(movies).exists() ? movies : QDir::homePath();
}

QString text(const FLKError& issue) {
    return QString::fromStdString(issue.failureReason + " " + issue.recoverySuggestion);
}
}  // namespace

FLKExportPage::FLKExportPage(QWidget* parent)
    : QWidget(parent), queue_(FLKExportQueue::sharedQueue()) {
    // What to export scrolls; the warnings, the buttons and the exports stay in sight below.
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    outer->addWidget(scroll, 1);
    auto* content = new QWidget(scroll);
    auto* layout = new QVBoxLayout(content);
    addPresetGroup(layout, FLKExportTypeMP4, "MP4 Video");
    addPresetGroup(layout, FLKExportTypeGIF, "Animated GIF");
    layout->addWidget(makeCustomSizeGroup());
    layout->addWidget(makeDestinationGroup());
    layout->addStretch();
    for (auto* group : content->findChildren<QGroupBox*>()) group->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    scroll->setWidget(content);
    scroll->setMinimumWidth(content->minimumSizeHint().width() + scroll->verticalScrollBar()->sizeHint().width());

    auto* bottom = new QVBoxLayout;
    bottom->setContentsMargins(9, 0, 9, 9);
    outer->addLayout(bottom);
    warnings_ = new QLabel(this);
    warnings_->setWordWrap(true);
    // Long warnings wrap to the page rather than widen the dock.
    warnings_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    warnings_->setStyleSheet("color: #b35c00;");
    warnings_->hide();
    bottom->addWidget(warnings_);

    auto* buttons = new QHBoxLayout;
    export_ = new QPushButton("Export", this);
    export_->setDefault(true);
    connect(export_, &QPushButton::clicked, this, &FLKExportPage::exportCheckedPresets);
    cancelAll_ = new QPushButton("Cancel All", this);
    cancelAll_->setEnabled(false);
    connect(cancelAll_, &QPushButton::clicked, this, [this] { queue_->cancelAllOperations(); });
    buttons->addWidget(export_);
    buttons->addWidget(cancelAll_);
    buttons->addStretch();
    bottom->addLayout(buttons);

    summary_ = new QLabel(this);
    summary_->setWordWrap(true);
    bottom->addWidget(summary_);
    rowsBox_ = new QWidget(this);
    rowsLayout_ = new QVBoxLayout(rowsBox_);
    rowsLayout_->setContentsMargins(0, 0, 0, 0);
    bottom->addWidget(rowsBox_);

    observe(FLKExportOperationDidStartNotification, &FLKExportPage::operationDidStart);
    observe(FLKExportOperationDidUpdateNotification, &FLKExportPage::operationDidUpdate);
    observe(FLKExportOperationDidFinishNotification, &FLKExportPage::operationDidFinish);
    observe(FLKExportQueueDidStartNotification, &FLKExportPage::queueDidStart);
    observe(FLKExportQueueDidFinishNotification, &FLKExportPage::queueDidFinish);
    // A new scene or timeline changes what the presets say about the video.
    observe(kFLKSceneLoaderDidLoadSceneNotification, [](FLKExportPage* self, const void*) { self->updateState(); });
    updateState();
}

FLKExportPage::~FLKExportPage() = default;

void FLKExportPage::observe(const char* name, void (FLKExportPage::*handler)(const void*)) {
    observe(name, [handler](FLKExportPage* self, const void* object) { (self->*handler)(object); });
}

void FLKExportPage::observe(const char* name, std::function<void(FLKExportPage*, const void*)> handler) {
    auto& center = FLKNotificationCenter::defaultCenter();
    // Posted from whichever thread: handled on ours, and dropped once the page is gone.
    observations_.emplace_back(center, center.addObserver(name, nullptr, [this, handler](const FLKNotification& n) {
                                   const void* object = n.object;
                                   QMetaObject::invokeMethod(
                                       this, [this, handler, object] { handler(this, object); }, Qt::QueuedConnection);
                               }));
}

QCheckBox* FLKExportPage::presetCheckBox(const QString& name) const {
    for (const auto& box : presets_) {
        if (box.checkBox->text() == name) return box.checkBox;
    }
    return nullptr;
}

void FLKExportPage::addPresetGroup(QVBoxLayout* layout, FLKExportType type, const QString& title) {
    auto* group = new QGroupBox(title, layout->parentWidget());
    auto* list = new QVBoxLayout(group);
    list->setSpacing(2);
    FLKError error;
    const auto presets = FLKExportPresets::presetsOfType(type, &error);
    if (presets.empty()) {
        auto* none = new QLabel(error.localizedDescription.empty() ? QString("No presets.")
                                                                    : QString::fromStdString(error.fullMessage()),
                                group);
        none->setWordWrap(true);
        list->addWidget(none);
    }
    for (const auto& preset : presets) {
        auto* check = new QCheckBox(QString::fromStdString(preset->name()), group);
        if (preset->isFrameless()) check->setToolTip("A store preview: it must show the screen without a device.");
        connect(check, &QCheckBox::toggled, this, &FLKExportPage::updateState);
        auto* details = new QLabel(presetDetails(*preset, type), group);
        details->setIndent(24);
        details->setStyleSheet("color: palette(placeholder-text);");
        list->addWidget(check);
        list->addWidget(details);
        presets_.push_back({check, {preset, type, false}});
    }
    layout->addWidget(group);
}

QWidget* FLKExportPage::makeCustomSizeGroup() {
    auto* group = new QGroupBox("Custom Size");
    auto* form = new QHBoxLayout(group);
    customSize_ = new QCheckBox(group);
    customSize_->setToolTip("Export at this size too");
    connect(customSize_, &QCheckBox::toggled, this, &FLKExportPage::updateState);
    customType_ = new QComboBox(group);
    customType_->addItem("MP4", QVariant::fromValue(static_cast<qulonglong>(FLKExportTypeMP4)));
    customType_->addItem("GIF", QVariant::fromValue(static_cast<qulonglong>(FLKExportTypeGIF)));
    customWidth_ = new QSpinBox(group);
    customHeight_ = new QSpinBox(group);
    for (QSpinBox* side : {customWidth_, customHeight_}) {
        // Exported sides are even.
        side->setSingleStep(2);
        side->setSuffix(" px");
    }
    connect(customType_, &QComboBox::currentIndexChanged, this, &FLKExportPage::customTypeChanged);
    connect(customType_, &QComboBox::currentIndexChanged, this, &FLKExportPage::updateState);
    customTypeChanged();
    customWidth_->setValue(1280);
    customHeight_->setValue(720);
    form->addWidget(customSize_);
    form->addWidget(customType_);
    form->addWidget(customWidth_);
    form->addWidget(new QLabel("×", group));
    form->addWidget(customHeight_);
    form->addStretch();
    return group;
}

void FLKExportPage::customTypeChanged() {
    const auto type = static_cast<FLKExportType>(customType_->currentData().toULongLong());
    auto calculator = FLKVideoSizeCalculator::calculatorWithType(type, {});
    for (QSpinBox* side : {customWidth_, customHeight_}) {
        side->setRange(static_cast<int>(calculator->minHeight()), static_cast<int>(calculator->maxHeight()));
    }
}

QWidget* FLKExportPage::makeDestinationGroup() {
    auto* group = new QGroupBox("Destination");
    auto* form = new QFormLayout(group);
    name_ = new QLineEdit("Flickwell Video", group);
    name_->setToolTip("Each file is named after this and its preset");
    connect(name_, &QLineEdit::textChanged, this, &FLKExportPage::updateState);
    form->addRow("Name:", name_);
    auto* folderRow = new QHBoxLayout;
    folder_ = new QLineEdit(defaultFolder(), group);
    connect(folder_, &QLineEdit::textChanged, this, &FLKExportPage::updateState);
    auto* choose = new QPushButton("Choose...", group);
    connect(choose, &QPushButton::clicked, this, &FLKExportPage::chooseFolder);
    folderRow->addWidget(folder_);
    folderRow->addWidget(choose);
    form->addRow("Folder:", folderRow);
    return group;
}

void FLKExportPage::chooseFolder() {
    const QString folder = QFileDialog::getExistingDirectory(this, "Export To", folder_->text());
    if (!folder.isEmpty()) folder_->setText(folder);
}

void FLKExportPage::showEvent(QShowEvent* event) {
    updateState();
    QWidget::showEvent(event);
}

std::vector<FLKExportPage::Choice> FLKExportPage::checkedChoices() const {
    std::vector<Choice> choices;
    for (const auto& box : presets_) {
        if (box.checkBox->isChecked()) choices.push_back(box.choice);
    }
    if (customSize_->isChecked()) {
        const auto type = static_cast<FLKExportType>(customType_->currentData().toULongLong());
        const FLKSize size{static_cast<double>(FLKVideoSizeCalculator::evenLength(customWidth_->value())),
                           static_cast<double>(FLKVideoSizeCalculator::evenLength(customHeight_->value()))};
        choices.push_back({FLKExportPresets::customPreset(
                               size, type == FLKExportTypeGIF ? FLKExportPresets::kDefaultGIFFps
                                                              : FLKExportPresets::kRenderFps),
                           type, true});
    }
    return choices;
}

QStringList FLKExportPage::currentIssues() const {
    QStringList issues;
    const auto& loader = FLKSceneLoader::defaultSceneLoader();
    const auto& scene = loader.currentScene();
    const auto& timeline = loader.currentTimeline();
    for (const auto& choice : checkedChoices()) {
        // A size of the user's own has no limits to break.
        if (choice.custom) continue;
        if (timeline) {
            for (const auto& issue : FLKExportVideoSanityChecker::issuesInVideo(*timeline, *choice.preset)) {
                issues << text(issue);
            }
        }
        if (!scene) continue;
        if (auto issue = FLKExportPresets::framelessIssue(*choice.preset, *scene)) issues << text(*issue);
    }
    return issues;
}

void FLKExportPage::updateState() {
    const QStringList issues = currentIssues();
    warnings_->setText(issues.join("\n"));
    warnings_->setVisible(!issues.isEmpty());
    export_->setEnabled(!checkedChoices().empty() && !name_->text().trimmed().isEmpty());
}

void FLKExportPage::exportCheckedPresets() {
    auto choices = checkedChoices();
    if (choices.empty()) return;
    const std::filesystem::path folder(folder_->text().toStdString());
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) {
        FLKUserFeedback::shared().presentError(flk::fileSystemErrorWithMessage(
            "The folder \"" + folder.string() + "\" does not exist.", 0, "Choose a folder to export to."));
        return;
    }
    const std::string name = name_->text().trimmed().toStdString();
    if (!flk::isValidFileName(name)) {
        FLKUserFeedback::shared().presentError(flk::fileSystemErrorWithMessage(
            "\"" + name + "\" cannot name a file.", 0, "A name may not hold \"/\"."));
        return;
    }
    const QStringList issues = currentIssues();
    if (issues.isEmpty()) return startExports(choices, folder);
    // Window-modal and without a nested event loop: the exports start from its answer.
    auto* ask = new QMessageBox(QMessageBox::Warning, "Export", "Some exports do not fit their presets.",
                                QMessageBox::Cancel, this);
    ask->setObjectName("exportWarnings");
    ask->setAttribute(Qt::WA_DeleteOnClose);
    ask->setInformativeText(issues.join("\n\n"));
    QPushButton* anyway = ask->addButton("Export Anyway", QMessageBox::AcceptRole);
    connect(anyway, &QPushButton::clicked, this,
            [this, choices = std::move(choices), folder] { startExports(choices, folder); });
    ask->open();
}

void FLKExportPage::startExports(const std::vector<Choice>& choices, const std::filesystem::path& folder) {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    const auto scene = loader.currentScene();
    const auto timeline = loader.currentTimeline();
    if (!scene || !scene->mainCamera()) return;
    // The rows of finished exports make way for the new ones.
    for (FLKExportOperationRow* row : rows()) {
        if (row->operation()->isFinished()) delete row;
    }
    summary_->clear();
    const std::string baseName = name_->text().trimmed().toStdString();
    std::vector<std::shared_ptr<FLKExportOperation>> operations;
    for (const auto& choice : choices) {
        const auto extension = std::string(".") + FLKFileTypeForExportType(choice.type);
        const auto destination =
            flk::uniqueFileURL(flk::fileURLByAddingSuffix(folder / (baseName + extension), choice.preset->name()));
        auto operation = FLKExportOperation::operationWithScene(
            *scene, timeline, choice.type, destination,
            FLKExportPresets::exportFrame(*choice.preset, scene->mainCamera()->frame()),
            choice.preset->maxVideoResolution(), FLKExportPresets::kRenderFps);
        operation->setName(choice.preset->name());
        if (choice.type == FLKExportTypeGIF) operation->setOutputFps(FLKExportPresets::gifFps(*choice.preset));
        rowsLayout_->addWidget(new FLKExportOperationRow(operation, rowsBox_));
        operations.push_back(operation);
    }
    waitingForQueue_ = true;
    cancelAll_->setEnabled(true);
    // Added in one turn of the main queue: one session, one finish.
    for (const auto& operation : operations) queue_->addOperation(operation);
}

std::vector<FLKExportOperationRow*> FLKExportPage::rows() const {
    std::vector<FLKExportOperationRow*> result;
    for (int i = 0; i < rowsLayout_->count(); ++i) {
        if (auto* row = qobject_cast<FLKExportOperationRow*>(rowsLayout_->itemAt(i)->widget())) result.push_back(row);
    }
    return result;
}

FLKExportOperationRow* FLKExportPage::rowFor(const void* operation) const {
    for (FLKExportOperationRow* row : rows()) {
        if (row->operation().get() == operation) return row;
    }
    return nullptr;
}

void FLKExportPage::operationDidStart(const void* operation) {
    if (auto* row = rowFor(operation)) row->operationDidStart();
}

void FLKExportPage::operationDidUpdate(const void* operation) {
    if (auto* row = rowFor(operation)) row->operationDidUpdate();
}

void FLKExportPage::operationDidFinish(const void* operation) {
    if (auto* row = rowFor(operation)) row->operationDidFinish();
}

void FLKExportPage::queueDidStart(const void*) { cancelAll_->setEnabled(true); }

void FLKExportPage::queueDidFinish(const void*) {
    cancelAll_->setEnabled(false);
    if (!waitingForQueue_) return;
    waitingForQueue_ = false;
    int written = 0;
    int cancelled = 0;
    int failed = 0;
    for (FLKExportOperationRow* row : rows()) {
        // The queue's finish can overtake an operation's own queued call.
        row->operationDidFinish();
        const auto& operation = row->operation();
        operation->isCancelled() ? ++cancelled : operation->error() ? ++failed : ++written;
    }
    QStringList parts;
    if (written) parts << QStringLiteral("%1 exported").arg(written);
    if (cancelled) parts << QStringLiteral("%1 cancelled").arg(cancelled);
    if (failed) parts << QStringLiteral("%1 failed").arg(failed);
    summary_->setText(parts.join(", ") + ".");
    emit exportsDidFinish();
}
