// Writes the NN-XT patch: the sample references, the patch's name, the front-panel knobs and
// the zone records, each field in the width and order the sampler reads (see README.md).
#include "export/nnxt/NnxtPatch.h"

#include <algorithm>

namespace tg {
namespace {

// Big-endian byte builder with the patch format's two recurring shapes: version marks and
// length-prefixed strings.
class Bytes {
  public:
    void u8(int value) { out_.push_back(uint8_t(value)); }
    void s16(int value)
    {
        u8(value >> 8);
        u8(value);
    }
    void s32(int64_t value)
    {
        for (int shift = 24; shift >= 0; shift -= 8)
            u8(int(value >> shift));
    }
    void version(int major, int minor, int revision)
    {
        u8(0xBC);
        u8(major);
        u8(minor);
        u8(revision);
        u8(0);
    }
    void text(const std::string& value)
    {
        s32(int64_t(value.size()));
        out_.insert(out_.end(), value.begin(), value.end());
    }
    void append(const std::vector<uint8_t>& bytes)
    {
        out_.insert(out_.end(), bytes.begin(), bytes.end());
    }
    // An IFF chunk: id, data length, data, and a pad byte to an even length.
    void chunk(const char* id, const std::vector<uint8_t>& data)
    {
        out_.insert(out_.end(), id, id + 4);
        s32(int64_t(data.size()));
        append(data);
        if (data.size() % 2 != 0)
            u8(0);
    }
    // A group chunk (FORM or CAT): its id, length, type and children.
    void group(const char* id, const char* type, const std::vector<uint8_t>& children)
    {
        std::vector<uint8_t> data(type, type + 4);
        data.insert(data.end(), children.begin(), children.end());
        chunk(id, data);
    }
    const std::vector<uint8_t>& data() const { return out_; }

