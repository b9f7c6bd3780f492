// Keeps the audio streams in step with the current Multi-Sample, and tells the GUI thread
// what playback on the audio thread did.
#pragma once

#include "core/Records.h"
#include "devices/AudioStreamConfig.h"

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <string>

namespace tg {

// The model-listener side is a set of plain calls (the shell's listener adapter forwards
// the model's notifications to them), so this class needs only the Multi-Sample record and
// the preferences' output device name, not the model itself.
//
// Playback events: the audio thread must not allocate, and a queued signal allocates, so the
// audio thread only publishes atomics (playing flag, cursor) and a GUI-thread timer turns
// their changes into startPlayback(), stopPlayback() and frameIndexChanged(), which reach
// this object's own slots; those re-emit them as playbackStarted() / playbackStopped() /
// playPositionChanged() for the widgets (play cursor, key highlight).
class AudioManager : public QObject {
    Q_OBJECT

  public:
    explicit AudioManager(QObject* parent = nullptr);

    // The audio output device chosen in the preferences (a name of the output table).
    void setOutputDeviceName(const std::string& name) { outputDeviceName_ = name; }
    const std::string& outputDeviceName() const { return outputDeviceName_; }

    // Step 1: the input configuration of `msl` (device and format by name, the stored
    // channels kept only where the device has that many named channels, latency -1).
    AudioStreamConfig buildInputConfig(const TGmsl& msl) const;
    // Step 2: the output configuration: the preferences' device at 44100 Hz, 16 bits,
    // stereo, unless the input has a rate, whose rate and bits it then takes.
    AudioStreamConfig buildOutputConfig(const AudioStreamConfig& input) const;
    // Step 3: opens and starts the streams, unless both configurations equal the ones in use
    // field by field, in which case nothing is reopened and the result is 1.
    int apply(const TGmsl& msl, std::string& msg);

    // Model notifications. Each re-applies when it concerns the audio input; the message of
    // a failed apply is kept in lastMessage().
    void currentMultiSampleChanged(const TGmsl& msl);
    void multiSampleSettingChanged(const TGmsl& msl, const std::string& key);
    const std::string& lastMessage() const { return lastMessage_; }

    // How often apply() really opened streams (for the tests and the log).
    int openCount() const { return openCount_; }

  signals:
    void startPlayback();
    void stopPlayback();
    void frameIndexChanged(unsigned int frame);

    void playbackStarted();
    void playbackStopped();
    void playPositionChanged(unsigned int frame);

  public slots:
    void onPlaybackStarted();
    void onPlaybackStopped();
    void onFrameIndexChanged(unsigned int frame);

  private slots:
    void pollPlayback();

  private:
    std::string outputDeviceName_;
    std::string lastMessage_;
    int openCount_ = 0;
    QTimer pollTimer_;
    bool wasPlaying_ = false;
    int64_t lastFrame_ = -1;
};

} // namespace tg
