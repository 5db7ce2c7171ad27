#pragma once

#include <string>

#include "editing/FLKPropertyObservable.h"

// The record button of the recording inspector: which of its five faces it
// shows. Observers hear "recordingState".
class FLKRecordButtonViewModel : public FLKPropertyObservable {
public:
    enum RecordingState : unsigned {
        kHidden = 0,     // no device
        kReady = 1,      // a live picture, ready to record
        kPreparing = 2,  // a preview is being started
        kRecording = 3,
        kFinished = 4,   // waiting for the recording to be named
    };

    explicit FLKRecordButtonViewModel(std::string identifier) : identifier_(std::move(identifier)) {}
    const std::string& identifier() const { return identifier_; }
    RecordingState recordingState() const { return recordingState_; }

    void hideRecordingButton() { setRecordingState(kHidden); }
    void showPrepareToRecord() { setRecordingState(kPreparing); }
    void recorderIsReady() { setRecordingState(kReady); }
    void recorderDidStart() { setRecordingState(kRecording); }
    void recorderDidFinish() { setRecordingState(kFinished); }

private:
    void setRecordingState(RecordingState state) {
        recordingState_ = state;
        didChangeProperty("recordingState");
    }

    std::string identifier_;
    RecordingState recordingState_ = kHidden;
};