  private:
    std::vector<uint8_t> out_;
};

constexpr const char* kDeviceName = "NNXT Digital Sampler";

// Play modes of the zone record, and its velocity fade-out value for "no fade".
constexpr int kPlayOnce = 0;
constexpr int kPlayForwardLoop = 1;
constexpr int kVelocityFadeOff = 128;

// Envelope and LFO settings in time-cents (2^(value/1200) seconds): the values other writers of
// this format put into every zone.
constexpr int kLfoRate = -536;
constexpr int kShortDelay = -10500;
constexpr int kQuickAttack = -13159;
constexpr int kNoHold = -14400;
constexpr int kModDecay = -1200;
constexpr int kAmpDecay = -7271;
constexpr int kFullLevel = 1000; // sustain, in thousandths

int clampKey(int value, int low)
{
    return std::clamp(value, low, 127);
}

std::vector<uint8_t> sampleReference(const NnxtZone& zone)
{
    Bytes b;
    b.version(1, 1, 0);
    b.version(1, 1, 0); // the path relative to the patch: no folder up, one component
    b.u8(1);
    b.s32(0);
    b.s32(1);
    b.text(zone.fileName);
    b.version(1, 2, 0); // no sound-bank database path
    b.u8(0);
    b.version(1, 5, 0); // no absolute path
    b.u8(0);
    const size_t dot = zone.fileName.rfind('.');
    b.text(zone.fileName.substr(0, dot)); // the name the sampler shows
    b.text("");                           // sound bank
    b.text("");                           // web address
    b.u8(13);
    b.text(""); // package
    return b.data();
}

std::vector<uint8_t> description(const std::string& name)
{
    Bytes b;
    b.version(1, 3, 0);
    b.u8(0x12);
    b.text(name);
    b.text(kDeviceName);
    return b.data();
}

std::vector<uint8_t> author()
{
    Bytes b;
    b.version(1, 3, 0);
    b.text("");
    b.text("");
    return b.data();
}

// The front-panel knobs as (knob, value) pairs, all at rest, the master volume at 100.
std::vector<uint8_t> panel()
{
    Bytes b;
    b.version(1, 0, 0);
    b.u8(9);
    for (int knob = 5; knob <= 13; ++knob) {
        b.u8(knob);
        b.u8(knob == 13 ? 100 : 0);
    }
    b.u8(0);
    return b.data();
}

void envelopeStage(Bytes& b, int time, bool off)
{
    b.s32(time);
    b.u8(off ? 1 : 0);
}

void zoneRecord(Bytes& b, const NnxtZone& zone)
{
    b.s32(zone.group);
    const int lowKey = clampKey(zone.lowKey, 0);
    b.u8(lowKey);
    b.u8(clampKey(zone.highKey, lowKey));
    const int lowVelocity = clampKey(zone.lowVelocity, 1);
    b.u8(lowVelocity);
    b.u8(clampKey(zone.highVelocity, lowVelocity));
    b.u8(clampKey(zone.rootKey, 0));
    b.s16(0); // sample tune
    b.s32(0); // play start
    b.s32(zone.frames);
    b.s32(zone.loop ? zone.loopStart : 0);
    b.s32(zone.loop ? zone.loopEnd : 0);
    b.s32(zone.frames);
    b.u8(zone.loop ? kPlayForwardLoop : kPlayOnce);
    b.u8(0); // output pair
    b.u8(0); // velocity fade-in off
    b.u8(kVelocityFadeOff);
    b.u8(0); // no round robin

    for (int i = 0; i < 11; ++i) // controller and velocity modulation amounts
        b.s32(0);
    for (int on : {1, 1, 1, 0, 0, 0, 0, 0, 0, 1, 1, 1}) // which targets wheel and pedal drive
        b.u8(on);

    b.u8(1); // LFO 1: key sync, rate, tempo-sync rate, delay, wave, amounts, sync mode
    b.s32(kLfoRate);
    b.u8(0xFC);
    envelopeStage(b, 1, true);
    b.u8(101);
    for (int i = 0; i < 3; ++i)
        b.s32(0);
    b.u8(89);

    b.s32(kLfoRate); // LFO 2: rate, delay, amounts
    envelopeStage(b, kShortDelay, true);
    b.s32(0);
    b.s32(0);

    envelopeStage(b, kShortDelay, true); // modulation envelope
    envelopeStage(b, kQuickAttack, false);
    envelopeStage(b, kNoHold, true);
    b.s32(kModDecay);
    b.s32(0); // sustain
    b.s32(kModDecay);
    for (int i = 0; i < 3; ++i) // key to decay, to filter, to pitch
        b.s32(0);

    b.u8(7);    // pitch-bend range, semitones
    b.u8(0);    // octave
    b.s16(0);   // semitone
    b.s16(0);   // cent
    b.s32(100); // key tracking: a semitone per key

    b.u8(1); // filter on, wide open, LP12, no key tracking
    b.s32(14100);
    b.s32(0);
    b.u8(61);
    b.s32(0);

    envelopeStage(b, kShortDelay, true); // amplitude envelope
    envelopeStage(b, kQuickAttack, false);
    envelopeStage(b, kNoHold, true);
    b.s32(kAmpDecay);
    b.s32(kFullLevel);
    b.s32(kAmpDecay); // release
    b.s32(0);         // key to decay
    b.s32(0);         // level: unity

    b.s32(0); // pan
    b.u8(87); // spread mode
    b.s32(0); // spread
}

std::vector<uint8_t> body(const NnxtPatch& patch)
{
    Bytes b;
    b.version(1, 0, 0);
    b.version(2, 0, 0);
    b.s32(patch.groups);
    for (int g = 0; g < patch.groups; ++g) {
        b.u8(8);  // polyphony
        b.u8(47); // retrigger
        b.u8(0);  // portamento
        b.s32(kLfoRate);
    }
    b.version(2, 2, 0);
    b.s32(int64_t(patch.zones.size()));
    for (const NnxtZone& zone : patch.zones)
        zoneRecord(b, zone);
    for (size_t i = 0; i < patch.zones.size(); ++i) { // zone i plays reference i
        b.u8(1);
        b.version(4, 1, 0);
        b.u8(1);
        b.s32(int64_t(i));
    }
    for (int i = 0; i < 2; ++i) { // the browser's last patch and last sample: none
        b.version(1, 0, 0);
        b.version(1, 2, 0);
        b.u8(0);
        b.version(1, 4, 0);
        b.u8(0);
    }
    return b.data();
}

} // namespace

std::vector<uint8_t> nnxtPatchFile(const NnxtPatch& patch)
{
    Bytes references;
    for (const NnxtZone& zone : patch.zones)
        references.chunk("REFE", sampleReference(zone));
    Bytes children;
    children.group("CAT ", "REFS", references.data());
    children.chunk("DESC", description(patch.name));
    children.chunk("AUTH", author());
    children.chunk("PARM", panel());
    children.chunk("BODY", body(patch));
    Bytes file;
    file.group("FORM", "PTCH", children.data());
    return file.data();
}

} // namespace tg
