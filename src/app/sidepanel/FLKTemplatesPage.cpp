#include "app/sidepanel/FLKTemplatesPage.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKMainMenu.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKTemplateGrid.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUserFeedback.h"

namespace {
constexpr int kPreviewSide = 100;

// Runs `refresh` on the main thread's next turn, unless `widget` is gone by then.
void refreshLater(QWidget* widget, std::function<void()> refresh) {
    QMetaObject::invokeMethod(widget, std::move(refresh), Qt::QueuedConnection);
}
}  // namespace

FLKTemplatesPage::FLKTemplatesPage(FLKMainWindow& window, QWidget* parent)
    : QWidget(parent), window_(window) {
    grid_ = new FLKTemplateGrid(kPreviewSide);
    grid_->setObjectName("templateGrid");
    saveButton_ = new QPushButton("Save as Template...");
    renameButton_ = new QPushButton("Rename...");
    deleteButton_ = new QPushButton("Delete");
    importButton_ = new QPushButton("Import...");
    saveButton_->setToolTip("Keep the current scene as a template of your own.");
    importButton_->setToolTip("Add a template folder (.flickwelltemplate).");

    auto* buttons = new QGridLayout;
    buttons->addWidget(saveButton_, 0, 0);
    buttons->addWidget(importButton_, 0, 1);
    buttons->addWidget(renameButton_, 1, 0);
    buttons->addWidget(deleteButton_, 1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(grid_, 1);
    layout->addLayout(buttons);

    // A click chooses; the keyboard's Enter does too.
    connect(grid_, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { chooseTemplateAtRow(grid_->row(item)); });
    connect(grid_, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { chooseTemplateAtRow(grid_->row(item)); });
    connect(grid_, &QListWidget::currentRowChanged, this, &FLKTemplatesPage::refreshButtons);
    // The menu's own item asks for the name and handles clashes with other templates.
    connect(saveButton_, &QPushButton::clicked, this, [this] { window_.mainMenu()->saveAsTemplateAction()->trigger(); });
    connect(renameButton_, &QPushButton::clicked, this, &FLKTemplatesPage::renameCurrentWithDialog);
    connect(deleteButton_, &QPushButton::clicked, this, &FLKTemplatesPage::deleteCurrentWithDialog);
    connect(importButton_, &QPushButton::clicked, this, &FLKTemplatesPage::importWithDialog);

    auto& center = FLKNotificationCenter::defaultCenter();
    templatesObservation_ = FLKObservation(
        center, center.addObserver(kFLKTemplateManagerTemplatesDidUpdateNotification, nullptr,
                                   [this](const FLKNotification&) {
                                       refreshLater(this, [this] {
                                           grid_->reload();
                                           refreshButtons();
                                       });
                                   }));
    loadObservation_ = FLKObservation(
        center, center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                   [this](const FLKNotification&) {
                                       refreshLater(this, [this] { followSelectedTemplate(); });
                                   }));
    refreshButtons();
}

bool FLKTemplatesPage::chooseTemplateAtRow(int row) {
    auto chosen = grid_->templateAtRow(row);
    if (!chosen) return false;
    auto& manager = FLKTemplateManager::defaultManager();
    // The scene shown already is this template's.
    if (manager.selectedTemplate() == chosen && FLKSceneLoader::defaultSceneLoader().currentScene()) return false;
    return window_.documentController()->changeTemplate(chosen);
}

std::shared_ptr<FLKTemplate> FLKTemplatesPage::currentUserTemplate() const {
    auto current = grid_->templateAtRow(grid_->currentRow());
    if (!current || FLKTemplateManager::defaultManager().isBundledTemplate(*current)) return nullptr;
    return current;
}

void FLKTemplatesPage::followSelectedTemplate() {
    const size_t selected = FLKTemplateManager::defaultManager().selectedTemplateIndex();
    if (selected < static_cast<size_t>(grid_->count())) grid_->setCurrentRow(static_cast<int>(selected));
    refreshButtons();
}

void FLKTemplatesPage::refreshButtons() {
    const bool ownTemplate = currentUserTemplate() != nullptr;
    renameButton_->setEnabled(ownTemplate);
    deleteButton_->setEnabled(ownTemplate);
    const QString why = ownTemplate ? QString() : QStringLiteral("Built-in templates stay as they are.");
    renameButton_->setToolTip(why);
    deleteButton_->setToolTip(why);
}

void FLKTemplatesPage::renameCurrentWithDialog() {
    auto current = currentUserTemplate();
    if (!current) return;
    const QString oldName = QString::fromStdString(current->name());
    bool accepted = false;
    const QString name =
        QInputDialog::getText(this, "Rename Template", "New name:", QLineEdit::Normal, oldName, &accepted).trimmed();
    if (!accepted || name.isEmpty() || name == oldName) return;
    FLKError error;
    if (!flk::isValidFileName(name.toStdString())) {
        error = flk::fileSystemErrorWithMessage("\"" + name.toStdString() + "\" cannot name a template.", 0,
                                                "A name may not hold \"/\".");
    } else if (FLKTemplateManager::defaultManager().renameTemplate(current, name.toStdString(), &error)) {
        return;
    }
    FLKUserFeedback::shared().presentError(error);
}

void FLKTemplatesPage::deleteCurrentWithDialog() {
    auto current = currentUserTemplate();
    if (!current) return;
    const auto answer = QMessageBox::question(
        this, "Delete Template",
        QStringLiteral("Delete the template \"%1\"? This cannot be undone.").arg(QString::fromStdString(current->name())),
        QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
    if (answer == QMessageBox::Yes) FLKTemplateManager::defaultManager().removeTemplate(current);
}

void FLKTemplatesPage::importWithDialog() {
    // Templates are folders: the file dialog picks the folder itself.
    const QString path = QFileDialog::getExistingDirectory(this, "Import Template", QDir::homePath());
    if (path.isEmpty()) return;
    if (!FLKTemplate::fileWithURL(path.toStdString())) {
        FLKUserFeedback::shared().presentError(flk::fileSystemErrorWithMessage(
            "The folder \"" + QDir(path).dirName().toStdString() + "\" is not a template.", 0,
            std::string("Templates are folders named \"<name>.") + kFLKFileExtensionFlickwellTemplate + "\"."));
        return;
    }
    FLKTemplateManager::defaultManager().addTemplateFromURL(path.toStdString());
}
