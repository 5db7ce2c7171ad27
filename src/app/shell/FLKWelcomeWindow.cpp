#include "app/shell/FLKWelcomeWindow.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKTemplateGrid.h"
#include "core/platform/FLKUserDefaultsKeys.h"

namespace {
constexpr int kPreviewSide = 180;
}  // namespace

FLKWelcomeWindow::FLKWelcomeWindow(FLKUserDefaults& defaults, FLKDocumentController& documents, QWidget* parent)
    : QDialog(parent), defaults_(defaults), documents_(documents) {
    setWindowTitle("Welcome to Flickwell");
    setAttribute(Qt::WA_DeleteOnClose);

    auto* heading = new QLabel("<h2>Welcome to Flickwell</h2>Choose a template to start your video with, "
                               "or open one you made before.");
    templateList_ = new FLKTemplateGrid(kPreviewSide);
    const QSize cell = templateList_->gridSize();
    templateList_->setMinimumSize(3 * cell.width() + 24, 2 * cell.height() + 8);

    recentList_ = new QListWidget;
    for (const QString& path : documents_.recentDocuments()) {
        auto* item = new QListWidgetItem(QFileInfo(path).completeBaseName(), recentList_);
        item->setToolTip(path);
        item->setData(Qt::UserRole, path);
    }
    recentList_->setMinimumWidth(200);
    openButton_ = new QPushButton("Open...");
    auto* recentColumn = new QVBoxLayout;
    recentColumn->addWidget(new QLabel("<b>Recent documents</b>"));
    if (recentList_->count() == 0) {
        auto* none = new QLabel("Documents you save appear here.");
        none->setWordWrap(true);
        none->setEnabled(false);
        recentColumn->addWidget(none);
    }
    recentColumn->addWidget(recentList_, 1);
    recentColumn->addWidget(openButton_);

    showAtLaunchBox_ = new QCheckBox("Show this window when Flickwell starts");
    showAtLaunchBox_->setChecked(flk::shouldShowWelcomeScreen(defaults_));
    connect(showAtLaunchBox_, &QCheckBox::toggled, this,
            [this](bool checked) { flk::setShouldShowWelcomeScreen(checked, defaults_); });

    auto* buttons = new QDialogButtonBox;
    startButton_ = buttons->addButton("Start", QDialogButtonBox::AcceptRole);
    startButton_->setDefault(true);
    startButton_->setEnabled(templateList_->count() > 0);
    buttons->addButton("Close", QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(startButton_, &QPushButton::clicked, this, [this] { chooseTemplateAtRow(templateList_->currentRow()); });
    connect(templateList_, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { chooseTemplateAtRow(templateList_->row(item)); });
    connect(recentList_, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { openRecentAtRow(recentList_->row(item)); });
    connect(openButton_, &QPushButton::clicked, this, [this] {
        if (documents_.openWithDialog(this)) accept();
    });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    auto* middle = new QHBoxLayout;
    middle->addWidget(templateList_, 1);
    middle->addLayout(recentColumn);
    layout->addLayout(middle, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(showAtLaunchBox_);
    bottom->addStretch();
    bottom->addWidget(buttons);
    layout->addLayout(bottom);
}

bool FLKWelcomeWindow::isLoadingPreviews() const { return templateList_->isLoadingPreviews(); }

bool FLKWelcomeWindow::chooseTemplateAtRow(int row) {
    auto chosen = templateList_->templateAtRow(row);
    if (!chosen || !documents_.newDocument(chosen)) return false;
    accept();
    return true;
}

bool FLKWelcomeWindow::openRecentAtRow(int row) {
    QListWidgetItem* item = recentList_->item(row);
    if (!item || !documents_.openDocument(item->data(Qt::UserRole).toString())) return false;
    accept();
    return true;
}
