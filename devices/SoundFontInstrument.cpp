// libfluidsynth behind the hosted-instrument interface.
#include "devices/SoundFontInstrument.h"

#include "core/Message.h"

#include <fluidsynth.h>

#include <cstdio>
#include <mutex>

namespace tg {

namespace {

// FluidSynth reports through one process-wide log function. Errors raised while this thread
// opens a SoundFont are collected for the caller's message; everything else is dropped, so
// the library never writes to the terminal on its own.
thread_local std::string* collectedErrors = nullptr;

void fluidLog(int level, const char* message, void*)
{
    if (collectedErrors == nullptr || message == nullptr)
        return;
    if (level == FLUID_PANIC || level == FLUID_ERR) {
        if (!collectedErrors->empty())
            *collectedErrors += "; ";
        *collectedErrors += message;
    }
}

void routeFluidLog()
{
    static std::once_flag once;
    std::call_once(once, [] {
        for (int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
            fluid_set_log_function(level, fluidLog, nullptr);
    });
}

std::string fileName(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

class SoundFontInstrument final : public HostedInstrument {
  public:
    ~SoundFontInstrument() override
    {
        if (synth_ != nullptr)
            delete_fluid_synth(synth_);
        if (settings_ != nullptr)
            delete_fluid_settings(settings_);
    }

    int open(const InstrumentSpec& choice, int32_t sampleRate, std::string& msg)
    {
        routeFluidLog();
        std::FILE* probe = std::fopen(choice.path.c_str(), "rb");
        if (probe == nullptr)
            return setMessage(msg, "SoundFont '%s' cannot be read", choice.path.c_str());
        std::fclose(probe);

        rate_ = sampleRate;
        settings_ = new_fluid_settings();
        if (settings_ == nullptr)
            return setMessage(msg, "FluidSynth could not be started");
        if (fluid_settings_setnum(settings_, "synth.sample-rate", sampleRate) != FLUID_OK)
            return setMessage(msg, "FluidSynth cannot render at %d Hz", int(sampleRate));
        fluid_settings_setint(settings_, "synth.reverb.active", 0);
        fluid_settings_setint(settings_, "synth.chorus.active", 0);
        fluid_settings_setnum(settings_, "synth.gain", choice.gain);
        // One thread drives the synth, so its API lock is dead weight on the render path.
        fluid_settings_setint(settings_, "synth.threadsafe-api", 0);
        // Only the chosen preset's samples are read: a large bank opens in a moment.
        fluid_settings_setint(settings_, "synth.dynamic-sample-loading", 1);
        synth_ = new_fluid_synth(settings_);
        if (synth_ == nullptr)
            return setMessage(msg, "FluidSynth could not be started at %d Hz", int(sampleRate));

        std::string errors;
        collectedErrors = &errors;
        const int id = fluid_synth_sfload(synth_, choice.path.c_str(), 1);
        collectedErrors = nullptr;
        if (id == FLUID_FAILED)
            return setMessage(msg, "SoundFont '%s' cannot be loaded%s%s", choice.path.c_str(),
                              errors.empty() ? "" : ": ", errors.c_str());
        fluid_sfont_t* font = fluid_synth_get_sfont_by_id(synth_, id);
        fluid_preset_t* preset =
            font != nullptr ? fluid_sfont_get_preset(font, choice.bank, choice.preset) : nullptr;
        if (preset == nullptr)
            return setMessage(msg, "SoundFont '%s' has no preset %d in bank %d",
                              choice.path.c_str(), choice.preset, choice.bank);
        const char* presetName = fluid_preset_get_name(preset);
        description_ =
            formatText("SoundFont '%s' bank %d preset %d (%s)", fileName(choice.path).c_str(),
                       choice.bank, choice.preset, presetName != nullptr ? presetName : "");
        for (int channel = 0; channel < 16; ++channel)
            if (fluid_synth_program_select(synth_, channel, id, choice.bank, choice.preset) !=
                FLUID_OK)
                return setMessage(msg, "SoundFont '%s': preset %d of bank %d cannot be selected",
                                  choice.path.c_str(), choice.preset, choice.bank);
        return 1;
    }

    void sendMidi(uint8_t status, uint8_t data1, uint8_t data2) override
    {
        const int channel = status & 0x0f;
        const int key = data1 & 0x7f;
        const int value = data2 & 0x7f;
        switch (status & 0xf0) {
        case 0x90:
            if (value > 0) {
                fluid_synth_noteon(synth_, channel, key, value);
                break;
            }
            [[fallthrough]];
        case 0x80:
            fluid_synth_noteoff(synth_, channel, key);
            break;
        case 0xb0:
            fluid_synth_cc(synth_, channel, key, value);
            break;
        case 0xc0:
            fluid_synth_program_change(synth_, channel, key);
            break;
        case 0xe0:
            fluid_synth_pitch_bend(synth_, channel, key | (value << 7));
            break;
        default:
            break;
        }
    }

    void resetNotes() override { fluid_synth_all_sounds_off(synth_, -1); }

    void render(float* left, float* right, uint32_t frames) override
    {
        fluid_synth_write_float(synth_, int(frames), left, 0, 1, right, 0, 1);
    }

    int32_t sampleRate() const override { return rate_; }
    std::string description() const override { return description_; }

  private:
    fluid_settings_t* settings_ = nullptr;
    fluid_synth_t* synth_ = nullptr;
    int32_t rate_ = 0;
    std::string description_;
};

} // namespace

std::unique_ptr<HostedInstrument> openSoundFontInstrument(const InstrumentSpec& choice,
                                                          int32_t sampleRate, std::string& msg)
{
    auto instrument = std::make_unique<SoundFontInstrument>();
    if (!instrument->open(choice, sampleRate, msg))
        return nullptr;
    return instrument;
}

} // namespace tg
