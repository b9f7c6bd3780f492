// Keeps the MIDI output in step with the current Multi-Sample (device, program, reset,
// controllers) and turns incoming notes into Key-Sample playback.
#pragma once

#include "core/Records.h"
#include "devices/MidiMessages.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <string>
#include <vector>

namespace tg {

// The model-listener side is a set of plain calls taking the Multi-Sample record (the
// shell's listener adapter forwards the model's notifications), so this class needs no model.
// What it must do to the model or the project is handed in as functions:
// - the note player plays a note's Key-Sample (the project knows its audio),
// - the controller capture reports whether capture is on and stores a received controller
//   in the current Multi-Sample.
// Thread rules: everything runs on the GUI thread; RtMidi's thread only emits midiIn().
class MidiManager : public QObject {
    Q_OBJECT

  public:
    using Sender = std::function<void(const uint8_t* bytes, size_t count)>;
    using NotePlayer = std::function<void(int note)>;
    using CaptureFlag = std::function<bool()>;
    using ControllerCapture = std::function<void(int controller, int value)>;

    explicit MidiManager(QObject* parent = nullptr);
    ~MidiManager() override;

    // Where messages go: the open RtMidi output port unless replaced.
    void setSender(Sender sender) { sender_ = std::move(sender); }
    void setNotePlayer(NotePlayer player) { notePlayer_ = std::move(player); }
    void setControllerCapture(CaptureFlag flag, ControllerCapture capture);

    // Opens the output port with exactly this name in the MIDI output table; the pseudo
    // entries ("-Vst Plugin-", "-No MIDI Out-") and unknown names leave no port open.
    int openOutputDevice(const std::string& name, std::string& msg);
    // Opens the input port with exactly this name in the MIDI input table (preferences).
    int openInputDevice(const std::string& name, std::string& msg);

    // Model notifications.
    void currentMultiSampleChanged(const TGmsl& msl);
    void multiSampleSettingChanged(const TGmsl& msl, const std::string& key);
    void controllerChanged(const TGmsl& msl, int controller);
    void resetRequested(const TGmsl& msl);
    void midiInDeviceChanged(const std::string& name);
    // Through: the MIDI keyboard plays the sound source. Channel messages arriving on
    // `inputChannel` (1-16) go to the MIDI output on the current Multi-Sample's channel, and
    // its notes no longer start Key-Samples (the source and the samples at once would only
    // blur what the user wants to hear).
    void setThrough(bool through, int inputChannel);
    bool through() const { return through_; }
    const std::string& lastMessage() const { return lastMessage_; }

    // Sending, as the recording run and the controller editors use it.
    void sendProgramChange(const MidiOutSettings& settings);
    void sendResetAllControllers(const MidiOutSettings& settings);
    void sendAllControllers(const MidiOutSettings& settings);
    void sendController(const MidiOutSettings& settings, int controller);

    int pendingNote() const { return pendingNote_; }
    bool notePending() const { return noteTimer_.isActive(); }

  signals:
    void midiIn(std::vector<unsigned char> message);

  public slots:
    void onMidiIn(std::vector<unsigned char> message);
    void playMidiNote();

  private:
    void send(const MidiMessage& message);
    // Passes a channel message of the input channel on to the output channel; false when the
    // message is not one to pass on.
    bool passThrough(const std::vector<unsigned char>& message);
    // Sustain off and All Notes Off on the output channel.
    void releaseThroughNotes();

    Sender sender_;
    NotePlayer notePlayer_;
    CaptureFlag captureFlag_;
    ControllerCapture controllerCapture_;
    QTimer noteTimer_;
    int pendingNote_ = -1;
    bool through_ = false;
    int throughInput_ = 0;  // 0-15
    int outputChannel_ = 0; // 0-15, the current Multi-Sample's
    std::string lastMessage_;
};

} // namespace tg
