// Encoding the transfer stream: blocks become a bit stream, the bit stream becomes symbols,
// symbols become eight-frame sine cycles, and a gentle low-pass smooths the result.
#include "export/volca/VolcaStream.h"

#include <array>

namespace tg {
namespace {

constexpr int kCycle = 8;        // frames per symbol
constexpr int kBlockSize = 256;  // bytes of a data block
constexpr int kEraseSpan = 4094; // bytes the device erases behind one long gap
constexpr int kHeaderSize = 32;
constexpr int kHeaderGap = 10000; // cycles before each sample's header
constexpr int kBlockGap = 35;     // cycles before a data block
constexpr int kEraseGap = 1000;   // cycles before a block that starts an erase span
constexpr int kFooterGap = 3000;  // cycles after the last sample
constexpr int kHeaderCycles = 49; // start mark, channel info, 47 symbols
constexpr int kBlockCycles = 352; // start mark, channel info, 350 symbols
constexpr uint8_t kBlockStart = 0xA9;
constexpr int32_t kLowPassFeedback = 0x2000; // of 0x10000

uint64_t blocksOf(uint64_t bytes)
{
    return (bytes + kBlockSize - 1) / kBlockSize;
}

// Parity bits of one byte for the block's error-correcting code: column parities in bits 0-5
// (bits 0,2,4,6 / 1,3,5,7 / 0,1,4,5 / 2,3,6,7 / 0-3 / 4-7) and the byte's parity in bit 6.
uint8_t columnParity(uint8_t value)
{
    static const uint8_t kColumns[6] = {0x55, 0xAA, 0x33, 0xCC, 0x0F, 0xF0};
    uint8_t bits = 0;
    for (int i = 0; i < 6; ++i)
        bits |= uint8_t((__builtin_popcount(value & kColumns[i]) & 1) << i);
    bits |= uint8_t((__builtin_popcount(value) & 1) << 6);
    return bits;
}

// The 24-bit code sent after a full block: row parities of the odd-parity bytes' positions
// interleaved in the two low bytes, the column parities in the high byte.
uint32_t blockEcc(const uint8_t* data, size_t size)
{
    uint8_t columns = 0, rows = 0, rowsInverse = 0;
    for (size_t i = 0; i < size; ++i) {
        const uint8_t parity = columnParity(data[i]);
        columns ^= parity;
        if (parity & 0x40) {
            rows ^= uint8_t(i);
            rowsInverse ^= uint8_t(~uint8_t(i));
        }
    }
    uint8_t low = 0, middle = 0;
    for (int bit = 7; bit >= 0; --bit) {
        uint8_t& target = bit >= 4 ? low : middle;
        const int shift = (bit & 3) * 2;
        target |= uint8_t(((rows >> bit) & 1) << (shift + 1));
        target |= uint8_t(((rowsInverse >> bit) & 1) << shift);
    }
    const uint8_t high = uint8_t((columns << 2) | 3);
    return uint32_t(high) << 16 | uint32_t(middle) << 8 | low;
}

// CRC-16 with the CCITT polynomial, initial value 0xFFFF, most significant bit first.
uint16_t blockCrc(const uint8_t* data, size_t size)
{
    uint16_t crc = 0xFFFF;
    for (size_t i = 0; i < size; ++i) {
        crc ^= uint16_t(data[i] << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000) ? uint16_t((crc << 1) ^ 0x1021) : uint16_t(crc << 1);
    }
    return crc;
}

// A quarter-wave table of one cycle, and the sharpened shape data symbols use.
int32_t sineValue(int phase, bool sharpened)
{
    static const int32_t kSine[kCycle] = {0, 23169, 32767, 23169, 0, -23169, -32767, -23169};
    int32_t value = kSine[phase];
    if (sharpened && value > 0) {
        const int32_t rest = 32767 - value;
        value = 32767 - rest * rest / 32767;
    } else if (sharpened && value < 0) {
        const int32_t rest = value + 32767;
        value = rest * rest / 32767 - 32767;
    }
    return value;
}

class StreamEncoder {
  public:
    explicit StreamEncoder(const VolcaFrameSink& sink) : sink_(sink) {}

