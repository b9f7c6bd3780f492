// Keys and defaults of the window and dialog state file Tonegrabber.ini (Qt INI format).
#pragma once

#include "core/Paths.h"

#include <string>

namespace tg::ini {

// "Tonegrabber.ini" in the user data folder.
inline std::string iniFilePath()
{
    return joinPath(userDataFolder(), "Tonegrabber.ini");
}

// Main window, written on close and restored on creation.
constexpr const char* kMainWindowGeometry = "MainWindow/Geometry";
constexpr const char* kMainWindowState = "MainWindow/State";
constexpr const char* kMainWindowShowHeader = "MainWindow/ShowHeader";

// Each dock writes these after its object name: objectName + kDockGeometrySuffix.
constexpr const char* kDockGeometrySuffix = "/Geometry";
constexpr const char* kDockIsFloatingSuffix = "/IsFloating";

// Preferences dialog; the quit question is read on quit.
constexpr const char* kShowWarningOnQuit = "Misc/ShowWarningOnQuit";
constexpr bool kShowWarningOnQuitDefault = true;
constexpr const char* kShowUpdateNotifications = "UpdateServiceDialog/ShowUpdateNotifications";

// Audio output and MIDI input panels.
constexpr const char* kOutputAudioDeviceName = "Output/AudioDeviceName";
constexpr const char* kInputMidiDeviceName = "Input/MidiDeviceName";
constexpr const char* kInputMidiDeviceChannel = "Input/MidiDeviceChannel";
// The MIDI keyboard plays the sound source through the program instead of the Key-Samples.
constexpr const char* kInputMidiThrough = "Input/MidiThrough";

// The record dialog's tuning oscillator: waveform ("Sine" or "Rect"), MIDI note, peak in dB.
constexpr const char* kTuningOscillatorWaveform = "RecordDialog/TuningOscillatorWaveform";
constexpr const char* kTuningOscillatorNote = "RecordDialog/TuningOscillatorNote";
constexpr const char* kTuningOscillatorVolume = "RecordDialog/TuningOscillatorVolume";

// Record dialog options; every one defaults to true.
constexpr const char* kRecordOnlyEmptyKeys = "RecordDialog/RecordOnlyEmptyKeys";
constexpr const char* kKeepLockedKeys = "RecordDialog/KeepLockedKeys";
constexpr const char* kCloseDialogAfterRecording = "RecordDialog/CloseDialogAfterRecording";
constexpr const char* kEnableVerboseMode = "RecordDialog/EnableVerboseMode";
constexpr bool kRecordDialogOptionDefault = true;

// Hosted instrument window.
constexpr const char* kVstHostGeometry = "VstHostWidget/Geometry";
constexpr const char* kVstHostPluginEditorGeometry = "VstHostWidget/PluginEditorGeometry";
constexpr const char* kVstHostPluginPath = "VstHostWidget/PluginPath";

} // namespace tg::ini
