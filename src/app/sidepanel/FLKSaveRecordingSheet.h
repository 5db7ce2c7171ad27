#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

// Asks for a recording's name: a name field, Save and Cancel. Window-modal
// over the panel it belongs to. Save is only offered for a name a file can
// carry.
class FLKSaveRecordingSheet : public QDialog {
    Q_OBJECT

public:
    // `renaming` words it for an existing recording rather than a new one.
    FLKSaveRecordingSheet(const QString& name, bool renaming, QWidget* parent);

    QLineEdit* nameField() const { return name_; }
    QPushButton* saveButton() const { return save_; }
    QPushButton* cancelButton() const { return cancel_; }
    QString name() const;

private:
    QLineEdit* name_ = nullptr;
    QPushButton* save_ = nullptr;
    QPushButton* cancel_ = nullptr;
};