    void gap(int cycles)
    {
        for (int i = 0; i < cycles; ++i)
            forBoth([](int) { return uint8_t(1); }, false);
    }

    // A block: start mark, channel info, then the start code, the bytes, the code (full
    // blocks only) and the CRC as 3-bit symbols, left channel first, least significant first.
    void block(const std::vector<uint8_t>& bytes)
    {
        startMark();
        forBoth([](int channel) { return uint8_t(channel); }, true);
        std::vector<std::pair<uint32_t, int>> fields; // value, bits
        fields.emplace_back(kBlockStart, 8);
        for (uint8_t byte : bytes)
            fields.emplace_back(byte, 8);
        if (bytes.size() == size_t(kBlockSize))
            fields.emplace_back(blockEcc(bytes.data(), bytes.size()), 24);
        fields.emplace_back(blockCrc(bytes.data(), bytes.size()), 16);

        uint64_t pool = 0;
        int poolBits = 0;
        size_t next = 0;
        for (;;) {
            bool last = false;
            if (poolBits < 6) {
                if (next < fields.size()) {
                    pool |= uint64_t(fields[next].first) << poolBits;
                    poolBits += fields[next].second;
                    ++next;
                } else {
                    // Whatever is left is padded with zeros to one more symbol pair; even
                    // nothing left gives that last pair.
                    poolBits = 6;
                    last = true;
                }
            }
            forBoth(
                [&pool](int) {
                    const uint8_t symbol = uint8_t(pool & 7);
                    pool >>= 3;
                    return symbol;
                },
                true);
            poolBits -= 6;
            if (last)
                return;
        }
    }

    // Emits the cycle still held back, then silence up to `total` frames.
    bool finish(uint64_t total)
    {
        if (holding_)
            emitHeld();
        while (written_ + frames_.size() / 2 < total)
            frames_.insert(frames_.end(), {0, 0});
        return flush(true) && ok_;
    }

  private:
    struct Channel {
        std::array<int32_t, kCycle> held{}; // the cycle generated last, not yet emitted
        int lastPhase = 0;
        int32_t lowPass = 0;
    };

    template <typename SymbolOf> void forBoth(SymbolOf symbolOf, bool sharpened)
    {
        std::array<std::array<int32_t, kCycle>, 2> cycles;
        for (int channel = 0; channel < 2; ++channel)
            cycles[size_t(channel)] = makeCycle(channels_[channel], symbolOf(channel), sharpened);
        push(cycles);
    }

    void startMark()
    {
        std::array<std::array<int32_t, kCycle>, 2> cycles;
        for (int channel = 0; channel < 2; ++channel) {
            Channel& c = channels_[channel];
            std::array<int32_t, kCycle> cycle = makeCycle(c, 5, false);
            // The mark's first two frames and the frame before it meet halfway at their mean.
            const int32_t mean = (c.held[kCycle - 1] + cycle[0] + cycle[1]) / 3;
            c.held[kCycle - 1] = (c.held[kCycle - 1] + mean) / 2;
            cycle[0] = (cycle[0] + mean) / 2;
            cycle[1] = (cycle[1] + mean) / 2;
            cycles[size_t(channel)] = cycle;
        }
        push(cycles);
    }

    // Phase in quarter cycles from bits 1-2, level 16/24 or 4/24 of full scale from bit 0. A
    // phase step to the next quarter or between the odd phases pulls the seam a third of the
    // way together, which changes the last frame of the cycle before.
    std::array<int32_t, kCycle> makeCycle(Channel& c, uint8_t symbol, bool sharpened)
    {
        const int phase = (symbol >> 1) & 3;
        const int32_t level = (symbol & 1) ? 16 : 4;
        std::array<int32_t, kCycle> cycle;
        for (int i = 0; i < kCycle; ++i) {
            int32_t value = sineValue((phase * 2 + i) % kCycle, sharpened) * level / 24;
            if (i == 0 && phase != c.lastPhase &&
                (((c.lastPhase & 1) && (phase & 1)) || ((c.lastPhase + 1) & 3) == phase)) {
                int32_t& before = c.held[kCycle - 1];
                const int32_t step = (value - before) / 3;
                value -= step;
                before += step;
            }
            cycle[size_t(i)] = value;
        }
        c.lastPhase = phase;
        return cycle;
    }

