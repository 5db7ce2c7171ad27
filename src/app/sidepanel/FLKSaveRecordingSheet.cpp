#include "app/sidepanel/FLKSaveRecordingSheet.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

FLKSaveRecordingSheet::FLKSaveRecordingSheet(const QString& name, bool renaming, QWidget* parent) : QDialog(parent) {
    setObjectName("FLKSaveRecordingSheet");
    setWindowTitle(renaming ? "Rename Recording" : "Keep Recording");
    setWindowModality(Qt::WindowModal);
    auto* prompt = new QLabel(renaming ? "New name of the recording:"
                                       : "Name the recording to keep it. Cancel discards it.",
                              this);
    prompt->setWordWrap(true);
    name_ = new QLineEdit(name, this);
    name_->setObjectName("recordingName");
    name_->setPlaceholderText("Recording name");
    name_->selectAll();
    auto* buttons = new QDialogButtonBox(this);
    save_ = buttons->addButton("Save", QDialogButtonBox::AcceptRole);
    cancel_ = buttons->addButton("Cancel", QDialogButtonBox::RejectRole);
    save_->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    // The name becomes a file name: no folders, nothing hidden.
    auto refresh = [this] {
        const QString text = this->name();
        save_->setEnabled(!text.isEmpty() && !text.contains('/') && !text.startsWith('.'));
    };
    connect(name_, &QLineEdit::textChanged, this, refresh);
    refresh();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt);
    layout->addWidget(name_);
    layout->addWidget(buttons);
    setMinimumWidth(320);
}

QString FLKSaveRecordingSheet::name() const { return name_->text().trimmed(); }
