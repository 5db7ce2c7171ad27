#pragma once

#include "core/platform/FLKSampleBuffer.h"

class FLKDeviceScreenRecorder;

// Receives a recorder's preview frames on the main thread.
class FLKDeviceScreenOutput {
public:
    virtual ~FLKDeviceScreenOutput() = default;
    virtual void recorderDidOutputSampleBuffer(FLKDeviceScreenRecorder& recorder, const FLKSampleBuffer& sampleBuffer) = 0;
};
