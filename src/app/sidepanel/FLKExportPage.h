#pragma once

#include <QString>
#include <QWidget>

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "core/exporter/FLKExportSettings.h"
#include "core/exporter/FLKExportType.h"
#include "core/platform/FLKNotificationCenter.h"

class FLKExportOperationRow;
class FLKExportQueue;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QVBoxLayout;

// The export page of the inspector: the presets of each type with their
// limits, a custom size, the destination, what the checked presets will not
// like about the video, and a row per queued export. Export queues one
// operation per checked preset on the shared export queue; the queue itself
// presents the session's errors together when it ends. Main thread only;
// the export notifications reach it through queued calls.
class FLKExportPage : public QWidget {
    Q_OBJECT

public:
    explicit FLKExportPage(QWidget* parent = nullptr);
    ~FLKExportPage() override;

    // The check box of the preset named so, or null.
    QCheckBox* presetCheckBox(const QString& name) const;
    QCheckBox* customSizeCheckBox() const { return customSize_; }
    QComboBox* customTypeBox() const { return customType_; }
    QSpinBox* customWidthBox() const { return customWidth_; }
    QSpinBox* customHeightBox() const { return customHeight_; }
    QLineEdit* folderField() const { return folder_; }
    QLineEdit* nameField() const { return name_; }
    QLabel* warningsLabel() const { return warnings_; }
    QLabel* summaryLabel() const { return summary_; }
    QPushButton* exportButton() const { return export_; }
    QPushButton* cancelAllButton() const { return cancelAll_; }
    // The rows of the last Export, in queue order.
    std::vector<FLKExportOperationRow*> rows() const;

    // The warnings of the checked presets against the current scene and
    // timeline, one per line; empty when every one fits.
    QStringList currentIssues() const;

    // Queues the checked presets; with warnings, once the user said to
    // export anyway in the sheet it opens ("exportWarnings").
    void exportCheckedPresets();

signals:
    // The shared queue ran empty after exports this page queued.
    void exportsDidFinish();

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Choice {
        std::shared_ptr<const FLKExportSettings> preset;
        FLKExportType type;
        bool custom;
    };
    struct PresetBox {
        QCheckBox* checkBox;
        Choice choice;
    };

    void addPresetGroup(QVBoxLayout* layout, FLKExportType type, const QString& title);
    QWidget* makeCustomSizeGroup();
    QWidget* makeDestinationGroup();
    void customTypeChanged();
    void startExports(const std::vector<Choice>& choices, const std::filesystem::path& folder);
    void chooseFolder();
    void updateState();
    std::vector<Choice> checkedChoices() const;
    void observe(const char* name, void (FLKExportPage::*handler)(const void*));
    void observe(const char* name, std::function<void(FLKExportPage*, const void*)> handler);
    void operationDidStart(const void* operation);
    void operationDidUpdate(const void* operation);
    void operationDidFinish(const void* operation);
    void queueDidStart(const void*);
    void queueDidFinish(const void*);
    FLKExportOperationRow* rowFor(const void* operation) const;

    std::shared_ptr<FLKExportQueue> queue_;
    std::vector<PresetBox> presets_;
    QCheckBox* customSize_ = nullptr;
    QComboBox* customType_ = nullptr;
    QSpinBox* customWidth_ = nullptr;
    QSpinBox* customHeight_ = nullptr;
    QLineEdit* folder_ = nullptr;
    QLineEdit* name_ = nullptr;
    QLabel* warnings_ = nullptr;
    QLabel* summary_ = nullptr;
    QPushButton* export_ = nullptr;
    QPushButton* cancelAll_ = nullptr;
    QWidget* rowsBox_ = nullptr;
    QVBoxLayout* rowsLayout_ = nullptr;
    bool waitingForQueue_ = false;  // this page queued exports the queue has not finished
    std::vector<FLKObservation> observations_;
};