    void push(const std::array<std::array<int32_t, kCycle>, 2>& cycles)
    {
        if (holding_)
            emitHeld();
        channels_[0].held = cycles[0];
        channels_[1].held = cycles[1];
        holding_ = true;
    }

    void emitHeld()
    {
        for (int i = 0; i < kCycle; ++i)
            for (Channel& c : channels_) {
                const int32_t value = (c.held[size_t(i)] * (0x10000 - kLowPassFeedback) +
                                       c.lowPass * kLowPassFeedback) /
                                      0x10000;
                c.lowPass = value;
                frames_.push_back(int16_t(value));
            }
        holding_ = false;
        flush(false);
    }

    bool flush(bool all)
    {
        constexpr size_t kChunkFrames = 1 << 16;
        if (ok_ && (all || frames_.size() >= kChunkFrames * 2) && !frames_.empty()) {
            ok_ = sink_(frames_.data(), frames_.size() / 2);
            written_ += frames_.size() / 2;
            frames_.clear();
        }
        return ok_;
    }

    const VolcaFrameSink& sink_;
    Channel channels_[2];
    bool holding_ = false;
    std::vector<int16_t> frames_;
    uint64_t written_ = 0;
    bool ok_ = true;
};

std::vector<uint8_t> headerBlock(const VolcaSample& sample, bool more)
{
    std::vector<uint8_t> header(kHeaderSize, 0);
    const char kTitle[] = "KORG SYSTEM FILE";
    std::copy(kTitle, kTitle + 16, header.begin());
    const uint32_t device = 0xFF0033B8;
    const uint32_t bytes = uint32_t(sample.frames.size() * 2);
    const uint16_t speed = uint16_t(uint64_t(sample.rate) * 0x4000 / kVolcaNativeRate);
    for (int i = 0; i < 4; ++i) {
        header[size_t(16 + i)] = uint8_t(device >> (8 * i));
        header[size_t(24 + i)] = uint8_t(bytes >> (8 * i));
    }
    header[20] = uint8_t(0x10 | (more ? 1 : 0)); // a plain sample; 1: another one follows
    header[21] = uint8_t(sample.slot);
    header[28] = header[29] = 0xFF;
    header[30] = uint8_t(speed & 0xFF);
    header[31] = uint8_t(speed >> 8);
    return header;
}

} // namespace

uint64_t volcaStreamFrames(const std::vector<VolcaSample>& samples)
{
    uint64_t cycles = kFooterGap;
    for (const VolcaSample& sample : samples) {
        const uint64_t bytes = sample.frames.size() * 2;
        cycles += kHeaderGap + kHeaderCycles + (kBlockGap + kBlockCycles) * blocksOf(bytes);
        cycles += uint64_t(kEraseGap - kBlockGap) * ((bytes + kEraseSpan - 1) / kEraseSpan);
    }
    return cycles * kCycle;
}

bool writeVolcaStream(const std::vector<VolcaSample>& samples, const VolcaFrameSink& sink)
{
    StreamEncoder encoder(sink);
    for (size_t index = 0; index < samples.size(); ++index) {
        const VolcaSample& sample = samples[index];
        encoder.gap(kHeaderGap);
        encoder.block(headerBlock(sample, index + 1 < samples.size()));
        std::vector<uint8_t> bytes;
        bytes.reserve(sample.frames.size() * 2);
        for (int16_t value : sample.frames) {
            bytes.push_back(uint8_t(uint16_t(value) & 0xFF));
            bytes.push_back(uint8_t(uint16_t(value) >> 8));
        }
        for (size_t at = 0; at < bytes.size(); at += kBlockSize) {
            // The device erases flash behind the long gap; the library sends one where the
            // byte count is a whole number of erase spans, which is the first block.
            encoder.gap(at % kEraseSpan == 0 ? kEraseGap : kBlockGap);
            std::vector<uint8_t> block(kBlockSize, 0);
            std::copy(bytes.begin() + long(at),
                      bytes.begin() + long(std::min(bytes.size(), at + kBlockSize)), block.begin());
            encoder.block(block);
        }
    }
    encoder.gap(kFooterGap);
    return encoder.finish(volcaStreamFrames(samples));
}

} // namespace tg
