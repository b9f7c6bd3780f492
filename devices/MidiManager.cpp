// MIDI output following the Multi-Sample, and incoming notes played as Key-Samples.
#include "devices/MidiManager.h"

#include "core/Message.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/MidiPorts.h"

#include <QMetaType>

Q_DECLARE_METATYPE(std::vector<unsigned char>)

namespace tg {

namespace {

// A short delay between a Note On and its playback, so that a Note Off that follows at
// once (a keyboard's double trigger) cancels it.
constexpr int kNoteDelayMs = 5;

} // namespace

MidiManager::MidiManager(QObject* parent) : QObject(parent), sender_(midi::sendMidiMessage)
{
    qRegisterMetaType<std::vector<unsigned char>>("std::vector<unsigned char>");
    qRegisterMetaType<std::vector<unsigned char>>("vectorOfUchar");
    noteTimer_.setSingleShot(true);
    connect(&noteTimer_, &QTimer::timeout, this, &MidiManager::playMidiNote);
    // RtMidi's thread emits; the queued connection carries a copy to the GUI thread.
    connect(this, &MidiManager::midiIn, this, &MidiManager::onMidiIn, Qt::QueuedConnection);
    midi::setMidiInHandler(
        [this](const std::vector<unsigned char>& message) { emit midiIn(message); });
}

MidiManager::~MidiManager()
{
    midi::setMidiInHandler(nullptr);
}

void MidiManager::setControllerCapture(CaptureFlag flag, ControllerCapture capture)
{
    captureFlag_ = std::move(flag);
    controllerCapture_ = std::move(capture);
}

void MidiManager::send(const MidiMessage& message)
{
    if (sender_)
        sender_(message.bytes, size_t(message.count));
}

int MidiManager::openOutputDevice(const std::string& name, std::string& msg)
{
    const int index = tableIndex(deviceTables().midiOut, name);
    if (index < 0 || index >= deviceTables().midiOutDevices) {
        // A pseudo entry or a device that is gone: nothing to send to.
        midi::closeMidiOutPort();
        return index < 0 ? setMessage(msg, "MIDI output device not found: %s", name.c_str()) : 1;
    }
    if (!midi::midiOutCreated() && !midi::createMidiOut(msg))
        return 0;
    return midi::openMidiOutPort(index, msg);
}

int MidiManager::openInputDevice(const std::string& name, std::string& msg)
{
    const int index = tableIndex(deviceTables().midiIn, name);
    if (index < 0 || index >= deviceTables().midiInDevices) {
        midi::closeMidiInPort();
        return index < 0 ? setMessage(msg, "MIDI input device not found: %s", name.c_str()) : 1;
    }
    if (!midi::midiInCreated() && !midi::createMidiIn(msg))
        return 0;
    return midi::openMidiInPort(index, msg);
}

void MidiManager::sendProgramChange(const MidiOutSettings& settings)
{
    MidiMessage message;
    if (programChangeMessage(settings, message))
        send(message);
}

void MidiManager::sendResetAllControllers(const MidiOutSettings& settings)
{
    send(resetAllControllersMessage(settings));
}

void MidiManager::sendAllControllers(const MidiOutSettings& settings)
{
    for (const MidiMessage& message : allControllerMessages(settings))
        send(message);
}

void MidiManager::sendController(const MidiOutSettings& settings, int controller)
{
    MidiMessage message;
    if (controllerMessage(settings, controller, message))
        send(message);
}

void MidiManager::currentMultiSampleChanged(const TGmsl& msl)
{
    lastMessage_.clear();
    openOutputDevice(msl.MIDIoutDevice, lastMessage_);
    const MidiOutSettings settings = midiOutSettingsOf(msl);
    outputChannel_ = settings.channel & 0x0F;
    sendProgramChange(settings);
    if (settings.autoSendReset)
        sendResetAllControllers(settings);
    sendAllControllers(settings);
}

void MidiManager::multiSampleSettingChanged(const TGmsl& msl, const std::string& key)
{
    if (key == "msl_MIDIoutDevice") {
        lastMessage_.clear();
        openOutputDevice(msl.MIDIoutDevice, lastMessage_);
        sendProgramChange(midiOutSettingsOf(msl));
    } else if (key == "msl_MIDIoutChannel" || key == "msl_MIDIoutProgram" ||
               key == "msl_MIDIoutProgram_active") {
        if (through_ && (msl.MIDIoutChannel & 0x0F) != outputChannel_)
            releaseThroughNotes();
        outputChannel_ = msl.MIDIoutChannel & 0x0F;
        sendProgramChange(midiOutSettingsOf(msl));
    }
}

void MidiManager::controllerChanged(const TGmsl& msl, int controller)
{
    sendController(midiOutSettingsOf(msl), controller);
}

void MidiManager::resetRequested(const TGmsl& msl)
{
    sendResetAllControllers(midiOutSettingsOf(msl));
}

void MidiManager::midiInDeviceChanged(const std::string& name)
{
    lastMessage_.clear();
    openInputDevice(name, lastMessage_);
}

void MidiManager::setThrough(bool through, int inputChannel)
{
    // Notes held through the old routing would hang on the sound source.
    if (through_ && (!through || ((inputChannel - 1) & 0x0F) != throughInput_))
        releaseThroughNotes();
    through_ = through;
    throughInput_ = (inputChannel - 1) & 0x0F;
}

void MidiManager::releaseThroughNotes()
{
    const uint8_t controller = uint8_t(0xB0 | outputChannel_);
    for (const uint8_t number : {uint8_t(64), uint8_t(123)}) { // sustain off, all notes off
        MidiMessage message;
        message.count = 3;
        message.bytes[0] = controller;
        message.bytes[1] = number;
        send(message);
    }
}

bool MidiManager::passThrough(const std::vector<unsigned char>& message)
{
    const int status = message[0] & 0xF0;
    if (status < 0x80 || status == 0xF0 || (message[0] & 0x0F) != throughInput_)
        return false;
    // Program Change and Channel Pressure carry one data byte, the others two.
    const int count = status == 0xC0 || status == 0xD0 ? 2 : 3;
    if (int(message.size()) < count)
        return false;
    MidiMessage out;
    out.count = count;
    out.bytes[0] = uint8_t(status | outputChannel_);
    for (int i = 1; i < count; ++i)
        out.bytes[i] = message[size_t(i)] & 0x7F;
    send(out);
    return true;
}

void MidiManager::onMidiIn(std::vector<unsigned char> message)
{
    if (message.empty())
        return;
    const int status = message[0] & 0xF0;
    if (through_ && passThrough(message) && (status == 0x90 || status == 0x80))
        return;
    const int data1 = message.size() > 1 ? message[1] : 0;
    const int data2 = message.size() > 2 ? message[2] : 0;
    if (status == 0xB0) {
        if (data1 < 64 && captureFlag_ && captureFlag_() && controllerCapture_)
            controllerCapture_(data1, data2);
    } else if (status == 0x90 && data2 > 0) {
        audio::player().requestStop();
        pendingNote_ = data1;
        noteTimer_.start(kNoteDelayMs);
    } else if (status == 0x90 || status == 0x80) {
        noteTimer_.stop();
        audio::player().requestStop();
    }
}

void MidiManager::playMidiNote()
{
    if (pendingNote_ >= 0 && notePlayer_)
        notePlayer_(pendingNote_);
}

} // namespace tg
