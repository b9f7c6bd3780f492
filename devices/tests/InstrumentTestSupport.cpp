// Opening the shipped instruments and bouncing measured takes for the tests.
#include "devices/tests/InstrumentTestSupport.h"

#include "tests/support/ToneAnalysis.h"

namespace tg::test {

std::unique_ptr<HostedInstrument> openInstrument(const std::string& text, std::string& msg)
{
    InstrumentSpec choice;
    if (!parseInstrumentSpec(text, choice, msg))
        return nullptr;
    return openHostedInstrument(choice, 44100, msg);
}

bool bounce(HostedInstrument& instrument, const BounceNote& note, MeasuredTake& take,
            std::string& msg, int channels)
{
    const AudioStreamConfig format{-1, -1, -1, 44100, 16, channels, -1.0f};
    if (!bounceNote(instrument, note, format, take.bytes, msg))
        return false;
    take.frames = int64_t(take.bytes.size()) / (2 * channels);
    take.samples = firstChannel(take.bytes, channels, take.frames);
    return true;
}

} // namespace tg::test
